#include "numera/extras/inspect/number.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "numera/format/number_classes.h"

namespace numera::extras::inspect {
namespace {

template <class T>
std::string to_text(T value) {
  std::array<char, 64> text;
  char* const begin = text.data();
  std::to_chars_result end{};
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-Inf" : "Inf";
    // The shortest text of 100000 is 1e+05. Whole numbers are written in full while every digit is
    // significant.
    constexpr T kManyDigits = std::is_same_v<T, float> ? static_cast<T>(1e7) : static_cast<T>(1e15);
    const bool whole = std::trunc(value) == value && std::abs(value) < kManyDigits;
    end = whole ? std::to_chars(begin, begin + text.size(), value, std::chars_format::fixed)
                : std::to_chars(begin, begin + text.size(), value);
  } else {
    end = std::to_chars(begin, begin + text.size(), value);
  }
  return {begin, end.ptr};
}

// One part (real or imaginary) of an element. `part` counts from the start of the block.
std::string part_text(hxClassID class_id, const std::uint8_t* block, size_t part) {
  const auto text = [&]<class T>(const format::NumberClass<T>&) {
    T value;
    std::memcpy(&value, block + part * sizeof(T), sizeof(T));
    return to_text(value);
  };
  // Only logical values remain: one byte each.
  return format::with_number_class(
      class_id, text, [&] { return std::string(block[part] != 0 ? "true" : "false"); });
}

const std::uint8_t* block_of(const hxArray* array) {
  return static_cast<const std::uint8_t*>(hxGetData(array));
}

}  // namespace

size_t number_size(const hxArray* array) { return hxGetElementSize(array); }

std::string number_text(const hxArray* array, size_t element) {
  const hxClassID class_id = hxGetClassID(array);
  if (!hxIsComplex(array)) return part_text(class_id, block_of(array), element);
  const std::string real = part_text(class_id, block_of(array), 2 * element);
  const std::string imaginary = part_text(class_id, block_of(array), 2 * element + 1);
  return real + (imaginary[0] == '-' ? "" : "+") + imaginary + "i";
}

std::string bits_text(const hxArray* array, size_t element) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const size_t parts = hxIsComplex(array) ? 2 : 1;
  const size_t size = number_size(array) / parts;
  const std::uint8_t* byte = block_of(array) + element * number_size(array);
  std::string text;
  for (size_t part = 0; part < parts; ++part, byte += size) {
    if (part > 0) text += ' ';
    for (size_t i = 0; i < size; ++i) {
      text += kDigits[byte[size - 1 - i] >> 4];
      text += kDigits[byte[size - 1 - i] & 0xF];
    }
  }
  return text;
}

}  // namespace numera::extras::inspect
