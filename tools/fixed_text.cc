#include "tools/fixed_text.h"

#include <arrow/array.h>
#include <arrow/type_traits.h>
#include <arrow/util/float16.h>
#include <arrow/util/formatting.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace numera::tools {
namespace {

using ::arrow::Type;

template <typename ArrayType>
const ArrayType& as(const ::arrow::Array& array) {
  return static_cast<const ArrayType&>(array);
}

template <typename Number>
std::string number_text(Number number) {
  char digits[64];
  return {digits, std::to_chars(digits, std::end(digits), number).ptr};
}

/// The fewest digits that tell the number from others of its type, without an exponent where that
/// is easier to read.
template <typename Float>
std::string float_text(Float number) {
  if (std::isnan(number)) return "NaN";
  constexpr auto kLargest = static_cast<Float>(std::is_same_v<Float, float> ? 1e7 : 1e15);
  const Float size = std::abs(number);
  if (size >= kLargest || (size < Float{1e-5F} && size > 0)) return number_text(number);
  char digits[64];
  return {digits, std::to_chars(digits, std::end(digits), number, std::chars_format::fixed).ptr};
}

std::string half_text(std::uint16_t bits) {
  const float number = ::arrow::util::Float16::FromBits(bits).ToFloat();
  if (!(std::abs(number) < 2048)) return float_text(number);  // whole, infinite or no number
  for (int digits = 1; digits < 5; ++digits) {
    char text[32];
    const char* end =
        std::to_chars(text, std::end(text), number, std::chars_format::general, digits).ptr;
    float read = 0;
    std::from_chars(text, end, read);
    if (::arrow::util::Float16::FromFloat(read).bits() == bits) return float_text(read);
  }
  char text[32];  // five digits tell all of them apart
  return {text, std::to_chars(text, std::end(text), number, std::chars_format::general, 5).ptr};
}

/// The unit that the values of a type count: "s" of timestamp[s, tz=UTC].
std::string unit_of(const ::arrow::DataType& type) {
  const std::string text = type.ToString();
  const size_t start = text.find('[') + 1;
  return text.substr(start, text.find_first_of(",]", start) - start);
}

std::string count_text(std::int64_t count, const ::arrow::DataType& type) {
  return std::to_string(count) + " " + unit_of(type);
}

/// A fraction of seconds loses the groups of three zeros at its end.
std::string without_zeros(std::string text) {
  const bool has_zone = text.ends_with('Z');
  if (has_zone) text.pop_back();
  const size_t point = text.find('.');
  while (point != std::string::npos && text.size() > point + 1 && text.ends_with("000")) {
    text.resize(text.size() - 3);
  }
  if (text.ends_with('.')) text.pop_back();
  return has_zone ? text + "Z" : text;
}

/// Arrow's text of a date or a time, or the number where Arrow has none: for a year below -32767 or
/// above 32767, and for what is no time of a day.
template <typename TimeType>
std::string time_of(const ::arrow::Array& array, std::int64_t row) {
  const auto value = as<typename ::arrow::TypeTraits<TimeType>::ArrayType>(array).Value(row);
  ::arrow::internal::StringFormatter<TimeType> format(array.type().get());
  std::string text;
  format(value, [&text](std::string_view found) { text = found; });
  return text.starts_with('<') ? count_text(value, *array.type()) : without_zeros(std::move(text));
}

template <typename ArrayType>
std::string number_of(const ::arrow::Array& array, std::int64_t row) {
  return number_text(as<ArrayType>(array).Value(row));
}

template <typename ArrayType>
std::string decimal_of(const ::arrow::Array& array, std::int64_t row) {
  return as<ArrayType>(array).FormatValue(row);
}

}  // namespace

std::optional<std::string> fixed_text(const ::arrow::Array& array, std::int64_t row) {
  switch (array.type_id()) {
    case Type::BOOL:
      return as<::arrow::BooleanArray>(array).Value(row) ? "true" : "false";
    case Type::INT8:
      return number_of<::arrow::Int8Array>(array, row);
    case Type::INT16:
      return number_of<::arrow::Int16Array>(array, row);
    case Type::INT32:
      return number_of<::arrow::Int32Array>(array, row);
    case Type::INT64:
      return number_of<::arrow::Int64Array>(array, row);
    case Type::UINT8:
      return number_of<::arrow::UInt8Array>(array, row);
    case Type::UINT16:
      return number_of<::arrow::UInt16Array>(array, row);
    case Type::UINT32:
      return number_of<::arrow::UInt32Array>(array, row);
    case Type::UINT64:
      return number_of<::arrow::UInt64Array>(array, row);
    case Type::HALF_FLOAT:
      return half_text(as<::arrow::HalfFloatArray>(array).Value(row));
    case Type::FLOAT:
      return float_text(as<::arrow::FloatArray>(array).Value(row));
    case Type::DOUBLE:
      return float_text(as<::arrow::DoubleArray>(array).Value(row));
    case Type::DECIMAL32:
      return decimal_of<::arrow::Decimal32Array>(array, row);
    case Type::DECIMAL64:
      return decimal_of<::arrow::Decimal64Array>(array, row);
    case Type::DECIMAL128:
      return decimal_of<::arrow::Decimal128Array>(array, row);
    case Type::DECIMAL256:
      return decimal_of<::arrow::Decimal256Array>(array, row);
    case Type::DATE32:
      return time_of<::arrow::Date32Type>(array, row);
    case Type::DATE64:
      return time_of<::arrow::Date64Type>(array, row);
    case Type::TIME32:
      return time_of<::arrow::Time32Type>(array, row);
    case Type::TIME64:
      return time_of<::arrow::Time64Type>(array, row);
    case Type::TIMESTAMP:
      return time_of<::arrow::TimestampType>(array, row);
    case Type::DURATION:
      return count_text(as<::arrow::DurationArray>(array).Value(row), *array.type());
    default:
      return std::nullopt;
  }
}

}  // namespace numera::tools
