#include <arrow/buffer.h>
#include <arrow/chunked_array.h>
#include <arrow/python/pyarrow.h>
#include <arrow/result.h>
#include <arrow/status.h>
#include <arrow/table.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "numera/extras/column_status.h"
#include "numera/extras/convert.h"
#include "numera/extras/own/own.h"
#include "python/bindings/bindings.h"
#include "python/bindings/conversion_docs.h"
#include "python/bindings/encoded_fields.h"
#include "python/bindings/errors.h"
#include "python/bindings/host_value.h"
#include "python/bindings/unlocked.h"

namespace numera::python {
namespace {

namespace py = ::arrow::py;

constexpr const char* kUncheckedNote =
    "with validate=False, numera.to_arrow reads values in readable form alone; "
    "numera.make_readable(value) makes one of an ordinary value and of what numera.to_host gave.";

constexpr const char* kTakenNote =
    "numera.to_arrow takes encoded values, such as those of numera.to_host, and ordinary values: "
    "numbers, logical values, texts, and cells of texts or of bytes.";

constexpr const char* kExactTypeNote =
    "without a type, numera.to_arrow gives the type that the value has, or says what is wrong with "
    "the value.";

::arrow::Status validate_column(const ::arrow::Table& table, int index) {
  const ::arrow::ChunkedArray& column = *table.column(index);
  ::arrow::Status status = column.ValidateFull();
  if (status.ok() && column.length() != table.num_rows()) {
    status = ::arrow::Status::Invalid("found ", column.length(), " elements, expected ",
                                      table.num_rows(), ", as in the first column.");
  }
  if (status.ok()) return status;
  return extras::status_of_column(status, table.field(index)->name(), index);
}

::arrow::Status validate_full(const ::arrow::Array& array) { return array.ValidateFull(); }
::arrow::Status validate_full(const ::arrow::Buffer&) { return ::arrow::Status::OK(); }
::arrow::Status validate_full(const ::arrow::Table& table) {
  for (int i = 0; i < table.num_columns(); ++i) {
    hxThrowIfInterruptPending();
    ARROW_RETURN_NOT_OK(validate_column(table, i));
  }
  return ::arrow::Status::OK();
}

template <class T>
using Converted = ::arrow::Result<std::shared_ptr<T>>;
/// Makes an Arrow value that owns the host value. The callers pass a shared copy, so that the
/// `HostArray` keeps its own.
template <class T>
using Conversion = Converted<T> (*)(hxArrayPtr value);

/// Calls `convert` while other Python threads run. `note` makes the note of a failure.
template <class Convert, class Note>
auto value_of(const Convert& convert, const Note& note) {
  auto result = [&] {
    const Unlocked unlocked;
    return convert();
  }();
  if (!result.ok()) raise_status(result.status(), note(result.status()));
  return *std::move(result);
}

/// Values that are known to be readable are read as they are: `convert` takes twice as long for
/// small ones. Structs that are not encoded have the host's exceptions.
bool is_read_directly(const hxArray* value) {
  return is_known_readable(value) || is_other_struct(value);
}

/// Converts a value in any form. Without a check, reads a value in readable form alone.
template <class T>
std::shared_ptr<T> converted(const HostValue& host, bool validate, Conversion<T> convert,
                             Conversion<T> read) {
  const bool direct = !validate || is_read_directly(host.get());
  const auto call = [&]() -> Converted<T> {
    if (!direct) return convert(hxSharedCopy(host.get()));
    ARROW_ASSIGN_OR_RAISE(auto value, read(hxSharedCopy(host.get())));
    if (validate) ARROW_RETURN_NOT_OK(validate_full(*value));
    return value;
  };
  const auto note = [&](const ::arrow::Status& status) {
    return validate ? refused_column_note(host, status)
                    : type_of_failed_column(host, status) + kUncheckedNote;
  };
  try {
    return value_of(call, note);
  } catch (const std::invalid_argument& error) {
    raise_with_note(PyExc_ValueError, error.what(),
                    nb::str(validate ? kTakenNote : kUncheckedNote));
  }
}

Converted<::arrow::Array> any_to_array(hxArrayPtr value) {
  return extras::convert_to_arrow(std::move(value));
}

Converted<::arrow::Table> any_to_table(hxArrayPtr value) {
  return extras::convert_to_arrow_table(std::move(value));
}

nb::object wrapped(PyObject* object) {
  if (object == nullptr) throw nb::python_error();
  return nb::steal(object);
}

/// Checks that `type` is what may be asked of a value of this kind.
void check_type(nb::handle type, const std::string& kind, bool validate) {
  const bool fits = kind == "table" ? py::is_schema(type.ptr())
                                    : kind != "buffer" && py::is_data_type(type.ptr());
  if (!fits) {
    const char* const expected = kind == "table"    ? "a pyarrow.Schema for a table"
                                 : kind == "buffer" ? "None for a buffer"
                                                    : "a pyarrow.DataType for an array";
    throw nb::type_error((std::string("type: found ") + Py_TYPE(type.ptr())->tp_name +
                          ", expected " + expected + ".")
                             .c_str());
  }
  if (!validate) {
    throw nb::value_error("validate: found False beside a type, expected True.");
  }
}

nb::object to_arrow_exactly(const HostValue& host, nb::handle type, const std::string& kind) {
  const auto note = [&](const ::arrow::Status& status) {
    return type_of_failed_column(host, status) + kExactTypeNote;
  };
  if (kind == "table") {
    const auto schema = value_or_raise(py::unwrap_schema(type.ptr()));
    const auto convert = [&] {
      return extras::convert_to_arrow_table(hxSharedCopy(host.get()), schema);
    };
    return wrapped(py::wrap_table(value_of(convert, note)));
  }
  const auto data_type = value_or_raise(py::unwrap_data_type(type.ptr()));
  const auto convert = [&] {
    return extras::convert_to_arrow(hxSharedCopy(host.get()), data_type);
  };
  return wrapped(py::wrap_array(value_of(convert, note)));
}

nb::object to_arrow(const HostValue& host, nb::handle type, bool validate) {
  const std::string kind = kind_of(host.get());
  if (!type.is_none()) {
    check_type(type, kind, validate);
    return to_arrow_exactly(host, type, kind);
  }
  if (kind == "table") {
    return wrapped(
        py::wrap_table(converted(host, validate, any_to_table, extras::own_to_arrow_table)));
  }
  if (kind == "buffer") {
    // The only form of a buffer is readable.
    const Conversion<::arrow::Buffer> read = extras::own_to_arrow<::arrow::Buffer>;
    return wrapped(py::wrap_buffer(converted(host, validate, read, read)));
  }
  return wrapped(py::wrap_array(converted<::arrow::Array>(host, validate, any_to_array,
                                                          extras::own_to_arrow<::arrow::Array>)));
}

}  // namespace

void bind_to_arrow(nb::module_& module) {
  module.def("to_arrow", &to_arrow, nb::arg("host"), nb::arg("type").none() = nb::none(),
             nb::arg("validate") = true,
             nb::sig("def to_arrow(host: HostArray, type: pyarrow.DataType | pyarrow.Schema | None "
                     "= None, validate: bool = True) -> pyarrow.Array | pyarrow.Table | "
                     "pyarrow.Buffer"),
             docs::kToArrow);
}

}  // namespace numera::python
