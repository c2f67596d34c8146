#include <stdexcept>
#include <utility>

#include "numera/host/memory/memory_string_array.h"
#include "numera/host/memory/operations.h"
#include "numera/host/memory/storage.h"

namespace numera::host::memory {

std::unique_ptr<hxStringArray> make_string_array(std::span<const size_t> dims) {
  return std::make_unique<MemoryStringArray>(dims);
}

hxArrayPtr create_string_array_from(std::unique_ptr<hxStringArray> strings) {
  if (strings == nullptr) throw std::invalid_argument("String array is null.");
  hxArrayPtr array = new_array({.class_id = hxClassID::Object,
                                .content = Content::Texts,
                                .dims = strings->dimensions(),
                                .element_bytes = 0,
                                .class_name = "string"},
                               Fill::None);
  array->elements->data = strings.release();
  return array;
}

bool is_string_array(const hxArray* array) noexcept {
  return array->layout->content == Content::Texts;
}

const hxStringArray& get_string_array(const hxArray* array) {
  if (array == nullptr || !is_string_array(array)) {
    throw std::invalid_argument("Array is not string array.");
  }
  return *static_cast<const hxStringArray*>(array->data());
}

}  // namespace numera::host::memory
