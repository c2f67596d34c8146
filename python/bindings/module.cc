#include <arrow/python/pyarrow.h>

#include "numera/core/util/table_error.h"
#include "numera/version.h"
#include "python/bindings/bindings.h"
#include "python/bindings/conversion_docs.h"
#include "python/bindings/errors.h"

NB_MODULE(_core, module) {
  using namespace numera::python;  // NOLINT(google-build-using-namespace): this file is its front
  using numera::io::arrow::core::util::TableErrorCode;
  if (arrow::py::import_pyarrow() != 0) throw nb::python_error();
  // Values may outlive the interpreter's modules. They are freed when the process ends.
  nb::set_leak_warnings(false);
  module.attr("__version__") = nb::str(numera::kVersion.data(), numera::kVersion.size());
  nb::enum_<TableErrorCode>(module, "TableErrorCode", nb::is_arithmetic(), docs::kTableErrorCode)
      .value("TypeError", TableErrorCode::TypeError,
             "the column has a type that cannot be converted")
      .value("Internal", TableErrorCode::Internal, "every other failure");
  register_host_exceptions();
  bind_host_array(module);
  bind_builders(module);
  bind_to_host(module);
  bind_to_arrow(module);
  bind_make_readable(module);
  bind_file_source(module);
  bind_file_sink(module);
}
