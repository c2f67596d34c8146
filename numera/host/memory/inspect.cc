#include <stdexcept>

#include "numera/host/memory/class_table.h"
#include "numera/host/memory/operations.h"
#include "numera/host/memory/storage.h"

namespace numera::host::memory {

hxClassID get_class_id(const hxArray* array) noexcept { return array->layout->class_id; }
const char* get_class_name(const hxArray* array) noexcept { return array->layout->class_name; }
bool is_empty(const hxArray* array) noexcept { return array->layout->element_count == 0; }
bool is_numeric(const hxArray* array) noexcept {
  return class_facts(array->layout->class_id).numeric;
}
bool is_complex(const hxArray* array) noexcept { return array->layout->complex; }
bool is_sparse(const hxArray* array) noexcept { return array->layout->sparse; }

bool is_data_shared(const hxArray* array) noexcept { return array->elements->arrays() > 1; }

size_t get_element_size(const hxArray* array) noexcept { return array->layout->element_bytes; }
size_t get_number_of_elements(const hxArray* array) noexcept {
  return array->layout->element_count;
}
std::span<const size_t> get_dimensions(const hxArray* array) noexcept {
  return array->layout->dims;
}

const void* get_data(const hxArray* array) noexcept {
  return array->layout->content == Content::Numbers ? array->data() : nullptr;
}

void* get_data(hxArray* array) {
  if (array->layout->content != Content::Numbers) return nullptr;
  unshare(array);
  return array->data();
}

std::string get_string(const hxArray* array) {
  if (array == nullptr || array->layout->class_id != hxClassID::Char) {
    throw std::invalid_argument("Array is not char array.");
  }
  return encode_utf8(static_cast<const char16_t*>(array->data()), array->layout->element_count);
}

}  // namespace numera::host::memory
