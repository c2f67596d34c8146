#include "python/bindings/elements.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "numera/host/string_array.h"
#include "python/bindings/element_form.h"

namespace numera::python {
namespace {

nb::object string_element(const hxStringArray& strings, size_t index) {
  const std::optional<std::u16string_view> text = strings.element(index);
  return text ? python_text(*text) : nb::none();
}

size_t index_of(const HostValue& value, Py_ssize_t index) {
  const auto count = static_cast<Py_ssize_t>(hxGetNumberOfElements(value.get()));
  if (index < 0) index += count;
  if (index >= 0 && index < count) return static_cast<size_t>(index);
  const hxClassID class_id = hxGetClassID(value.get());
  throw std::out_of_range(class_id == hxClassID::Cell     ? "Cell index is out of range."
                          : class_id == hxClassID::Struct ? "Struct index is out of range."
                                                          : "Array index is out of range.");
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
  const std::optional<ElementForm> form = element_form(array);
  if (!form) {
    throw nb::type_error(
        "HostArray: found complex integers or a sparse array, expected elements "
        "that Python can represent.");
  }
  return form->read(hxGetData(array), index);
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
