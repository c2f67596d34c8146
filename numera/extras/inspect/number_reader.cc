#include "numera/extras/inspect/number_reader.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <system_error>
#include <type_traits>

#include "numera/extras/inspect/element_type.h"

namespace numera::extras::inspect {
namespace {

bool take(std::string_view& rest, std::string_view word) {
  if (!rest.starts_with(word)) return false;
  rest.remove_prefix(word.size());
  return true;
}

template <class T>
bool take_digits(std::string_view& rest, T& value) {
  const size_t sign = rest.starts_with('-') ? 1 : 0;
  if (rest.size() == sign || rest[sign] < '0' || rest[sign] > '9') return false;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  rest.remove_prefix(static_cast<size_t>(end - rest.data()));
  return error == std::errc();
}

/// Takes as much of `rest` as is a number.
template <class T>
bool take_number(std::string_view& rest, T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    value = rest.starts_with("true");
    return take(rest, value ? "true" : "false");
  } else {
    if constexpr (std::is_floating_point_v<T>) {
      value = std::numeric_limits<T>::quiet_NaN();
      if (take(rest, "NaN")) return true;
      value = std::numeric_limits<T>::infinity();
      if (take(rest, "Inf")) return true;
      value = -value;
      if (take(rest, "-Inf")) return true;
    }
    return take_digits(rest, value);
  }
}

template <class T>
bool read_element(std::string_view rest, bool complex, std::uint8_t* element) {
  T part{};
  if (!take_number(rest, part)) return false;
  std::memcpy(element, &part, sizeof(T));
  if (!complex) return rest.empty();
  const bool plus = take(rest, "+");
  if (plus == rest.starts_with('-') || !take_number(rest, part)) return false;
  std::memcpy(element + sizeof(T), &part, sizeof(T));
  return rest == "i";
}

}  // namespace

bool read_number(std::string_view token, hxClassID class_id, bool complex, std::uint8_t* element) {
  static_assert(sizeof(bool) == 1, "a truth value takes one byte");
  return with_element_type(
      class_id, [&]<class T>() { return read_element<T>(token, complex, element); },
      [] { return false; });
}

}  // namespace numera::extras::inspect
