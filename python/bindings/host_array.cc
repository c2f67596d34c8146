#include <cstddef>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

#include "numera/extras/inspect/inspect.h"
#include "python/bindings/bindings.h"
#include "python/bindings/buffer.h"
#include "python/bindings/elements.h"
#include "python/bindings/errors.h"
#include "python/bindings/host_array_docs.h"
#include "python/bindings/host_value.h"
#include "python/bindings/unlocked.h"

namespace numera::python {
namespace {

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

/// The name in the host's encoding; none if no host field can have such a name.
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

nb::object get_field(const HostValue& value, const nb::str& name) {
  if (has_fields(value.get())) {
    if (!has_field(value, name)) {
      raise_with_note(PyExc_KeyError, "Wrong field name.",
                      nb::str("found {!r}, expected one of {}").format(name, fields(value)));
    }
    if (hxGetNumberOfElements(value.get()) > 1) {
      throw std::invalid_argument(
          "HostArray: found a struct array of several elements, expected a struct with one "
          "element, such as value[0].");
    }
  }
  const std::string spelled = host_name(name).value_or("");
  return slot(value, hxGetFieldChecked(value.get(), 0, spelled.c_str()));
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
