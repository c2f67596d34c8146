#include "numera/files/time_text.h"

#include <arrow/array/array_primitive.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <arrow/util/formatting.h>

#include <limits>
#include <string_view>

namespace numera::files {
namespace {

using ::arrow::Type;

/// Arrow marks what it has no text for with angle brackets.
template <class TimeType>
::arrow::Status append(const ::arrow::DataType& type, typename TimeType::c_type value,
                       std::string& text) {
  const size_t length = text.size();
  ::arrow::internal::StringFormatter<TimeType> format(&type);
  format(value, [&text](std::string_view found) { text += found; });
  if (text[length] != '<') return ::arrow::Status::OK();
  return ::arrow::Status::Invalid(::arrow::is_time(type.id())
                                      ? "found a time that is not within a day"
                                      : "found a year that is not from -32767 to 32767");
}

template <class TimeType>
::arrow::Status append_value(const ::arrow::Array& array, std::int64_t row, std::string& text) {
  const auto& values = static_cast<const ::arrow::NumericArray<TimeType>&>(array);
  return append<TimeType>(*array.type(), values.Value(row), text);
}

/// Arrow's own text of a time before 1970 would be the day after it.
::arrow::Status append_date64(const ::arrow::Array& array, std::int64_t row, std::string& text) {
  constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60 * 1000;
  const std::int64_t value = static_cast<const ::arrow::Date64Array&>(array).Value(row);
  const std::int64_t after_midnight = (value % kDay + kDay) % kDay;
  const bool has_day = value >= std::numeric_limits<std::int64_t>::min() + after_midnight;
  return append<::arrow::Date64Type>(*array.type(), has_day ? value - after_midnight : value, text);
}

}  // namespace

bool has_time_text(const ::arrow::DataType& type) {
  return ::arrow::is_date(type.id()) || ::arrow::is_time(type.id()) || type.id() == Type::TIMESTAMP;
}

::arrow::Status append_time(const ::arrow::Array& array, std::int64_t row, std::string& text) {
  switch (array.type_id()) {
    case Type::DATE32:
      return append_value<::arrow::Date32Type>(array, row, text);
    case Type::DATE64:
      return append_date64(array, row, text);
    case Type::TIME32:
      return append_value<::arrow::Time32Type>(array, row, text);
    case Type::TIME64:
      return append_value<::arrow::Time64Type>(array, row, text);
    default:
      return append_value<::arrow::TimestampType>(array, row, text);
  }
}

::arrow::Status check_times(const ::arrow::Array& array) {
  std::string text;
  for (std::int64_t i = 0; i < array.length(); ++i) {
    text.clear();
    if (array.IsValid(i)) ARROW_RETURN_NOT_OK(append_time(array, i, text));
  }
  return ::arrow::Status::OK();
}

}  // namespace numera::files
