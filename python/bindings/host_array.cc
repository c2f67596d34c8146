#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "numera/extras/inspect/inspect.h"
#include "numera/host/string_array.h"
#include "python/bindings/bindings.h"
#include "python/bindings/buffer.h"
#include "python/bindings/errors.h"
#include "python/bindings/host_array_docs.h"
#include "python/bindings/host_value.h"
#include "python/bindings/unlocked.h"

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

nb::str field_name(const hxArray* array, int number) {
  const char* name = hxGetFieldName(array, number);
  return nb::steal<nb::str>(
      PyUnicode_DecodeUTF8(name, static_cast<Py_ssize_t>(std::strlen(name)), "surrogateescape"));
}

int number_of_fields(const hxArray* array) {
  return has_fields(array) ? hxGetNumberOfFields(array) : 0;
}

nb::tuple fields(const HostValue& value) {
  nb::list names;
  for (int i = 0; i < number_of_fields(value.get()); ++i) {
    names.append(field_name(value.get(), i));
  }
  return nb::tuple(names);
}

nb::tuple shape(const HostValue& value) {
  nb::list extents;
  for (const size_t extent : hxGetDimensions(value.get())) extents.append(extent);
  return nb::tuple(extents);
}

/// The name as the host spells it; none where no host can have such a field.
std::optional<std::string> host_name(const nb::str& name) {
  const auto bytes =
      nb::steal<nb::bytes>(PyUnicode_AsEncodedString(name.ptr(), "utf-8", "surrogateescape"));
  if (!bytes.is_valid()) {
    PyErr_Clear();
    return std::nullopt;
  }
  std::string text(bytes.c_str(), bytes.size());
  if (text.find('\0') != std::string::npos) return std::nullopt;
  return text;
}

bool has_field(const HostValue& value, const nb::str& name) {
  const auto spelled = host_name(name);
  return spelled && has_fields(value.get()) && hxGetFieldNumber(value.get(), spelled->c_str()) >= 0;
}

nb::object slot(const HostValue& whole, const hxArray* part) {
  return part == nullptr ? nb::none() : nb::cast(part_of(whole, part));
}

nb::object get_field(const HostValue& value, const nb::str& name) {
  if (has_fields(value.get())) {
    if (!has_field(value, name)) {
      raise_with_note(PyExc_KeyError, "Wrong field name.",
                      nb::str("found {!r}, expected one of {}").format(name, fields(value)));
    }
    if (hxGetNumberOfElements(value.get()) > 1) {
      throw std::invalid_argument(
          "HostArray: found a struct array of several elements, expected one element to take a "
          "field of.");
    }
  }
  const std::string spelled = host_name(name).value_or("");
  return slot(value, hxGetFieldChecked(value.get(), 0, spelled.c_str()));
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

/// All texts of a string array, or all rows of a char matrix, in storage order.
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

std::string tree(const HostValue& value, size_t max_depth, size_t max_elements, size_t max_width,
                 size_t max_lines) {
  const Unlocked unlocked;
  return extras::print(value.get(), {max_depth, max_elements, max_width, max_lines});
}

std::optional<std::string> first_difference(const HostValue& a, const HostValue& b) {
  const Unlocked unlocked;
  return extras::first_difference(a.get(), b.get());
}

nb::object equal(const HostValue& value, const nb::object& other) {
  if (!nb::isinstance<HostValue>(other)) return nb::borrow(Py_NotImplemented);
  return nb::bool_(!first_difference(value, nb::cast<const HostValue&>(other)).has_value());
}

nb::object call(const char* module, const char* function, const nb::object& self) {
  return nb::module_::import_(module).attr(function)(self);
}

void bind_access(nb::class_<HostValue>& type) {
  type.def_prop_ro(
      "class_name", [](const HostValue& self) { return hxGetClassName(self.get()); },
      docs::kClassName);
  type.def_prop_ro("shape", &shape, nb::sig("def shape(self) -> tuple[int, ...]"), docs::kShape);
  type.def_prop_ro("fields", &fields, nb::sig("def fields(self) -> tuple[str, ...]"),
                   docs::kFields);
  type.def_prop_ro(
      "is_complex", [](const HostValue& self) { return hxIsComplex(self.get()); },
      docs::kIsComplex);
  type.def_prop_ro(
      "is_sparse", [](const HostValue& self) { return hxIsSparse(self.get()); }, docs::kIsSparse);
  type.def_prop_ro("text", &text, nb::sig("def text(self) -> str"), docs::kText);
  type.def(
      "__len__", [](const HostValue& self) { return hxGetNumberOfElements(self.get()); },
      docs::kLen);
  type.def("__getitem__", &get_field, nb::arg("field"),
           nb::sig("def __getitem__(self, field: str, /) -> HostArray | None"), docs::kGetField);
  type.def("__getitem__", &get_element, nb::arg("index"),
           nb::sig("def __getitem__(self, index: int, /) -> typing.Any"), docs::kGetElement);
  type.def(
      "__iter__", [](nb::handle self) { return nb::steal(PySeqIter_New(self.ptr())); },
      nb::sig("def __iter__(self) -> collections.abc.Iterator[typing.Any]"), docs::kIter);
  type.def("__contains__", &has_field, nb::arg("field"),
           nb::sig("def __contains__(self, field: str, /) -> bool"), docs::kContains);
}

void bind_views(nb::class_<HostValue>& type) {
  type.def(
      "numpy", [](nb::object self) { return call("numera._values", "view", self); },
      nb::sig("def numpy(self) -> numpy.ndarray"), docs::kNumpy);
  type.def(
      "to_python", [](nb::object self) { return call("numera._values", "to_python", self); },
      nb::sig("def to_python(self) -> typing.Any"), docs::kToPython);
  type.def("tree", &tree, nb::kw_only(), nb::arg("max_depth") = 20, nb::arg("max_elements") = 20,
           nb::arg("max_width") = 100, nb::arg("max_lines") = 1000, docs::kTree);
  type.def(
      "__repr__",
      [](const HostValue& self) {
        const extras::PrintOptions usual;
        return tree(self, usual.max_depth, usual.max_elements, usual.max_width, usual.max_lines);
      },
      docs::kRepr);
  type.def(
      "_repr_html_", [](nb::object self) { return call("numera._html", "render", self); },
      nb::sig("def _repr_html_(self) -> str"), docs::kReprHtml);
}

void bind_comparison(nb::class_<HostValue>& type) {
  type.def("__eq__", &equal, nb::arg("other"),
           nb::sig("def __eq__(self, other: object, /) -> bool"), docs::kEqual);
  type.attr("__hash__") = nb::none();
  type.def(
      "__reduce__", [](nb::object self) { return call("numera._values", "reduce", self); },
      nb::sig("def __reduce__(self) -> tuple[typing.Any, ...]"), docs::kReduce);
}

}  // namespace

void bind_host_array(nb::module_& module) {
  nb::class_<HostValue> type(module, "HostArray", nb::type_slots(buffer_slots()), docs::kHostArray);
  bind_access(type);
  bind_views(type);
  bind_comparison(type);
  module.def("_texts", &texts, nb::arg("strings"));
  module.def("_seal", [](HostValue& value) { value.writable = false; }, nb::arg("value"));
  module.def("first_difference", &first_difference, nb::arg("a"), nb::arg("b"),
             docs::kFirstDifference);
}

}  // namespace numera::python
