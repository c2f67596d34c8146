#include <arrow/buffer.h>
#include <arrow/chunked_array.h>
#include <arrow/python/pyarrow.h>
#include <arrow/table.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "numera/core/util/table_error.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/own/own.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "python/bindings/bindings.h"
#include "python/bindings/conversion_docs.h"
#include "python/bindings/errors.h"
#include "python/bindings/host_value.h"
#include "python/bindings/unlocked.h"

namespace numera::python {
namespace {

namespace py = ::arrow::py;
using io::arrow::core::util::TableErrorStatusDetail;

constexpr const char* kEncodeNote =
    "numera.to_arrow reads encoded values in readable form; numera.make_readable(value) converts "
    "ordinary values and results of numera.to_host to this form.";

constexpr const char* kRefusedColumnNote =
    "change the value at that place to what was expected there, or leave the column out of the "
    "table.";

/// The text of a field of element `index`; empty if it cannot be read.
std::string text_in(const hxArray* value, size_t index, const char* name) {
  constexpr size_t kLongerThanAnyName = 64;
  if (!has_fields(value) || index >= hxGetNumberOfElements(value)) return {};
  const hxArray* field = hxGetField(value, index, name);
  if (field == nullptr || hxGetClassID(field) != hxClassID::Char) return {};
  if (hxGetNumberOfElements(field) > kLongerThanAnyName) return {};
  std::string text;
  const auto* units = static_cast<const char16_t*>(hxGetData(field));
  for (size_t i = 0; i < hxGetNumberOfElements(field); ++i) {
    text.push_back(units[i] < 0x80 ? static_cast<char>(units[i]) : '?');
  }
  return text;
}

std::string kind_of(const hxArray* value) { return text_in(value, 0, "ArrowType"); }

/// `Column 'price' (index 1, type 'double'): `; empty if the failure names no column.
std::string failed_column(const HostValue& host, const ::arrow::Status& status) {
  const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
  if (detail == nullptr) return {};
  const std::string index = std::to_string(detail->column_index());
  std::string text = "Column '" + detail->column_name() + "' (index " + index;
  const hxArray* columns = hxGetField(host.get(), 0, "Columns");
  if (columns != nullptr) {
    const auto position = static_cast<size_t>(detail->column_index());
    const std::string type = text_in(columns, position, "Type");
    if (!type.empty()) text += ", type '" + type + "'";
  }
  return text + "): ";
}

::arrow::Status validate_column(const ::arrow::Table& table, int index) {
  const ::arrow::ChunkedArray& column = *table.column(index);
  ::arrow::Status status = column.ValidateFull();
  if (status.ok() && column.length() != table.num_rows()) {
    status = ::arrow::Status::Invalid("Column: found ", column.length(), " elements, expected ",
                                      table.num_rows(), ", as in the first column.");
  }
  if (status.ok()) return status;
  return io::arrow::core::util::in_column(status, table.field(index)->name(), index);
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

/// Calls `convert` with a shared copy of the value, so that the `HostArray` and Arrow own one each.
template <class Convert>
auto converted(const HostValue& host, bool validate, Convert convert) {
  auto validated = [&]() -> decltype(convert(nullptr)) {
    const Unlocked unlocked;
    ARROW_ASSIGN_OR_RAISE(auto value, convert(hxSharedCopy(host.get())));
    if (validate) ARROW_RETURN_NOT_OK(validate_full(*value));
    return value;
  };
  try {
    auto result = validated();
    if (!result.ok()) {
      raise_status(result.status(), failed_column(host, result.status()) + kEncodeNote);
    }
    return std::move(result).MoveValueUnsafe();
  } catch (const std::invalid_argument& error) {
    raise_with_note(PyExc_ValueError, error.what(), nb::str(kEncodeNote));
  }
}

nb::object wrapped(PyObject* object) {
  if (object == nullptr) throw nb::python_error();
  return nb::steal(object);
}

nb::object to_arrow(const HostValue& host, bool validate) {
  const std::string kind = kind_of(host.get());
  if (kind == "table") {
    return wrapped(py::wrap_table(converted(host, validate, extras::own_to_arrow_table)));
  }
  if (kind == "buffer") {
    return wrapped(
        py::wrap_buffer(converted(host, validate, extras::own_to_arrow<::arrow::Buffer>)));
  }
  return wrapped(py::wrap_array(converted(host, validate, extras::own_to_arrow<::arrow::Array>)));
}

HostValue make_readable(const HostValue& value) {
  ::arrow::Result<hxArrayPtr> result = [&] {
    const Unlocked unlocked;
    return extras::make_readable(value.get());
  }();
  const std::string column = failed_column(value, result.status());
  return adopt(
      value_or_raise(std::move(result), column.empty() ? "" : column + kRefusedColumnNote));
}

nb::tuple utf16_to_utf8(const HostValue& text) {
  std::array<hxArrayPtr, 2> outputs;
  {
    const Unlocked unlocked;
    const hxArray* input = text.get();
    io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &input);
  }
  return nb::make_tuple(adopt(std::move(outputs[0])), adopt(std::move(outputs[1])));
}

}  // namespace

void bind_to_arrow(nb::module_& module) {
  module.def("to_arrow", &to_arrow, nb::arg("host"), nb::arg("validate") = true,
             nb::sig("def to_arrow(host: HostArray, validate: bool = True) -> pyarrow.Array | "
                     "pyarrow.Table | pyarrow.Buffer"),
             docs::kToArrow);
  module.def("make_readable", &make_readable, nb::arg("value"), docs::kMakeReadable);
  module.def("utf16_to_utf8", &utf16_to_utf8, nb::arg("text"),
             nb::sig("def utf16_to_utf8(text: HostArray) -> tuple[HostArray, HostArray]"),
             docs::kUtf16ToUtf8);
}

}  // namespace numera::python
