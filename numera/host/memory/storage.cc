#include "numera/host/memory/storage.h"

#include <cstring>
#include <new>
#include <utility>

#include "numera/host/memory/layout.h"
#include "numera/host/memory/operations.h"

namespace numera::host::memory {
namespace {

// Elements up to this size lie in the block of their array.
constexpr size_t kInlineBytes = 1024;

std::atomic<size_t> live_count{0};

hxArray* new_header(void* place, Layout* layout, Elements* elements, bool own_block) noexcept {
  live_count.fetch_add(1, std::memory_order_relaxed);
  return ::new (place) hxArray{layout, elements, nullptr, own_block};
}

bool drop(std::atomic<size_t>& count) noexcept {
  return count.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

// Frees elements that no array refers to. The arrays in their slots join the list of doomed ones
// instead of being destroyed on the spot: the depth of a nested array costs no stack.
hxArray* free_elements(Content content, std::span<hxArray* const> slots, Elements* elements,
                       hxArray* doomed) noexcept {
  if (content == Content::Slots) {
    for (hxArray* const child : slots) {
      if (child == nullptr) continue;
      child->next_doomed = doomed;
      doomed = child;
    }
  } else if (content == Content::Texts) {
    delete static_cast<hxStringArray*>(elements->block.data);
  }
  if (elements->own_data) release(elements->block);
  if (elements->own_block) release(elements);
  return doomed;
}

void free_header(hxArray* array) noexcept {
  Layout* const layout = array->layout;
  if (array->own_block) release(array);
  if (drop(layout->arrays)) release(layout);
  live_count.fetch_sub(1, std::memory_order_relaxed);
}

void destroy_all(hxArray* doomed) noexcept {
  while (doomed != nullptr) {
    hxArray* const array = std::exchange(doomed, doomed->next_doomed);
    if (drop(array->elements->arrays)) {
      doomed = free_elements(
          array->layout->content,
          array->layout->content == Content::Slots ? array->slots() : std::span<hxArray*>(),
          array->elements, doomed);
    }
    free_header(array);
  }
}

// Elements outside of their array's block.
Elements* new_elements(size_t bytes, Fill fill) {
  OwnedBlock place(allocate(sizeof(Elements)));
  const ElementBlock block = allocate_elements(bytes, fill);
  return ::new (place.release()) Elements{.block = block, .own_data = true, .own_block = true};
}

struct UnsharedElements {
  std::span<hxArray*> slots;
  Elements* elements;
  ~UnsharedElements() {
    if (elements != nullptr) {
      destroy_all(free_elements(Content::Slots, slots, elements, nullptr));
    }
  }
};

Elements* copy_slots(const hxArray* array) {
  const std::span<hxArray*> source = array->slots();
  UnsharedElements copy{{}, new_elements(source.size_bytes(), Fill::Zero)};
  copy.slots = {static_cast<hxArray**>(copy.elements->block.data), source.size()};
  for (size_t i = 0; i < source.size(); ++i) {
    if (source[i] != nullptr) copy.slots[i] = shared_copy(source[i]).release();
  }
  return std::exchange(copy.elements, nullptr);
}

Elements* copy_numbers(const hxArray* array) {
  const size_t bytes = array->layout->element_count * array->layout->element_bytes;
  Elements* const copy = new_elements(bytes, Fill::None);
  if (bytes != 0) std::memcpy(copy->block.data, array->data(), bytes);
  return copy;
}

std::byte* aligned_up(std::byte* address, size_t alignment) {
  const auto position = reinterpret_cast<std::uintptr_t>(address);
  return address + (alignment - position % alignment) % alignment;
}

// Layout, header and elements in one block, but for elements that are large.
hxArrayPtr new_joined_array(const Description& description, size_t bytes, Fill fill) {
  const bool inline_data = bytes <= kInlineBytes;
  const size_t head = layout_size(description);
  const size_t room = inline_data ? bytes + kElementAlignment : 0;
  OwnedBlock block(allocate(head + sizeof(hxArray) + sizeof(Elements) + room));
  Layout* const layout = build_layout(block.get(), description);
  auto* const header = static_cast<std::byte*>(block.get()) + head;
  std::byte* const control = header + sizeof(hxArray);
  ElementBlock data;
  if (inline_data) {
    data.data = aligned_up(control + sizeof(Elements), kElementAlignment);
    if (fill == Fill::Zero) std::memset(data.data, 0, bytes);
  } else {
    data = allocate_elements(bytes, fill);
  }
  auto* const elements =
      ::new (control) Elements{.block = data, .own_data = !inline_data, .own_block = false};
  static_cast<void>(block.release());
  return hxArrayPtr(new_header(header, layout, elements, false));
}

// Every part in a block of its own.
hxArrayPtr new_separate_array(const Description& description, size_t bytes, Fill fill) {
  OwnedBlock layout_block(allocate(layout_size(description)));
  Layout* const layout = build_layout(layout_block.get(), description);
  OwnedBlock header(allocate(sizeof(hxArray)));
  Elements* const elements = new_elements(bytes, fill);
  static_cast<void>(layout_block.release());
  return hxArrayPtr(new_header(header.release(), layout, elements, true));
}

}  // namespace

hxArrayPtr new_array(const Description& description, Fill fill) {
  const size_t count = count_elements(description.dims);
  if (description.content == Content::Texts) {
    // The texts come with the string array that is stored into the new array.
    hxArrayPtr array = kSeparateBlocks ? new_separate_array(description, 0, Fill::None)
                                       : new_joined_array(description, 0, Fill::None);
    if (array->elements->own_data) release(array->elements->block);
    array->elements->block = {};
    array->elements->own_data = false;
    return array;
  }
  const size_t bytes = checked_product(count, description.element_bytes);
  if (description.content == Content::Slots) fill = Fill::Zero;
  return kSeparateBlocks ? new_separate_array(description, bytes, fill)
                         : new_joined_array(description, bytes, fill);
}

hxArrayPtr shared_copy(const hxArray* array) {
  if (array == nullptr) throw std::invalid_argument("Array to be copied is null.");
  void* const place = allocate(sizeof(hxArray));
  array->layout->arrays.fetch_add(1, std::memory_order_relaxed);
  array->elements->arrays.fetch_add(1, std::memory_order_relaxed);
  return hxArrayPtr(new_header(place, array->layout, array->elements, true));
}

void unshare(hxArray* array) {
  if (array->elements->arrays.load(std::memory_order_acquire) == 1) return;
  const Content content = array->layout->content;
  if (content == Content::Texts) return;  // nothing writes them
  const std::span<hxArray*> slots =
      content == Content::Slots ? array->slots() : std::span<hxArray*>();
  Elements* const own = content == Content::Slots ? copy_slots(array) : copy_numbers(array);
  Elements* const shared = std::exchange(array->elements, own);
  // The other arrays may have gone while the copy was made.
  if (drop(shared->arrays)) destroy_all(free_elements(content, slots, shared, nullptr));
}

void destroy_array(hxArray* array) noexcept {
  if (array != nullptr) array->next_doomed = nullptr;
  destroy_all(array);
}

size_t live_arrays() noexcept { return live_count.load(std::memory_order_relaxed); }

}  // namespace numera::host::memory
