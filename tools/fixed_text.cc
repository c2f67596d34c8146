#include "tools/fixed_text.h"

#include <arrow/array.h>
#include <arrow/util/float16.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <type_traits>

#include "tools/time_text.h"

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
  constexpr Float kLargest = std::is_same_v<Float, float> ? Float{1e7F} : Float{1e15};
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

std::string timestamp_of(const ::arrow::Array& array, std::int64_t row) {
  const auto& type = static_cast<const ::arrow::TimestampType&>(*array.type());
  const std::string text =
      timestamp_text(as<::arrow::TimestampArray>(array).Value(row), type.unit());
  return type.timezone().empty() ? text : text + "Z";
}

std::string day_of(std::int64_t milliseconds) {
  std::string text = timestamp_text(milliseconds, ::arrow::TimeUnit::MILLI);
  return text.ends_with(" 00:00:00") ? text.substr(0, text.size() - 9) : text;
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
      return date_text(as<::arrow::Date32Array>(array).Value(row));
    case Type::DATE64:
      return day_of(as<::arrow::Date64Array>(array).Value(row));
    case Type::TIME32:
      return time_text(as<::arrow::Time32Array>(array).Value(row),
                       static_cast<const ::arrow::Time32Type&>(*array.type()).unit());
    case Type::TIME64:
      return time_text(as<::arrow::Time64Array>(array).Value(row),
                       static_cast<const ::arrow::Time64Type&>(*array.type()).unit());
    case Type::TIMESTAMP:
      return timestamp_of(array, row);
    case Type::DURATION:
      return duration_text(as<::arrow::DurationArray>(array).Value(row),
                           static_cast<const ::arrow::DurationType&>(*array.type()).unit());
    default:
      return std::nullopt;
  }
}

}  // namespace numera::tools
