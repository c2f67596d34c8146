#include "python/bindings/file_calls.h"

namespace numera::python {

std::string path_of(nb::handle path) {
  PyObject* bytes = nullptr;
  if (PyUnicode_FSConverter(path.ptr(), static_cast<void*>(&bytes)) == 0) throw nb::python_error();
  const auto owned = nb::steal<nb::bytes>(bytes);
  return {owned.c_str(), owned.size()};
}

}  // namespace numera::python
