#include "python/bindings/to_host.h"

#include <arrow/array/array_nested.h>
#include <arrow/array/validate.h>
#include <arrow/c/abi.h>
#include <arrow/c/bridge.h>
#include <arrow/python/pyarrow.h>
#include <arrow/record_batch.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "numera/core/to_numera.h"
#include "numera/core/to_numera_datatype.h"
#include "numera/extras/convert.h"
#include "python/bindings/bindings.h"
#include "python/bindings/conversion_docs.h"
#include "python/bindings/errors.h"
#include "python/bindings/host_value.h"
#include "python/bindings/unlocked.h"

namespace numera::python {
namespace {

namespace core = io::arrow::core;
namespace py = ::arrow::py;

constexpr const char* kCastNote =
    "numera.to_host(x, cast=True) casts values that have no host form, if there is a rule for "
    "their "
    "type.";

/// Options for objects of other libraries. Their views are always cast, because some of these
/// libraries have no plain text. Views in pyarrow objects were chosen by the user.
extras::IntakeOptions from_outside(bool cast) { return {.cast = cast, .views = true}; }

template <class T>
HostValue convert(const std::shared_ptr<T>& value, const extras::IntakeOptions& options) {
  ::arrow::Result<hxArrayPtr> result = [&] {
    const Unlocked unlocked;
    return extras::convert_to_host(value, {.intake = options});
  }();
  return adopt_result(std::move(result), options.cast);
}

/// One column per field of the rows. A null row is null in every column.
::arrow::Result<std::shared_ptr<::arrow::Table>> table_of(const ::arrow::ChunkedArray& rows) {
  const ::arrow::FieldVector& fields = rows.type()->fields();
  std::vector<::arrow::ArrayVector> chunks(fields.size());
  for (const auto& chunk : rows.chunks()) {
    // Otherwise Flatten would slice a child that is too short beyond its end.
    ARROW_RETURN_NOT_OK(chunk->Validate());
    const auto& structs = static_cast<const ::arrow::StructArray&>(*chunk);
    ARROW_ASSIGN_OR_RAISE(const ::arrow::ArrayVector columns, structs.Flatten());
    for (size_t i = 0; i < columns.size(); ++i) chunks[i].push_back(columns[i]);
  }
  ::arrow::ChunkedArrayVector columns;
  for (size_t i = 0; i < fields.size(); ++i) {
    columns.push_back(
        std::make_shared<::arrow::ChunkedArray>(std::move(chunks[i]), fields[i]->type()));
  }
  return ::arrow::Table::Make(::arrow::schema(fields), std::move(columns), rows.length());
}

::arrow::Result<hxArrayPtr> convert_stream(ArrowArrayStream* stream, bool cast) {
  ARROW_ASSIGN_OR_RAISE(const std::shared_ptr<::arrow::ChunkedArray> chunks,
                        ::arrow::ImportChunkedArray(stream));
  if (chunks->type()->id() != ::arrow::Type::STRUCT)
    return extras::convert_to_host(chunks, {.intake = from_outside(cast)});
  ARROW_ASSIGN_OR_RAISE(const std::shared_ptr<::arrow::Table> table, table_of(*chunks));
  return extras::convert_to_host(table, {.intake = from_outside(cast)});
}

template <class T>
T* content(nb::handle capsule, const char* name) {
  auto* pointer = static_cast<T*>(PyCapsule_GetPointer(capsule.ptr(), name));
  if (pointer == nullptr) throw nb::python_error();
  return pointer;
}

HostValue from_stream(nb::handle capsule, bool cast) {
  auto* stream = content<ArrowArrayStream>(capsule, "arrow_array_stream");
  ::arrow::Result<hxArrayPtr> result = [&] {
    const Unlocked unlocked;
    return convert_stream(stream, cast);
  }();
  return adopt_result(std::move(result), cast);
}

HostValue from_array(const nb::object& capsules, bool cast) {
  if (!nb::isinstance<nb::tuple>(capsules) || nb::len(capsules) != 2) {
    throw nb::type_error(
        "__arrow_c_array__: found a result of another form, expected a pair of capsules.");
  }
  auto* schema = content<ArrowSchema>(nb::object(capsules[0]), "arrow_schema");
  auto* array = content<ArrowArray>(nb::object(capsules[1]), "arrow_array");
  return convert(value_or_raise(::arrow::ImportArray(array, schema)), from_outside(cast));
}

/// Converts Python memory, which is borrowed during the call.
HostValue from_bytes(nb::handle object) {
  Py_buffer view;
  if (PyObject_GetBuffer(object.ptr(), &view, PyBUF_FORMAT | PyBUF_ND) != 0)
    throw nb::python_error();
  const std::unique_ptr<Py_buffer, void (*)(Py_buffer*)> release(&view, PyBuffer_Release);
  const std::string format = view.format == nullptr ? "B" : view.format;
  if (view.ndim > 1 || (format != "B" && format != "b" && format != "c")) {
    throw nb::type_error(
        ("Buffer: found " + std::to_string(view.ndim) + " dimensions of format '" + format +
         "', expected one dimension of bytes; numera.host.numeric takes NumPy arrays.")
            .c_str());
  }
  ::arrow::Result<hxArrayPtr> result = [&] {
    const Unlocked unlocked;
    return core::to_numera(
        std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(view.buf), view.len));
  }();
  return adopt(value_or_raise(std::move(result)));
}

/// Converts pyarrow objects directly, without capsules.
std::optional<HostValue> from_pyarrow(nb::handle x, bool cast) {
  PyObject* object = x.ptr();
  if (py::is_array(object)) return convert(value_or_raise(py::unwrap_array(object)), {cast});
  if (py::is_chunked_array(object))
    return convert(value_or_raise(py::unwrap_chunked_array(object)), {cast});
  if (py::is_table(object)) return convert(value_or_raise(py::unwrap_table(object)), {cast});
  if (py::is_batch(object)) return convert(value_or_raise(py::unwrap_batch(object)), {cast});
  // A reader passes on the exceptions of a Python source; its C stream only passes on their text.
  if (nb::isinstance(x, nb::module_::import_("pyarrow.lib").attr("RecordBatchReader"))) {
    return from_pyarrow(x.attr("read_all")(), cast);
  }
  return std::nullopt;
}

HostValue to_host(nb::handle x, bool cast) {
  if (std::optional<HostValue> value = from_pyarrow(x, cast)) return *std::move(value);
  if (nb::hasattr(x, "__arrow_c_stream__"))
    return from_stream(x.attr("__arrow_c_stream__")(), cast);
  if (nb::hasattr(x, "__arrow_c_array__")) return from_array(x.attr("__arrow_c_array__")(), cast);
  if (PyObject_CheckBuffer(x.ptr()) != 0 && !nb::isinstance<HostValue>(x)) return from_bytes(x);
  throw nb::type_error(
      (std::string("x: found ") + Py_TYPE(x.ptr())->tp_name +
       ", expected an object with __arrow_c_stream__ or __arrow_c_array__, or bytes.")
          .c_str());
}

std::optional<std::string> datatype(nb::handle type) {
  if (py::is_data_type(type.ptr())) {
    return core::to_numera_datatype(value_or_raise(py::unwrap_data_type(type.ptr())));
  }
  if (!nb::hasattr(type, "__arrow_c_schema__")) {
    throw nb::type_error((std::string("type: found ") + Py_TYPE(type.ptr())->tp_name +
                          ", expected an object with __arrow_c_schema__.")
                             .c_str());
  }
  const nb::object capsule = type.attr("__arrow_c_schema__")();
  return core::to_numera_datatype(
      value_or_raise(::arrow::ImportType(content<ArrowSchema>(capsule, "arrow_schema"))));
}

}  // namespace

HostValue adopt_result(::arrow::Result<hxArrayPtr> result, bool cast) {
  const bool casts_help = !cast && result.status().IsTypeError();
  return adopt(value_or_raise(std::move(result), casts_help ? kCastNote : ""));
}

void bind_to_host(nb::module_& module) {
  module.def("to_host", &to_host, nb::arg("x").none(), nb::arg("cast") = false,
             nb::sig("def to_host(x: typing.Any, cast: bool = False) -> HostArray"), docs::kToHost);
  module.def("datatype", &datatype, nb::arg("type").none(),
             nb::sig("def datatype(type: typing.Any) -> str | None"), docs::kDatatype);
}

}  // namespace numera::python
