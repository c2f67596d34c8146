#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "numera/host/memory.h"
#include "numera/host/memory/class_table.h"
#include "numera/host/memory/large_blocks.h"
#include "numera/host/memory/layout.h"
#include "numera/host/memory/operations.h"
#include "numera/host/memory/storage.h"
#include "numera/host/memory/thread_cache.h"

namespace numera::host::memory {
namespace {

Description numbers(std::span<const size_t> dims, hxClassID class_id, hxComplexity complexity) {
  const ClassFacts facts = class_facts(class_id);
  if (!facts.numeric && class_id != hxClassID::Logical) {
    throw std::invalid_argument("Class is neither numeric nor logical.");
  }
  const bool complex = complexity == hxComplexity::Complex;
  if (complex && !facts.numeric) throw std::invalid_argument("Logical array cannot be complex.");
  return {.class_id = class_id,
          .content = Content::Numbers,
          .dims = dims,
          .element_bytes = facts.element_bytes * (complex ? 2 : 1),
          .class_name = facts.name,
          .complex = complex};
}

Description characters(std::span<const size_t> dims) {
  const ClassFacts facts = class_facts(hxClassID::Char);
  return {.class_id = hxClassID::Char,
          .content = Content::Numbers,
          .dims = dims,
          .element_bytes = facts.element_bytes,
          .class_name = facts.name};
}

Description slots_of_fields(std::span<const size_t> dims, hxClassID class_id,
                            std::span<const char* const> field_names) {
  return {.class_id = class_id,
          .content = Content::Slots,
          .dims = dims,
          .element_bytes = checked_product(field_names.size(), sizeof(hxArray*)),
          .field_names = field_names};
}

template <class Unit>
hxArrayPtr char_array(std::span<const size_t> dims, const Unit* text) {
  hxArrayPtr array = new_array(characters(dims), Fill::None);
  const size_t count = array->layout->element_count;
  if (count == 0) return array;
  if (text == nullptr) throw std::invalid_argument("Text is null.");
  auto* const units = static_cast<char16_t*>(array->data());
  std::transform(text, text + count, units,
                 [](Unit unit) { return static_cast<std::make_unsigned_t<Unit>>(unit); });
  return array;
}

}  // namespace

hxArrayPtr create_numeric_array(std::span<const size_t> dims, hxClassID class_id,
                                hxComplexity complexity) {
  return new_array(numbers(dims, class_id, complexity), Fill::Zero);
}

hxArrayPtr create_uninit_numeric_array(std::span<const size_t> dims, hxClassID class_id,
                                       hxComplexity complexity) {
  return new_array(numbers(dims, class_id, complexity), Fill::None);
}

hxArrayPtr create_cell_array(std::span<const size_t> dims) {
  return new_array({.class_id = hxClassID::Cell,
                    .content = Content::Slots,
                    .dims = dims,
                    .element_bytes = sizeof(hxArray*),
                    .class_name = class_facts(hxClassID::Cell).name},
                   Fill::Zero);
}

hxArrayPtr create_struct_array(std::span<const size_t> dims,
                               std::span<const char* const> field_names) {
  Description description = slots_of_fields(dims, hxClassID::Struct, field_names);
  description.class_name = class_facts(hxClassID::Struct).name;
  return new_array(description, Fill::Zero);
}

hxArrayPtr create_char_array(const char16_t* text, size_t length) {
  return char_array(std::array<size_t, 2>{1, length}, text);
}

hxArrayPtr create_char_array(const char* text, size_t length) {
  return char_array(std::array<size_t, 2>{1, length}, text);
}

hxArrayPtr CreateObjectArray(std::string class_name, std::span<const size_t> dims,
                             std::span<const char* const> field_names) {
  Description description = slots_of_fields(dims, hxClassID::Object, field_names);
  description.object_name = class_name;
  return new_array(description, Fill::Zero);
}

hxArrayPtr CreateCharArray(std::span<const size_t> dims, const char16_t* text) {
  return char_array(dims, text);
}

hxArrayPtr CreateSparseArray(std::span<const size_t> dims, hxClassID class_id) {
  Description description = numbers(dims, class_id, hxComplexity::Real);
  description.sparse = true;
  return new_array(description, Fill::Zero);
}

size_t LiveArrays() noexcept { return live_arrays(); }

size_t ReleaseUnused() noexcept {
  forget_layouts();
  return_blocks_at_hand();
  return release_kept_blocks();
}

}  // namespace numera::host::memory
