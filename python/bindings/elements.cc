#include "python/bindings/elements.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "numera/host/string_array.h"
#include "python/bindings/buffer.h"

namespace numera::python {
namespace {

nb::object python_text(std::u16string_view text) {
  int order = -1;  // little-endian
  PyObject* decoded =
      PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text.data()),
                            static_cast<Py_ssize_t>(text.size() * 2), "surrogatepass", &order);
  if (decoded == nullptr) throw nb::python_error();
  return nb::steal(decoded);
}

template <class T>
nb::object number(const hxArray* array, size_t index) {
  const auto* elements = static_cast<const T*>(hxGetData(array));
  if constexpr (std::is_floating_point_v<T>) {
    if (hxIsComplex(array)) {
      return nb::steal(PyComplex_FromDoubles(static_cast<double>(elements[2 * index]),
                                             static_cast<double>(elements[2 * index + 1])));
    }
  }
  return nb::cast(elements[index]);
}

nb::object leaf_element(const hxArray* array, size_t index) {
  switch (hxGetClassID(array)) {
    case hxClassID::Double:
      return number<double>(array, index);
    case hxClassID::Single:
      return number<float>(array, index);
    case hxClassID::Int8:
      return number<std::int8_t>(array, index);
    case hxClassID::UInt8:
      return number<std::uint8_t>(array, index);
    case hxClassID::Int16:
      return number<std::int16_t>(array, index);
    case hxClassID::UInt16:
      return number<std::uint16_t>(array, index);
    case hxClassID::Int32:
      return number<std::int32_t>(array, index);
    case hxClassID::UInt32:
      return number<std::uint32_t>(array, index);
    case hxClassID::Int64:
      return number<std::int64_t>(array, index);
    case hxClassID::UInt64:
      return number<std::uint64_t>(array, index);
    case hxClassID::Logical:
      return nb::bool_(static_cast<const std::uint8_t*>(hxGetData(array))[index] != 0);
    case hxClassID::Char:
      return python_text({static_cast<const char16_t*>(hxGetData(array)) + index, 1});
    case hxClassID::Unknown:
    case hxClassID::Cell:
    case hxClassID::Struct:
    case hxClassID::Void:
    case hxClassID::Function:
    case hxClassID::Object:
      break;
  }
  throw nb::type_error("HostArray: found a class whose elements cannot be read.");
}

nb::object string_element(const hxStringArray& strings, size_t index) {
  const std::optional<std::u16string_view> text = strings.element(index);
  return text ? python_text(*text) : nb::none();
}

size_t index_of(const HostValue& value, Py_ssize_t index) {
  const auto count = static_cast<Py_ssize_t>(hxGetNumberOfElements(value.get()));
  if (index < 0) index += count;
  if (index >= 0 && index < count) return static_cast<size_t>(index);
  switch (hxGetClassID(value.get())) {
    case hxClassID::Cell:
      throw std::out_of_range("Cell index is out of range.");
    case hxClassID::Struct:
      throw std::out_of_range("Struct index is out of range.");
    case hxClassID::Unknown:
    case hxClassID::Logical:
    case hxClassID::Char:
    case hxClassID::Void:
    case hxClassID::Double:
    case hxClassID::Single:
    case hxClassID::Int8:
    case hxClassID::UInt8:
    case hxClassID::Int16:
    case hxClassID::UInt16:
    case hxClassID::Int32:
    case hxClassID::UInt32:
    case hxClassID::Int64:
    case hxClassID::UInt64:
    case hxClassID::Function:
    case hxClassID::Object:
      break;
  }
  throw std::out_of_range("Array index is out of range.");
}

}  // namespace

nb::object slot(const HostValue& whole, const hxArray* part) {
  return part == nullptr ? nb::none() : nb::cast(part_of(whole, part));
}

nb::object get_element(const HostValue& value, Py_ssize_t position) {
  const size_t index = index_of(value, position);
  const hxArray* array = value.get();
  if (hxGetClassID(array) == hxClassID::Cell) return slot(value, hxGetCell(array, index));
  if (has_fields(array)) return nb::cast(struct_element(value, index));
  if (hxIsStringArray(array)) return string_element(hxGetStringArray(array), index);
  if (element_format(array) == nullptr) {
    throw nb::type_error(
        "HostArray: found complex integers or a sparse array, expected elements "
        "that Python has a form for.");
  }
  return leaf_element(array, index);
}

nb::list texts(const HostValue& value) {
  nb::list list;
  const hxStringArray& strings = hxGetStringArray(value.get());
  for (size_t i = 0; i < strings.size(); ++i) list.append(string_element(strings, i));
  return list;
}

nb::object text(const HostValue& value) {
  if (hxGetClassID(value.get()) != hxClassID::Char)
    throw std::invalid_argument("Array is not char array.");
  const auto* units = static_cast<const char16_t*>(hxGetData(value.get()));
  const size_t count = hxGetNumberOfElements(value.get());
  return count == 0 ? nb::str("") : python_text({units, count});
}

}  // namespace numera::python
