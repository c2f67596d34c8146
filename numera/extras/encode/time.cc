#include "numera/extras/encode/time.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "numera/format/records.h"
#include "numera/format/time_units.h"
#include "numera/host/text_codec.h"

namespace numera::extras::encoding {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

// Decodes a text that was written with one character per byte. None if a code unit exceeds 255, all
// are ASCII, or the bytes are not valid UTF-8. A single non-ASCII character of Latin-1 is not valid
// UTF-8, so such text stays unchanged.
std::optional<std::u16string> decode_bytes(const hxArray* text) {
  const size_t length = hxGetNumberOfElements(text);
  const auto* const units = format::elements<char16_t>(text);
  std::string bytes;
  bool ascii = true;
  for (size_t i = 0; i < length; ++i) {
    if (units[i] > 0xFF) return std::nullopt;
    if (units[i] > 0x7F) ascii = false;
    bytes.push_back(static_cast<char>(units[i]));
  }
  if (ascii) return std::nullopt;
  try {
    return hxUTF8ToUTF16("UTF-8").convert(bytes);
  } catch (const hxCodecError&) {
    return std::nullopt;
  }
}

hxArrayPtr readable_time_zone(const hxArray* written) {
  const std::optional<std::u16string> decoded = decode_bytes(written);
  return decoded ? format::make_char_row(*decoded) : hxSharedCopy(written);
}

bool is_date(const Located& data) {
  return hxGetFieldNumber(data.value, format::kUnits) < 0 &&
         hxGetFieldNumber(data.value, format::kDateType) >= 0;
}

// Every int32 number of days fits into int64 as seconds, so nothing is lost.
hxArrayPtr days_as_seconds(const hxArray* days) {
  const size_t length = hxGetNumberOfElements(days);
  const auto* const source = format::elements<std::int32_t>(days);
  hxArrayPtr seconds = format::make_column(hxClassID::Int64, length);
  auto* const target = format::elements<std::int64_t>(seconds);
  for (size_t i = 0; i < length; ++i) target[i] = kSecondsPerDay * source[i];
  return seconds;
}

::arrow::Result<ReadableValue> read_dates(const Located& data) {
  ARROW_ASSIGN_OR_RAISE(const Located date_type, field(data, 0, format::kDateType));
  ARROW_ASSIGN_OR_RAISE(const std::string name, text_of(date_type));
  if (name != format::kDate)
    return invalid(date_type, "'" + name + "'", "'Date', or a field 'Units' in the same struct");
  ARROW_ASSIGN_OR_RAISE(const Located values, field(data, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values));
  const hxClassID class_id = hxGetClassID(values.value);
  if (class_id != hxClassID::Int32 && class_id != hxClassID::Int64) {
    return wrong_class(values, "int32 days or int64 milliseconds");
  }
  const bool days = class_id == hxClassID::Int32;
  return ReadableValue{
      .type = format::kDatetimeType,
      .data = make_datetime(days ? days_as_seconds(values.value) : hxSharedCopy(values.value),
                            format::make_word(format::unit_name(days ? ::arrow::TimeUnit::SECOND
                                                                     : ::arrow::TimeUnit::MILLI)),
                            format::make_word("")),
      .length = hxGetNumberOfElements(values.value)};
}

}  // namespace

::arrow::Result<ReadableValue> read_datetime(const Located& data) {
  ARROW_RETURN_NOT_OK(check_one_element(data));
  if (is_date(data)) return read_dates(data);
  ARROW_ASSIGN_OR_RAISE(const Located values, field(data, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values, hxClassID::Int64, "an int64 array"));
  ARROW_ASSIGN_OR_RAISE(const Located units, field(data, 0, format::kUnits));
  ARROW_RETURN_NOT_OK(text_of(units));
  ARROW_ASSIGN_OR_RAISE(const Located time_zone, field(data, 0, format::kTimeZone));
  ARROW_RETURN_NOT_OK(text_of(time_zone));
  return ReadableValue{.type = format::kDatetimeType,
                       .data = make_datetime(hxSharedCopy(values.value), hxSharedCopy(units.value),
                                             readable_time_zone(time_zone.value)),
                       .length = hxGetNumberOfElements(values.value)};
}

::arrow::Result<ReadableValue> read_time_of_day(const Located& data) {
  ARROW_RETURN_NOT_OK(check_one_element(data));
  ARROW_ASSIGN_OR_RAISE(const Located values, field(data, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values));
  ARROW_ASSIGN_OR_RAISE(const Located units, field(data, 0, format::kUnits));
  ARROW_RETURN_NOT_OK(text_of(units));
  return ReadableValue{.type = format::kDurationType,
                       .data = hxSharedCopy(data.value),
                       .length = hxGetNumberOfElements(values.value),
                       .is_valid = false};
}

hxArrayPtr make_datetime(hxArrayPtr values, hxArrayPtr units, hxArrayPtr time_zone) {
  return format::make_record(format::kTimestamps, std::move(values), std::move(units),
                             std::move(time_zone), format::make_word(format::kTimestamp));
}

}  // namespace numera::extras::encoding
