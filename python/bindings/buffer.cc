#include "python/bindings/buffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "python/bindings/element_form.h"
#include "python/bindings/host_value.h"

namespace numera::python {
namespace {

struct Shape {
  std::vector<Py_ssize_t> extents;
  std::vector<Py_ssize_t> strides;
};

Shape column_major(std::span<const size_t> dims, size_t element_size) {
  Shape shape;
  auto stride = static_cast<Py_ssize_t>(element_size);
  for (const size_t extent : dims) {
    shape.extents.push_back(static_cast<Py_ssize_t>(extent));
    shape.strides.push_back(stride);
    stride *= static_cast<Py_ssize_t>(extent);
  }
  return shape;
}

bool wants(int flags, int all) { return (flags & all) == all; }

/// Whether column-major elements are also in row-major order. Requests for row-major or plain
/// memory need that.
bool is_row_major_too(std::span<const size_t> dims) {
  size_t longer = 0;
  for (const size_t extent : dims) {
    if (extent == 0) return true;
    longer += static_cast<size_t>(extent > 1);
  }
  return longer <= 1;
}

const char* refusal(const HostValue& value, const char* format, int flags) {
  if (format == nullptr) {
    return "HostArray: found elements without a buffer format, expected a numeric, logical or char "
           "array that NumPy can represent.";
  }
  if (wants(flags, PyBUF_WRITABLE) && !value.writable)
    return "HostArray: found a request for writable memory, expected one for read-only memory.";
  const bool row_major = wants(flags, PyBUF_C_CONTIGUOUS) || !wants(flags, PyBUF_STRIDES);
  if (row_major && !is_row_major_too(hxGetDimensions(value.get()))) {
    return "HostArray: found a request for row-major memory, expected one for column-major memory.";
  }
  return nullptr;
}

// The buffer protocol wants null for each part that was not requested.
void fill(Py_buffer* view, const hxArray* array, const char* format, Shape* shape, int flags) {
  static std::uint64_t no_elements[2] = {};
  const void* data = hxGetData(array);
  view->buf = data == nullptr ? no_elements : const_cast<void*>(data);
  view->itemsize = static_cast<Py_ssize_t>(hxGetElementSize(array));
  view->len = view->itemsize * static_cast<Py_ssize_t>(hxGetNumberOfElements(array));
  view->ndim = static_cast<int>(shape->extents.size());
  view->format = wants(flags, PyBUF_FORMAT) ? const_cast<char*>(format) : nullptr;
  view->shape = wants(flags, PyBUF_ND) ? shape->extents.data() : nullptr;
  view->strides = wants(flags, PyBUF_STRIDES) ? shape->strides.data() : nullptr;
  view->suboffsets = nullptr;
  view->internal = shape;
}

int get_buffer(PyObject* self, Py_buffer* view, int flags) {
  const HostValue& value = *nanobind::inst_ptr<HostValue>(self);
  const std::optional<ElementForm> form = element_form(value.get());
  const char* format = form ? form->format : nullptr;
  view->obj = nullptr;
  if (const char* reason = refusal(value, format, flags)) {
    PyErr_SetString(PyExc_BufferError, reason);
    return -1;
  }
  std::unique_ptr<Shape> shape;
  try {
    shape = std::make_unique<Shape>(
        column_major(hxGetDimensions(value.get()), hxGetElementSize(value.get())));
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
    return -1;
  }
  fill(view, value.get(), format, shape.release(), flags);
  view->readonly = value.writable ? 0 : 1;
  view->obj = Py_NewRef(self);
  return 0;
}

void release_buffer(PyObject*, Py_buffer* view) { delete static_cast<Shape*>(view->internal); }

}  // namespace

const PyType_Slot* buffer_slots() {
  static const std::array<PyType_Slot, 3> slots = {{
      {Py_bf_getbuffer, reinterpret_cast<void*>(get_buffer)},
      {Py_bf_releasebuffer, reinterpret_cast<void*>(release_buffer)},
      {0, nullptr},
  }};
  return slots.data();
}

}  // namespace numera::python
