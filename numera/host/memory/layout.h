#pragma once

/// \file
/// The immutable part of an array, in one block with the dimensions and names that it refers to.
/// Dimensions come last, so that a memory checker catches a read past them.

#include <cstddef>
#include <memory>
#include <span>

#include "numera/host/memory/storage.h"

namespace numera::host::memory {

/// Product of the dimensions. Throws `std::invalid_argument` for fewer than two dimensions and
/// `std::bad_alloc` if the product overflows.
size_t count_elements(std::span<const size_t> dims);

void drop_layout(Layout* layout) noexcept;
struct DropLayout {
  void operator()(Layout* layout) const noexcept { drop_layout(layout); }
};
using HeldLayout = std::unique_ptr<Layout, DropLayout>;

/// Returns a reference to the layout of a description. Each thread caches the layouts it made last,
/// so that arrays of the same shape share one. A cache hit costs only a comparison. Throws
/// `std::invalid_argument` for a null field name or more fields than an `int` can count, and
/// `std::bad_alloc`.
HeldLayout hold_layout(const Description& description, size_t element_count);
/// Empties the layout cache of this thread.
void forget_layouts() noexcept;

/// Returns one more reference to a layout.
HeldLayout hold_same_layout(Layout* layout) noexcept;

/// Bytes of the block that `build_layout` fills, a multiple of the alignment of a pointer. Throws
/// `std::invalid_argument` for a null field name or more fields than an `int` can count.
size_t layout_size(const Description& description);
/// Builds a layout at `place` with the reference count `holders`.
Layout* build_layout(void* place, const Description& description, size_t element_count,
                     size_t holders);

/// Number of the first field with this name, or -1.
int find_field(const Layout& layout, const char* name) noexcept;

}  // namespace numera::host::memory
