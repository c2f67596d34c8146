#include <array>

#include "numera/host/memory/layout.h"

namespace numera::host::memory {
namespace {

// A thread holds a remembered layout many times over from the start, and hands these holds out, so
// that no array of the shape has to touch the shared count.
constexpr size_t kHoldsInStock = size_t{1} << 20;

struct Remembered {
  Layout* layout;
  size_t stock;  ///< holds that are at hand
};

// Enough for byte strings of every short length at once.
constexpr size_t kPlaces = 256;
thread_local constinit std::array<Remembered, kPlaces> remembered{};
thread_local constinit bool ended = false;

// Names are not compared: only what has none is remembered.
bool is_remembered(const Description& description) {
  return !kSeparateBlocks && description.field_names.empty() && description.class_name != nullptr;
}

Remembered& place_of(hxClassID class_id, std::span<const size_t> dims) {
  size_t sum = static_cast<size_t>(class_id);
  for (const size_t dim : dims) sum += dim;
  return remembered[sum % kPlaces];
}

// Dimensions are few: a call to compare them costs more than they do.
bool equal(std::span<const size_t> a, std::span<const size_t> b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

bool describes(const Description& description, const Layout& layout) {
  return layout.class_id == description.class_id && layout.content == description.content &&
         layout.complex == description.complex && layout.sparse == description.sparse &&
         equal(layout.dims, description.dims);
}

void drop_holds(Layout* layout, size_t holds) noexcept {
  if (layout->holders.load(std::memory_order_acquire) == holds ||
      layout->holders.fetch_sub(holds, std::memory_order_acq_rel) == holds) {
    give_block(layout, layout->block_bytes);
  }
}

void forget(Remembered& place) noexcept {
  if (place.layout != nullptr) drop_holds(place.layout, place.stock);
  place = {};
}

struct EndOfThread {
  ~EndOfThread() {
    forget_layouts();
    ended = true;
  }
};

Layout* make_layout(const Description& description, size_t element_count, size_t holders) {
  return build_layout(take_block(layout_size(description)), description, element_count, holders);
}

void remember(Remembered& place, const Description& description, size_t element_count) {
  thread_local const EndOfThread end;
  static_cast<void>(&end);
  Layout* const layout = make_layout(description, element_count, kHoldsInStock);
  forget(place);
  place = {layout, kHoldsInStock};
}

HeldLayout hold_from_stock(Remembered& place) noexcept {
  // The last hold is the thread's own.
  if (place.stock == 1) {
    place.layout->holders.fetch_add(kHoldsInStock, std::memory_order_relaxed);
    place.stock += kHoldsInStock;
  }
  --place.stock;
  return HeldLayout(place.layout);
}

}  // namespace

HeldLayout hold_layout(const Description& description, size_t element_count) {
  if (!is_remembered(description) || ended) {
    return HeldLayout(make_layout(description, element_count, 1));
  }
  Remembered& place = place_of(description.class_id, description.dims);
  if (place.layout == nullptr || !describes(description, *place.layout)) {
    remember(place, description, element_count);
  }
  return hold_from_stock(place);
}

HeldLayout hold_same_layout(Layout* layout) noexcept {
  Remembered& place = place_of(layout->class_id, layout->dims);
  if (place.layout == layout) return hold_from_stock(place);
  layout->holders.fetch_add(1, std::memory_order_relaxed);
  return HeldLayout(layout);
}

void drop_layout(Layout* layout) noexcept {
  Remembered& place = place_of(layout->class_id, layout->dims);
  if (place.layout == layout) {
    ++place.stock;
  } else {
    drop_holds(layout, 1);
  }
}

void forget_layouts() noexcept {
  for (Remembered& place : remembered) forget(place);
}

}  // namespace numera::host::memory
