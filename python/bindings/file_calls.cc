#include "python/bindings/file_calls.h"

#include "numera/host/array.h"

namespace numera::python {

std::string path_of(nb::handle path) {
  PyObject* bytes = nullptr;
  if (PyUnicode_FSConverter(path.ptr(), static_cast<void*>(&bytes)) == 0) throw nb::python_error();
  const auto owned = nb::steal<nb::bytes>(bytes);
  return {owned.c_str(), owned.size()};
}

::arrow::Status Calls::while_waiting() {
  try {
    hxThrowIfInterruptPending();
    return ::arrow::Status::OK();
  } catch (...) {
    interrupt_ = std::current_exception();
    return ::arrow::Status::Cancelled("interrupted");
  }
}

}  // namespace numera::python
