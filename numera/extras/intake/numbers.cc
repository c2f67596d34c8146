#include <arrow/type.h>
#include <arrow/util/decimal.h>
#include <arrow/util/float16.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

/// Powers of ten that a double holds exactly.
constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::int64_t kExactIntegers = std::int64_t{1} << 53;

/// The double nearest to digits * 10^-scale, for any number of digits.
double from_digits(const std::string& digits, std::int32_t scale) {
  const std::string text = digits + "e" + std::to_string(-std::int64_t{scale});
  double value = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end.ec == std::errc()) return value;
  const double magnitude = scale < 0 ? std::numeric_limits<double>::infinity() : 0.0;
  return digits.front() == '-' ? -magnitude : magnitude;
}

/// If a double holds both operands exactly, a single division or multiplication rounds once.
double from_int64(std::int64_t unscaled, std::int32_t scale) {
  const bool exact =
      unscaled >= -kExactIntegers && unscaled <= kExactIntegers && scale >= -22 && scale <= 22;
  if (!exact) return from_digits(std::to_string(unscaled), scale);
  const auto value = static_cast<double>(unscaled);
  return scale >= 0 ? value / kExactPowers[scale] : value * kExactPowers[-scale];
}

double to_double(std::int32_t unscaled, std::int32_t scale) { return from_int64(unscaled, scale); }

double to_double(std::int64_t unscaled, std::int32_t scale) { return from_int64(unscaled, scale); }

double to_double(const ::arrow::Decimal128& decimal, std::int32_t scale) {
  const auto low = static_cast<std::int64_t>(decimal.low_bits());
  if (decimal.high_bits() == low >> 63) return from_int64(low, scale);
  return from_digits(decimal.ToIntegerString(), scale);
}

double to_double(const ::arrow::Decimal256& decimal, std::int32_t scale) {
  const auto words = decimal.little_endian_array();
  const auto low = static_cast<std::int64_t>(words[0]);
  const auto sign = static_cast<std::uint64_t>(low >> 63);
  if (words[1] == sign && words[2] == sign && words[3] == sign) return from_int64(low, scale);
  return from_digits(decimal.ToIntegerString(), scale);
}

/// Doubles with the array's validity. `value(i)` is called only for elements that are not null.
template <class Value>
DataResult make_doubles(Work& work, const ::arrow::ArrayData& array, Value value) {
  ARROW_ASSIGN_OR_RAISE(const Data slots, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(auto doubles, allocate(work, array.length, sizeof(double)));
  for (std::int64_t i = 0; i < array.length; ++i) {
    store<double>(*doubles, i, is_null(*slots, i) ? 0.0 : value(i));
  }
  return ::arrow::ArrayData::Make(::arrow::float64(), array.length,
                                  {slots->buffers[0], std::move(doubles)}, slots->null_count);
}

template <class Unscaled>
DataResult cast_decimals(Work& work, const ::arrow::ArrayData& array, std::int32_t scale) {
  return make_doubles(work, array, [&](std::int64_t i) {
    return to_double(load<Unscaled>(*array.buffers[1], array.offset + i), scale);
  });
}

}  // namespace

DataResult cast_decimal(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  const auto& type = static_cast<const ::arrow::DecimalType&>(*array.type);
  switch (type.byte_width()) {
    case 4:
      return cast_decimals<std::int32_t>(work, array, type.scale());
    case 8:
      return cast_decimals<std::int64_t>(work, array, type.scale());
    case 16:
      return cast_decimals<::arrow::Decimal128>(work, array, type.scale());
    default:
      return cast_decimals<::arrow::Decimal256>(work, array, type.scale());
  }
}

DataResult cast_half_float(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  return make_doubles(work, array, [&](std::int64_t i) {
    const auto bits = load<std::uint16_t>(*array.buffers[1], array.offset + i);
    return ::arrow::util::Float16::FromBits(bits).ToDouble();
  });
}

}  // namespace numera::extras::intake
