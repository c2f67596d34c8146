#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "numera/host/memory/layout.h"

namespace numera::host::memory {
namespace {

// A thread takes many references to a cached layout at once and hands them out one by one. Creating
// an array of this shape then does not touch the shared reference count.
constexpr size_t kHoldsInStock = size_t{1} << 20;

struct Remembered {
  Layout* layout;
  size_t stock;  ///< references not handed out
};

// Cached layouts per thread: enough for byte strings of 256 consecutive lengths.
constexpr size_t kPlaces = 256;
using Places = std::array<Remembered, kPlaces>;
// Null until this thread first uses it, and again when the thread ends. The TLS model avoids a
// function call, as in thread_cache.cc.
[[gnu::tls_model("initial-exec")]] thread_local constinit Places* remembered = nullptr;
thread_local constinit bool ended = false;

// Structs that represent columns have few field names. Layouts with more names are not cached: they
// take more memory and more time to compare.
constexpr size_t kMostNames = 8;

bool is_remembered(const Description& description) {
  return !kSeparateBlocks && description.field_names.size() <= kMostNames &&
         description.class_name != nullptr;
}

Remembered& place_of(hxClassID class_id, std::span<const size_t> dims, size_t name_count) {
  size_t sum = static_cast<size_t>(class_id) + 16 * name_count;
  for (const size_t dim : dims) sum += dim;
  return (*remembered)[sum % kPlaces];
}

Remembered& place_of(const Layout& layout) {
  return place_of(layout.class_id, layout.dims, layout.field_names.size());
}

// Arrays have few dimensions: a loop is cheaper than a function call.
bool equal(std::span<const size_t> a, std::span<const size_t> b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

// A name in `wanted` may be null. A name of a layout, in `names`, is never null.
bool equal(std::span<const char* const> names, std::span<const char* const> wanted) {
  if (names.size() != wanted.size()) return false;
  for (size_t i = 0; i < names.size(); ++i) {
    if (wanted[i] == nullptr || std::strcmp(names[i], wanted[i]) != 0) return false;
  }
  return true;
}

bool describes(const Description& description, const Layout& layout) {
  return layout.class_id == description.class_id && layout.content == description.content &&
         layout.complex == description.complex && layout.sparse == description.sparse &&
         equal(layout.dims, description.dims) && equal(layout.field_names, description.field_names);
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
    delete std::exchange(remembered, nullptr);
    ended = true;
  }
};

Layout* make_layout(const Description& description, size_t element_count, size_t holders) {
  return build_layout(take_block(layout_size(description)), description, element_count, holders);
}

// Creates the layout cache of this thread. Returns false if the thread is ending and its cache is
// already destroyed, or if there is no memory.
[[gnu::noinline]] bool begin_to_remember() noexcept {
  if (ended) return false;
  auto* const places = new (std::nothrow) Places{};
  if (places == nullptr) return false;
  thread_local const EndOfThread end;
  static_cast<void>(&end);
  remembered = places;
  return true;
}

void remember(Remembered& place, const Description& description, size_t element_count) {
  Layout* const layout = make_layout(description, element_count, kHoldsInStock);
  forget(place);
  place = {layout, kHoldsInStock};
}

HeldLayout hold_from_stock(Remembered& place) noexcept {
  // The last reference belongs to the cache itself.
  if (place.stock == 1) {
    place.layout->holders.fetch_add(kHoldsInStock, std::memory_order_relaxed);
    place.stock += kHoldsInStock;
  }
  --place.stock;
  return HeldLayout(place.layout);
}

}  // namespace

HeldLayout hold_layout(const Description& description, size_t element_count) {
  if (!is_remembered(description) || (remembered == nullptr && !begin_to_remember())) {
    return HeldLayout(make_layout(description, element_count, 1));
  }
  Remembered& place =
      place_of(description.class_id, description.dims, description.field_names.size());
  if (place.layout == nullptr || !describes(description, *place.layout)) {
    remember(place, description, element_count);
  }
  return hold_from_stock(place);
}

HeldLayout hold_same_layout(Layout* layout) noexcept {
  if (remembered != nullptr) {
    Remembered& place = place_of(*layout);
    if (place.layout == layout) return hold_from_stock(place);
  }
  layout->holders.fetch_add(1, std::memory_order_relaxed);
  return HeldLayout(layout);
}

void drop_layout(Layout* layout) noexcept {
  if (remembered != nullptr) {
    Remembered& place = place_of(*layout);
    if (place.layout == layout) {
      ++place.stock;
      return;
    }
  }
  drop_holds(layout, 1);
}

void forget_layouts() noexcept {
  if (remembered == nullptr) return;
  for (Remembered& place : *remembered) forget(place);
}

}  // namespace numera::host::memory
