#pragma once

/// \file
/// Builders of host values that read like literals:
///
///     const hxArrayPtr value = Struct({{"ArrowType", Char("array")},
///                                      {"Type", Char("double")},
///                                      {"Valid", Empty()},
///                                      {"Data", Column<double>({1, 2.5, 3})}});
///
/// Every function returns a new array that the caller owns. Elements are in storage order (column
/// by column). If their number does not match `dims`, the function throws `std::invalid_argument`.

#include <algorithm>
#include <complex>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "numera/host/array.h"
#include "numera/host/memory.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"

namespace numera::testing {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Dims = std::vector<size_t>;

/// A value to be moved into a container. It is mutable because the elements of a braced list are
/// const, and the container moves the value out.
struct Slot {
  Slot(hxArrayPtr array) : value(std::move(array)) {}  // NOLINT(google-explicit-constructor)
  mutable hxArrayPtr value;
};

struct Field {
  const char* name;
  Slot slot;
};

/// The content of an empty slot.
inline hxArrayPtr Empty() { return nullptr; }

inline void check_element_count(const Dims& dims, size_t given) {
  size_t elements = 1;
  for (const size_t dim : dims) elements *= dim;
  if (elements != given) throw std::invalid_argument("dims and the number of values differ");
}

template <class T>
constexpr hxClassID class_of() {
  if constexpr (std::is_same_v<T, double>) return hxClassID::Double;
  if constexpr (std::is_same_v<T, float>) return hxClassID::Single;
  if constexpr (std::is_same_v<T, std::int8_t>) return hxClassID::Int8;
  if constexpr (std::is_same_v<T, std::uint8_t>) return hxClassID::UInt8;
  if constexpr (std::is_same_v<T, std::int16_t>) return hxClassID::Int16;
  if constexpr (std::is_same_v<T, std::uint16_t>) return hxClassID::UInt16;
  if constexpr (std::is_same_v<T, std::int32_t>) return hxClassID::Int32;
  if constexpr (std::is_same_v<T, std::uint32_t>) return hxClassID::UInt32;
  if constexpr (std::is_same_v<T, std::int64_t>) return hxClassID::Int64;
  if constexpr (std::is_same_v<T, std::uint64_t>) return hxClassID::UInt64;
}

template <class T>
hxArrayPtr Matrix(const Dims& dims, const std::vector<T>& values) {
  check_element_count(dims, values.size());
  hxArrayPtr array = hxCreateNumericArray(dims, class_of<T>(), hxComplexity::Real);
  std::copy(values.begin(), values.end(), static_cast<T*>(hxGetData(array.get())));
  return array;
}

template <class T>
hxArrayPtr Column(const std::vector<T>& values) {
  return Matrix<T>({values.size(), 1}, values);
}

template <class T>
hxArrayPtr Row(const std::vector<T>& values) {
  return Matrix<T>({1, values.size()}, values);
}

template <class T>
hxArrayPtr Scalar(T value) {
  return Matrix<T>({1, 1}, {value});
}

template <class T>
hxArrayPtr Complex(const Dims& dims, const std::vector<std::complex<T>>& values) {
  check_element_count(dims, values.size());
  hxArrayPtr array = hxCreateNumericArray(dims, class_of<T>(), hxComplexity::Complex);
  std::copy(values.begin(), values.end(), static_cast<std::complex<T>*>(hxGetData(array.get())));
  return array;
}

inline hxArrayPtr Logical(const Dims& dims, const std::vector<bool>& values) {
  check_element_count(dims, values.size());
  hxArrayPtr array = hxCreateNumericArray(dims, hxClassID::Logical, hxComplexity::Real);
  std::copy(values.begin(), values.end(), static_cast<std::uint8_t*>(hxGetData(array.get())));
  return array;
}

inline hxArrayPtr Logical(const std::vector<bool>& values) {
  return Logical({values.size(), 1}, values);
}

/// A char row of UTF-16 code units, which may include unpaired surrogates.
inline hxArrayPtr Char(std::u16string_view text) {
  return hxCreateCharArray(text.data(), text.size());
}

/// A char row of a UTF-8 text.
inline hxArrayPtr Char(std::string_view utf8) { return Char(hxUTF8ToUTF16("UTF-8").convert(utf8)); }

/// A char array of any shape.
inline hxArrayPtr CharMatrix(const Dims& dims, std::u16string_view units) {
  check_element_count(dims, units.size());
  return host::memory::CreateCharArray(dims, units.data());
}

/// A string array; `std::nullopt` means a missing element.
inline hxArrayPtr Strings(const Dims& dims,
                          const std::vector<std::optional<std::u16string>>& texts) {
  check_element_count(dims, texts.size());
  std::unique_ptr<hxStringArray> strings = hxMakeStringArray(dims);
  for (size_t i = 0; i < texts.size(); ++i) {
    if (texts[i]) {
      strings->set(i, *texts[i]);
    } else {
      strings->set_missing(i);
    }
  }
  return hxCreateStringArrayFrom(std::move(strings));
}

inline hxArrayPtr Strings(const std::vector<std::optional<std::u16string>>& texts) {
  return Strings({texts.size(), 1}, texts);
}

inline hxArrayPtr Cell(const Dims& dims, std::initializer_list<Slot> slots) {
  check_element_count(dims, slots.size());
  hxArrayPtr array = hxCreateCellArray(dims);
  size_t i = 0;
  for (const Slot& slot : slots) hxSetCell(array.get(), i++, std::move(slot.value));
  return array;
}

/// A cell column.
inline hxArrayPtr Cell(std::initializer_list<Slot> slots) { return Cell({slots.size(), 1}, slots); }

/// A 1-by-1 struct.
inline hxArrayPtr Struct(std::initializer_list<Field> fields) {
  std::vector<const char*> names;
  for (const Field& field : fields) names.push_back(field.name);
  hxArrayPtr array = hxCreateStructArray(Dims{1, 1}, names);
  size_t slot = 0;
  for (const Field& field : fields) hxSetCell(array.get(), slot++, std::move(field.slot.value));
  return array;
}

/// The values of a struct or object array: one list per element, with one value per field.
using Rows = std::initializer_list<std::initializer_list<Slot>>;

inline hxArrayPtr fill_rows(hxArrayPtr array, const Dims& dims, size_t fields, Rows rows) {
  check_element_count(dims, rows.size());
  size_t slot = 0;
  for (const std::initializer_list<Slot>& row : rows) {
    if (row.size() != fields) throw std::invalid_argument("a row has not as many values as fields");
    for (const Slot& value : row) hxSetCell(array.get(), slot++, std::move(value.value));
  }
  return array;
}

/// A struct array:
///
///     StructArray({2, 1}, {"Name", "Age"}, {{Char("Ada"), Scalar(36.0)}, {Char("Jo"), Empty()}})
inline hxArrayPtr StructArray(const Dims& dims, const std::vector<const char*>& names, Rows rows) {
  return fill_rows(hxCreateStructArray(dims, names), dims, names.size(), rows);
}

/// The same as an object array of the given class.
inline hxArrayPtr ObjectArray(std::string class_name, const Dims& dims,
                              const std::vector<const char*>& names, Rows rows) {
  return fill_rows(host::memory::CreateObjectArray(std::move(class_name), dims, names), dims,
                   names.size(), rows);
}

}  // namespace numera::testing
