#pragma once

/// \file
/// The part of an array that never changes, in one block with the dimensions and names it refers
/// to. Dimensions come last, so that a read past them leaves the block where it ends there.

#include <cstddef>
#include <span>

#include "numera/host/memory/storage.h"

namespace numera::host::memory {

/// Product of the dimensions. Throws `std::invalid_argument` for fewer than two of them and
/// `std::bad_alloc` where it overflows.
size_t count_elements(std::span<const size_t> dims);

/// Bytes of the block that `build_layout` fills, a multiple of the alignment of a pointer. Throws
/// `std::invalid_argument` for a null field name or more fields than an `int` counts.
size_t layout_size(const Description& description);
Layout* build_layout(void* place, const Description& description);

/// Number of the first field of the name, or -1.
int find_field(const Layout& layout, const char* name) noexcept;

}  // namespace numera::host::memory
