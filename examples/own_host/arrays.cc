// Making, sharing, destroying and inspecting arrays.

#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "examples/own_host/own_array.h"

namespace own_host {
namespace {

size_t slots_per_element(const Shape& shape) {
  switch (shape.class_id) {
    case hxClassID::Cell:
      return 1;
    case hxClassID::Struct:
      return shape.fields.size();
    default:
      return 0;
  }
}

size_t product(size_t a, size_t b) {
  size_t result = 0;
  if (__builtin_mul_overflow(a, b, &result) || result > PTRDIFF_MAX / sizeof(void*)) {
    throw std::bad_alloc();
  }
  return result;
}

std::unique_ptr<std::byte[]> copy_bytes(const std::byte* source, size_t bytes) {
  auto copy = std::make_unique_for_overwrite<std::byte[]>(bytes);
  std::memcpy(copy.get(), source, bytes);
  return copy;
}

size_t width_of(hxClassID class_id) {
  switch (class_id) {
    case hxClassID::Logical:
    case hxClassID::Int8:
    case hxClassID::UInt8:
      return 1;
    case hxClassID::Int16:
    case hxClassID::UInt16:
      return 2;
    case hxClassID::Single:
    case hxClassID::Int32:
    case hxClassID::UInt32:
      return 4;
    case hxClassID::Double:
    case hxClassID::Int64:
    case hxClassID::UInt64:
      return 8;
    default:
      throw std::invalid_argument("The class is neither numeric nor logical.");
  }
}

hxArrayPtr make_numbers(std::span<const size_t> dims, hxClassID class_id, hxComplexity complexity,
                        Fill fill) {
  const size_t parts = complexity == hxComplexity::Complex ? 2 : 1;
  return make_array({.class_id = class_id,
                     .complexity = complexity,
                     .dims = {dims.begin(), dims.end()},
                     .element_size = width_of(class_id) * parts},
                    fill);
}

template <class Unit>
hxArrayPtr make_chars(const Unit* text, size_t length) {
  hxArrayPtr array =
      make_array({.class_id = hxClassID::Char, .dims = {1, length}, .element_size = 2}, Fill::None);
  auto* const units = static_cast<char16_t*>(hxGetData(array.get()));
  for (size_t i = 0; i < length; ++i) units[i] = std::make_unsigned_t<Unit>(text[i]);
  return array;
}

}  // namespace

size_t count_elements(std::span<const size_t> dims) {
  if (dims.size() < 2) throw std::invalid_argument("An array has at least two dimensions.");
  for (const size_t dim : dims) {
    if (dim == 0) return 0;
  }
  size_t count = 1;
  for (const size_t dim : dims) count = product(count, dim);
  return count;
}

hxArrayPtr make_array(Shape shape, Fill fill) {
  shape.elements = count_elements(shape.dims);
  const size_t bytes = product(shape.elements, shape.element_size);
  Content content;
  if (shape.element_size != 0) {
    content.data = fill == Fill::Zero ? std::make_unique<std::byte[]>(bytes)
                                      : std::make_unique_for_overwrite<std::byte[]>(bytes);
  }
  content.slots.resize(product(shape.elements, slots_per_element(shape)));
  return hxArrayPtr(new hxArray(std::make_shared<const Shape>(std::move(shape)),
                                std::make_shared<Content>(std::move(content))));
}

void unshare(hxArray* array) {
  if (!hxIsDataShared(array)) return;
  const Shape& shape = *array->shape;
  auto own = std::make_shared<Content>();
  own->strings = array->content->strings;
  if (array->content->data) {
    own->data = copy_bytes(array->content->data.get(), shape.elements * shape.element_size);
  }
  for (const hxArrayPtr& value : array->content->slots) {
    own->slots.push_back(value ? hxSharedCopy(value.get()) : nullptr);
  }
  array->content = std::move(own);
}

size_t live_arrays() { return live; }

}  // namespace own_host

using own_host::Fill;

hxArrayPtr hxCreateNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                hxComplexity complexity) {
  return own_host::make_numbers(dims, class_id, complexity, Fill::Zero);
}

hxArrayPtr hxCreateUninitNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                      hxComplexity complexity) {
  return own_host::make_numbers(dims, class_id, complexity, Fill::None);
}

hxArrayPtr hxCreateCellArray(std::span<const size_t> dims) {
  return own_host::make_array({.class_id = hxClassID::Cell, .dims = {dims.begin(), dims.end()}},
                              Fill::Zero);
}

hxArrayPtr hxCreateStructArray(std::span<const size_t> dims,
                               std::span<const char* const> field_names) {
  return own_host::make_array({.class_id = hxClassID::Struct,
                               .dims = {dims.begin(), dims.end()},
                               .fields = {field_names.begin(), field_names.end()}},
                              Fill::Zero);
}

hxArrayPtr hxCreateCharArray(const char16_t* text, size_t length) {
  return own_host::make_chars(text, length);
}

hxArrayPtr hxCreateCharArray(const char* text, size_t length) {
  return own_host::make_chars(text, length);
}

hxArrayPtr hxSharedCopy(const hxArray* array) {
  if (array == nullptr) throw std::invalid_argument("There is no array to copy.");
  return hxArrayPtr(new hxArray(array->shape, array->content));
}

// The destructor of an array destroys the arrays it holds, which calls this function again. Nested
// calls only queue their array, so that deep nesting does not become deep recursion.
void hxDestroyArray(hxArray* array) noexcept {
  static thread_local hxArray* waiting = nullptr;
  static thread_local bool running = false;
  if (array == nullptr) return;
  array->next_to_destroy = waiting;
  waiting = array;
  if (running) return;
  running = true;
  while (waiting != nullptr) delete std::exchange(waiting, waiting->next_to_destroy);
  running = false;
}

hxClassID hxGetClassID(const hxArray* array) noexcept { return array->shape->class_id; }

const char* hxGetClassName(const hxArray* array) noexcept {
  static constexpr const char* kNames[] = {"",       "cell",   "struct", "logical", "char",
                                           "",       "double", "single", "int8",    "uint8",
                                           "int16",  "uint16", "int32",  "uint32",  "int64",
                                           "uint64", "",       "",       "string"};
  return kNames[static_cast<size_t>(array->shape->class_id)];
}

bool hxIsEmpty(const hxArray* array) noexcept { return array->shape->elements == 0; }

bool hxIsNumeric(const hxArray* array) noexcept {
  return array->shape->class_id >= hxClassID::Double && array->shape->class_id <= hxClassID::UInt64;
}

bool hxIsComplex(const hxArray* array) noexcept {
  return array->shape->complexity == hxComplexity::Complex;
}

bool hxIsSparse(const hxArray*) noexcept { return false; }

bool hxIsDataShared(const hxArray* array) noexcept { return array->content.use_count() > 1; }

size_t hxGetElementSize(const hxArray* array) noexcept { return array->shape->element_size; }

size_t hxGetNumberOfElements(const hxArray* array) noexcept { return array->shape->elements; }

std::span<const size_t> hxGetDimensions(const hxArray* array) noexcept {
  return array->shape->dims;
}

const void* hxGetData(const hxArray* array) noexcept { return array->content->data.get(); }

void* hxGetData(hxArray* array) {
  if (array->content->data == nullptr) return nullptr;
  own_host::unshare(array);
  return array->content->data.get();
}
