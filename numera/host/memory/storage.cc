#include "numera/host/memory/storage.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "numera/host/memory/layout.h"
#include "numera/host/memory/operations.h"
#include "numera/host/memory/thread_cache.h"

namespace numera::host::memory {
namespace {

// Elements up to this size are stored in the block of their array.
constexpr size_t kInlineBytes = 1024;

struct ArrayBlock {
  Elements home;
  hxArray header;
};
static_assert(sizeof(ArrayBlock) == 48);

Elements* home_of(hxArray* array) {
  return reinterpret_cast<Elements*>(reinterpret_cast<std::byte*>(array) -
                                     offsetof(ArrayBlock, header));
}

size_t room_in_front(size_t inline_bytes) {
  return (inline_bytes + alignof(ArrayBlock) - 1) / alignof(ArrayBlock) * alignof(ArrayBlock);
}

// Frees the block of `elements`, whose contents are already freed. The block may include the header
// of an array. `arrays` is the number of arrays destroyed with it, for the count of live arrays.
void free_block(Elements* elements, std::ptrdiff_t arrays = 0) noexcept {
  const size_t front = elements->own_data ? 0 : room_in_front(elements->bytes);
  const size_t bytes = front + (elements->with_header ? sizeof(ArrayBlock) : sizeof(Elements));
  count_live(-arrays, -block_bytes(bytes));
  give_block(reinterpret_cast<std::byte*>(elements) - front, bytes);
}

std::span<hxArray*> slots_of(const hxArray* array) {
  return array->layout->content == Content::Slots ? array->slots() : std::span<hxArray*>();
}

hxArray* destroy_one(hxArray* array, hxArray* doomed) noexcept;

// Frees the contents of elements that no array refers to. Containers in their slots are added to
// the list `doomed` and destroyed later. Stack use thus does not depend on the nesting depth.
hxArray* free_contents(Content content, std::span<hxArray* const> slots, Elements* elements,
                       hxArray* doomed) noexcept {
  for (hxArray* const child : slots) {
    if (child == nullptr) continue;
    if (child->layout->content == Content::Slots) {
      child->next_doomed = std::exchange(doomed, child);
    } else {
      doomed = destroy_one(child, doomed);
    }
  }
  if (content == Content::Texts) delete static_cast<hxStringArray*>(elements->data);
  if (elements->own_data) release(ElementBlock{elements->data, elements->bytes});
  return doomed;
}

bool drop(Elements* elements, size_t holds) noexcept {
  return elements->holders.load(std::memory_order_acquire) == holds ||
         elements->holders.fetch_sub(holds, std::memory_order_acq_rel) == holds;
}

// Drops the reference of an array to elements. The last array frees the contents first and then
// drops the reference to the block.
hxArray* drop_reference(const hxArray* array, Elements* elements, std::span<hxArray* const> slots,
                        hxArray* doomed) noexcept {
  const size_t before = elements->holders.fetch_sub(1, std::memory_order_acq_rel);
  if ((before & ~Elements::kHeader) != (Elements::kUsers | 1)) return doomed;
  doomed = free_contents(array->layout->content, slots, elements, doomed);
  if (drop(elements, Elements::kUsers)) free_block(elements);
  return doomed;
}

hxArray* destroy_one(hxArray* array, hxArray* doomed) noexcept {
  Elements* const elements = array->elements;
  Elements* const home = home_of(array);
  Layout* const layout = array->layout;
  if (elements == home && home->holders.load(std::memory_order_acquire) == Elements::kAlone) {
    doomed = free_contents(layout->content, slots_of(array), elements, doomed);
    free_block(home, 1);
  } else {
    count_live(-1, 0);
    doomed = drop_reference(array, elements, slots_of(array), doomed);
    if (drop(home, Elements::kHeader)) free_block(home);
  }
  drop_layout(layout);
  return doomed;
}

void destroy_all(hxArray* doomed) noexcept {
  while (doomed != nullptr) {
    hxArray* const array = std::exchange(doomed, doomed->next_doomed);
    doomed = destroy_one(array, doomed);
  }
}

// Allocates a block with the header of a new array, its `Elements` with the given `holders`, and
// `inline_bytes` in front of them.
hxArrayPtr new_header(HeldLayout layout, size_t inline_bytes, size_t holders) {
  const size_t front = room_in_front(inline_bytes);
  const size_t bytes = front + sizeof(ArrayBlock);
  auto* const begin = static_cast<std::byte*>(take_block(bytes));
  count_live(1, block_bytes(bytes));
  auto* const block = ::new (begin + front) ArrayBlock{
      .home = {.holders = holders,
               .data = begin,
               .bytes = inline_bytes & Elements::kMostBytes,
               .with_header = 1},
      .header = {layout.release(), nullptr, nullptr},
  };
  block->header.elements = &block->home;
  return hxArrayPtr(&block->header);
}

struct BlockOwner {
  ElementBlock block;
  ~BlockOwner() {
    if (block.data != nullptr) release(block);
  }
};

void set_data(Elements* elements, BlockOwner& owner) {
  const ElementBlock block = std::exchange(owner.block, {});
  elements->data = block.data;
  elements->bytes = block.bytes & Elements::kMostBytes;
  elements->own_data = 1;
}

void drop_data(Elements* elements) {
  release(ElementBlock{elements->data, elements->bytes});
  elements->own_data = 0;
}

// Elements without a header, referred to by one array. They cost two allocations.
Elements* new_elements(size_t bytes, Fill fill) {
  count_allocation();
  BlockOwner data{allocate_elements(bytes, fill)};
  void* const block = take_block(sizeof(Elements));
  auto* const elements = ::new (block) Elements{.holders = Elements::kUsers | 1};
  count_live(0, block_bytes(sizeof(Elements)));
  set_data(elements, data);
  return elements;
}

Elements* copy_slots(const hxArray* array) {
  const std::span<hxArray*> source = array->slots();
  Elements* const copy = new_elements(source.size_bytes(), Fill::Zero);
  const std::span<hxArray*> slots(static_cast<hxArray**>(copy->data), source.size());
  try {
    for (size_t i = 0; i < source.size(); ++i) {
      if (source[i] != nullptr) slots[i] = shared_copy(source[i]).release();
    }
  } catch (...) {
    destroy_all(drop_reference(array, copy, slots, nullptr));
    throw;
  }
  return copy;
}

Elements* copy_numbers(const hxArray* array) {
  const size_t bytes = array->layout->element_count * array->layout->element_bytes;
  Elements* const copy = new_elements(bytes, Fill::None);
  if (bytes != 0) std::memcpy(copy->data, array->data(), bytes);
  return copy;
}

// Large elements have their own allocation.
hxArrayPtr new_array_of_large(HeldLayout layout, size_t bytes, Fill fill) {
  BlockOwner data{allocate_elements(bytes, fill)};
  hxArrayPtr array = new_header(std::move(layout), 0, Elements::kAlone);
  set_data(array->elements, data);
  return array;
}

hxArrayPtr new_array_of_small(HeldLayout layout, size_t bytes, Fill fill) {
  hxArrayPtr array = new_header(std::move(layout), bytes, Elements::kAlone);
  if (fill == Fill::Zero) std::memset(array->data(), 0, bytes);
  return array;
}

// Every part is a separate block and costs one allocation.
hxArrayPtr new_array_of_parts(HeldLayout layout, size_t bytes, Fill fill) {
  count_allocation();
  Elements* const elements = new_elements(bytes, fill);
  try {
    hxArrayPtr array = new_header(std::move(layout), 0, Elements::kHeader);
    array->elements = elements;
    return array;
  } catch (...) {
    // All slots are still empty, so only the elements themselves are freed.
    free_contents(Content::Numbers, {}, elements, nullptr);
    free_block(elements);
    throw;
  }
}

}  // namespace

hxArrayPtr new_array(const Description& description, Fill fill) {
  const size_t count = count_elements(description.dims);
  const size_t bytes = checked_product(count, description.element_bytes);
  if (description.content == Content::Slots) fill = Fill::Zero;
  HeldLayout layout(hold_layout(description, count));
  count_allocation();
  if (kSeparateBlocks) {
    hxArrayPtr array = new_array_of_parts(std::move(layout), bytes, fill);
    // The caller supplies the data of texts.
    if (description.content == Content::Texts) drop_data(array->elements);
    return array;
  }
  if (bytes > kInlineBytes) return new_array_of_large(std::move(layout), bytes, fill);
  return new_array_of_small(std::move(layout), bytes, fill);
}

hxArrayPtr shared_copy(const hxArray* array) {
  if (array == nullptr) throw std::invalid_argument("Array to be copied is null.");
  count_allocation();
  hxArrayPtr copy = new_header(hold_same_layout(array->layout), 0, Elements::kHeader);
  array->elements->holders.fetch_add(1, std::memory_order_relaxed);
  copy->elements = array->elements;
  return copy;
}

void unshare(hxArray* array) {
  if (array->elements->arrays() == 1) return;
  const Content content = array->layout->content;
  if (content == Content::Texts) return;  // texts in an array are never written
  const std::span<hxArray*> slots = slots_of(array);
  Elements* const own = content == Content::Slots ? copy_slots(array) : copy_numbers(array);
  Elements* const shared = std::exchange(array->elements, own);
  // The other arrays may have been destroyed during the copy.
  destroy_all(drop_reference(array, shared, slots, nullptr));
}

void destroy_array(hxArray* array) noexcept {
  if (array == nullptr) return;
  destroy_all(destroy_one(array, nullptr));
}

size_t live_arrays() noexcept { return static_cast<size_t>(live_counts().arrays); }

}  // namespace numera::host::memory
