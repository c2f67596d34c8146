#include "python/bindings/element_form.h"

#include <cstdint>

namespace numera::python {
namespace {

template <class T>
nb::object number(const void* elements, size_t index) {
  return nb::cast(static_cast<const T*>(elements)[index]);
}

template <class T>
nb::object complex_number(const void* elements, size_t index) {
  const auto* parts = static_cast<const T*>(elements) + 2 * index;
  return nb::steal(
      PyComplex_FromDoubles(static_cast<double>(parts[0]), static_cast<double>(parts[1])));
}

nb::object truth_value(const void* elements, size_t index) {
  return nb::bool_(static_cast<const std::uint8_t*>(elements)[index] != 0);
}

nb::object code_unit(const void* elements, size_t index) {
  return python_text({static_cast<const char16_t*>(elements) + index, 1});
}

std::optional<ElementForm> real_form(hxClassID class_id) {
  switch (class_id) {
    case hxClassID::Double:
      return ElementForm{"d", number<double>};
    case hxClassID::Single:
      return ElementForm{"f", number<float>};
    case hxClassID::Int8:
      return ElementForm{"b", number<std::int8_t>};
    case hxClassID::UInt8:
      return ElementForm{"B", number<std::uint8_t>};
    case hxClassID::Int16:
      return ElementForm{"h", number<std::int16_t>};
    case hxClassID::UInt16:
      return ElementForm{"H", number<std::uint16_t>};
    case hxClassID::Int32:
      return ElementForm{"i", number<std::int32_t>};
    case hxClassID::UInt32:
      return ElementForm{"I", number<std::uint32_t>};
    case hxClassID::Int64:
      return ElementForm{"q", number<std::int64_t>};
    case hxClassID::UInt64:
      return ElementForm{"Q", number<std::uint64_t>};
    case hxClassID::Logical:
      return ElementForm{"?", truth_value};
    case hxClassID::Char:
      return ElementForm{"H", code_unit};
    case hxClassID::Unknown:
    case hxClassID::Cell:
    case hxClassID::Struct:
    case hxClassID::Void:
    case hxClassID::Function:
    case hxClassID::Object:
      break;
  }
  return std::nullopt;
}

}  // namespace

std::optional<ElementForm> element_form(const hxArray* array) {
  if (hxIsSparse(array)) return std::nullopt;
  const hxClassID class_id = hxGetClassID(array);
  if (!hxIsComplex(array)) return real_form(class_id);
  if (class_id == hxClassID::Double) return ElementForm{"Zd", complex_number<double>};
  if (class_id == hxClassID::Single) return ElementForm{"Zf", complex_number<float>};
  return std::nullopt;
}

nb::object python_text(std::u16string_view text) {
  int order = -1;  // little-endian
  PyObject* decoded =
      PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text.data()),
                            static_cast<Py_ssize_t>(text.size() * 2), "surrogatepass", &order);
  if (decoded == nullptr) throw nb::python_error();
  return nb::steal(decoded);
}

}  // namespace numera::python
