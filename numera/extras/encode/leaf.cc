#include "numera/extras/encode/leaf.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "numera/extras/encode/categories.h"
#include "numera/extras/encode/text.h"
#include "numera/extras/encode/time.h"
#include "numera/format/number_classes.h"
#include "numera/format/records.h"
#include "numera/host/string_array.h"

namespace numera::extras::encoding {
namespace {

constexpr const char* kPlainValues =
    "numbers, logical values, text, a cell of texts or of bytes, or an encoded value";

const char* numeric_type_name(hxClassID class_id) {
  return format::with_number_class(
      class_id, [](const auto& row) { return row.name; }, [] { return ""; });
}

::arrow::Result<ReadableValue> read_numbers(const Located& numbers) {
  ARROW_RETURN_NOT_OK(check_numbers(numbers));
  return ReadableValue{.type = numeric_type_name(hxGetClassID(numbers.value)),
                       .data = hxSharedCopy(numbers.value),
                       .length = hxGetNumberOfElements(numbers.value)};
}

::arrow::Result<ReadableValue> pack_logical(const Located& values) {
  if (hxIsSparse(values.value)) return wrong_class(values, "logical values that are not sparse");
  const size_t length = hxGetNumberOfElements(values.value);
  const auto* const source = format::elements<std::uint8_t>(values.value);
  hxArrayPtr bits = format::make_zero_column(hxClassID::UInt8, format::bitmap_bytes(length));
  auto* const target = format::elements<std::uint8_t>(bits);
  for (size_t i = 0; i < length; ++i) {
    const unsigned bit = source[i] != 0 ? 1U << (i % 8) : 0U;
    target[i / 8] = static_cast<std::uint8_t>(target[i / 8] | bit);
  }
  return ReadableValue{
      .type = format::kLogicalType,
      .data = format::make_packed_logical(std::move(bits), static_cast<std::int64_t>(length)),
      .length = length};
}

bool holds_bytes(const hxArray* cells, const std::string& type_name) {
  if (type_name == format::kBinaryType || type_name == format::kFixedBinaryType) return true;
  if (hxIsEmpty(cells)) return false;
  const hxArray* const first = hxGetCell(cells, 0);
  return first != nullptr && hxGetClassID(first) == hxClassID::UInt8;
}

// The null type has no values. The result is a column of zeros that are all null.
::arrow::Result<ReadableValue> read_nulls(const Located& count) {
  ARROW_RETURN_NOT_OK(
      check_numbers(count, hxClassID::Int64, "an int64 array that holds the number of elements"));
  ARROW_RETURN_NOT_OK(check_one_element(count));
  const std::int64_t length = *format::elements<std::int64_t>(count.value);
  if (length < 0) {
    return invalid(count, std::to_string(length), "the number of elements, 0 or more");
  }
  const auto size = static_cast<size_t>(length);
  return ReadableValue{
      .type = format::kNumberClass<double>.name,
      .data = format::make_zero_column(hxClassID::Double, size),
      .length = size,
      .valid = format::make_zero_column(hxClassID::UInt8, format::bitmap_bytes(size))};
}

::arrow::Result<ReadableValue> packed_logical_as_it_is(const Located& packed) {
  ARROW_RETURN_NOT_OK(check_one_element(packed));
  ARROW_ASSIGN_OR_RAISE(const Located values, field(packed, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values, hxClassID::UInt8, "a uint8 array"));
  ARROW_ASSIGN_OR_RAISE(const Located kind, field(packed, 0, format::kArrowType));
  ARROW_RETURN_NOT_OK(text_of(kind));
  ARROW_ASSIGN_OR_RAISE(const Located length, field(packed, 0, format::kLength));
  ARROW_RETURN_NOT_OK(check_numbers(length, hxClassID::Double, "a double"));
  ARROW_RETURN_NOT_OK(check_one_element(length));
  const double found = *format::elements<double>(length.value);
  const double bits = 8.0 * static_cast<double>(hxGetNumberOfElements(values.value));
  if (!(found >= 0 && found <= bits)) {
    return invalid(length, std::to_string(found),
                   "a number from 0 to the number of bits in 'Values'");
  }
  return ReadableValue{.type = format::kLogicalType,
                       .data = hxSharedCopy(packed.value),
                       .length = static_cast<size_t>(found),
                       .is_valid = false};
}

::arrow::Result<ReadableValue> packed_text_as_it_is(const Located& packed) {
  return packed_as_it_is(packed, format::kStringType);
}

::arrow::Result<ReadableValue> packed_bytes_as_they_are(const Located& packed) {
  return packed_as_it_is(packed, format::kBinaryType);
}

struct StructReader {
  const char* type_name;
  ::arrow::Result<ReadableValue> (*read)(const Located& data);
};

/// The reader of a struct "Data" for each "Type".
constexpr StructReader kStructReaders[] = {
    {format::kStringType, packed_text_as_it_is},
    {format::kCharType, packed_text_as_it_is},
    {format::kBinaryType, packed_bytes_as_they_are},
    {format::kLogicalType, packed_logical_as_it_is},
    {format::kDatetimeType, read_datetime},
    {format::kDurationType, read_time_of_day},
    {format::kCategoricalType, read_categorical},
};

}  // namespace

::arrow::Result<ReadableValue> read_plain(const Located& value, const std::string& type_name) {
  if (hxIsNumeric(value.value)) return read_numbers(value);
  if (hxIsStringArray(value.value)) return pack_texts(value);
  const hxClassID class_id = hxGetClassID(value.value);
  if (class_id == hxClassID::Logical) return pack_logical(value);
  if (class_id == hxClassID::Char) return pack_texts(value);
  if (class_id == hxClassID::Cell) {
    return holds_bytes(value.value, type_name) ? pack_bytes(value) : pack_texts(value);
  }
  return wrong_class(value, kPlainValues);
}

::arrow::Result<ReadableValue> read_data(const Located& data, const Located& type) {
  ARROW_ASSIGN_OR_RAISE(const std::string type_name, text_of(type));
  if (type_name == format::kNullType) return read_nulls(data);
  if (!has_fields(data.value)) return read_plain(data, type_name);
  const auto* const row = std::ranges::find(kStructReaders, type_name, &StructReader::type_name);
  if (row != std::ranges::end(kStructReaders)) return row->read(data);
  return invalid(type, "'" + type_name + "'", "the name of a type whose 'Data' is a struct");
}

}  // namespace numera::extras::encoding
