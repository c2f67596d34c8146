#pragma once

/// \file
/// The part of an array that never changes, in one block with the dimensions and names it refers
/// to. Dimensions come last, so that a read past them leaves the block where it ends there.

#include <cstddef>
#include <memory>
#include <span>

#include "numera/host/memory/storage.h"

namespace numera::host::memory {

/// Product of the dimensions. Throws `std::invalid_argument` for fewer than two of them and
/// `std::bad_alloc` where it overflows.
size_t count_elements(std::span<const size_t> dims);

void drop_layout(Layout* layout) noexcept;
struct DropLayout {
  void operator()(Layout* layout) const noexcept { drop_layout(layout); }
};
using HeldLayout = std::unique_ptr<Layout, DropLayout>;

/// The layout of a description, held for the caller. A thread remembers the layouts it made
/// last, so that arrays of a shape share one: making an array costs no more than a comparison.
/// Throws `std::invalid_argument` for a null field name or more fields than an `int` counts, and
/// `std::bad_alloc`.
HeldLayout hold_layout(const Description& description, size_t element_count);
/// Drops the layouts that this thread remembers.
void forget_layouts() noexcept;

/// Holds a layout once more.
HeldLayout hold_same_layout(Layout* layout) noexcept;

/// Bytes of the block that `build_layout` fills, a multiple of the alignment of a pointer. Throws
/// `std::invalid_argument` for a null field name or more fields than an `int` counts.
size_t layout_size(const Description& description);
/// A layout that has `holders` of them.
Layout* build_layout(void* place, const Description& description, size_t element_count,
                     size_t holders);

/// Number of the first field of the name, or -1.
int find_field(const Layout& layout, const char* name) noexcept;

}  // namespace numera::host::memory
