#include "numera/core/types/duration.h"

#include <arrow/array/array_primitive.h>
#include <arrow/type.h>

#include <utility>

#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/types/numeric.h"
#include "numera/core/util/text.h"
#include "numera/core/util/verify_struct.h"
#include "numera/format/records.h"
#include "numera/format/time_units.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::TimeUnit;
using util::VerifyHxStructContains;

bool takes_unit(hxClassID values, TimeUnit::type unit) {
  const bool is_coarse = unit == TimeUnit::SECOND || unit == TimeUnit::MILLI;
  return is_coarse == (values == hxClassID::Int32);
}

template <class ArrowType>
std::shared_ptr<::arrow::Array> make_times(std::shared_ptr<::arrow::DataType> type,
                                           const hxArray* values,
                                           std::shared_ptr<::arrow::Buffer> validity) {
  return std::make_shared<::arrow::NumericArray<ArrowType>>(
      std::move(type), static_cast<std::int64_t>(hxGetNumberOfElements(values)),
      borrow_elements(values), std::move(validity), ::arrow::kUnknownNullCount, 0);
}

}  // namespace

TimeUnit::type parse_time_unit(const std::string& text) {
  return format::unit_of(text).value_or(TimeUnit::MILLI);
}

hxArrayPtr time_unit_name(TimeUnit::type unit) {
  return format::make_word(format::unit_name(unit));
}

::arrow::Result<std::shared_ptr<::arrow::DataType>> time_type_from_struct(const hxArray* encoded) {
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(encoded, format::kUnits, hxClassID::Char, false));
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(encoded, format::kValues, hxClassID::Unknown, false));
  const auto unit = parse_time_unit(util::HxArrayToString(hxGetField(encoded, 0, format::kUnits)));
  const hxArray* values = hxGetField(encoded, 0, format::kValues);
  const hxClassID class_id = values == nullptr ? hxClassID::Unknown : hxGetClassID(values);
  if (class_id != hxClassID::Int32 && class_id != hxClassID::Int64) {
    return ::arrow::Status::TypeError(
        "The values field must be either an int32 array or an int64 array.");
  }
  // Arrow's type factories abort the process if the unit does not fit the width.
  if (!takes_unit(class_id, unit))
    return messages::wrong_time_unit(values, format::unit_name(unit));
  return class_id == hxClassID::Int32 ? ::arrow::time32(unit) : ::arrow::time64(unit);
}

ArrayResult duration_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* values,
                        checked_field(encoded, format::kValues, hxClassID::Unknown));
  ARROW_ASSIGN_OR_RAISE(auto type, time_type_from_struct(encoded));
  ARROW_RETURN_NOT_OK(check_plain(values, format::kValues));
  if (hxGetClassID(values) == hxClassID::Int32) {
    return make_times<::arrow::Time32Type>(std::move(type), values, std::move(validity));
  }
  return make_times<::arrow::Time64Type>(std::move(type), values, std::move(validity));
}

::arrow::Result<hxArrayPtr> time_to_numera(const ColumnView& chunks) {
  hxArrayPtr time = format::make_struct(1, format::kTimes);
  const hxArrayPtr values = counts_to_numera(chunks);
  hxSetField(time.get(), 0, format::kValues, hxSharedCopy(values.get()));
  const auto unit = static_cast<const ::arrow::TimeType&>(*chunks.type()).unit();
  hxSetField(time.get(), 0, format::kUnits, time_unit_name(unit));
  return time;
}

}  // namespace numera::io::arrow::core
