#include "numera/core/types/datetime.h"

#include <arrow/array/array_primitive.h>
#include <arrow/type.h>

#include <string>
#include <utility>

#include "numera/core/host_values.h"
#include "numera/core/types/duration.h"
#include "numera/core/types/numeric.h"
#include "numera/core/util/text.h"
#include "numera/core/util/verify_struct.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {

using util::HxArrayToString;
using util::VerifyHxStructContains;

::arrow::Result<std::shared_ptr<::arrow::DataType>> timestamp_type_from_struct(
    const hxArray* encoded) {
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(encoded, format::kUnits, hxClassID::Char, false));
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(encoded, format::kTimeZone, hxClassID::Char, false));
  const std::string units = HxArrayToString(hxGetField(encoded, 0, format::kUnits));
  const std::string time_zone = HxArrayToString(hxGetField(encoded, 0, format::kTimeZone));
  return ::arrow::timestamp(parse_time_unit(units), time_zone);
}

ArrayResult datetime_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* values,
                        checked_field(encoded, format::kValues, hxClassID::Int64));
  ARROW_ASSIGN_OR_RAISE(auto type, timestamp_type_from_struct(encoded));
  ARROW_RETURN_NOT_OK(check_plain(values, format::kValues));
  return std::make_shared<::arrow::TimestampArray>(
      std::move(type), static_cast<std::int64_t>(hxGetNumberOfElements(values)),
      borrow_elements(values), std::move(validity), ::arrow::kUnknownNullCount, 0);
}

::arrow::Result<hxArrayPtr> timestamp_to_numera(const ColumnView& chunks) {
  const auto& type = static_cast<const ::arrow::TimestampType&>(*chunks.type());
  hxArrayPtr timestamp = format::make_struct(1, format::kTimestamps);
  hxSetField(timestamp.get(), 0, format::kDateType, format::make_word(format::kTimestamp));
  const hxArrayPtr values = counts_to_numera(chunks);
  hxSetField(timestamp.get(), 0, format::kValues, hxSharedCopy(values.get()));
  hxSetField(timestamp.get(), 0, format::kUnits, time_unit_name(type.unit()));
  const std::string& time_zone = type.timezone();
  hxSetField(timestamp.get(), 0, format::kTimeZone,
             hxCreateCharArray(time_zone.data(), time_zone.size()));
  return timestamp;
}

::arrow::Result<hxArrayPtr> date_to_numera(const ColumnView& chunks) {
  hxArrayPtr date = format::make_struct(1, format::kDates);
  hxSetField(date.get(), 0, format::kDateType, format::make_word(format::kDate));
  const hxArrayPtr values = counts_to_numera(chunks);
  hxSetField(date.get(), 0, format::kValues, hxSharedCopy(values.get()));
  return date;
}

}  // namespace numera::io::arrow::core
