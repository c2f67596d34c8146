#pragma once

/// \file
/// Host values built of bytes: whatever the bytes, they give a value. The words and the field names
/// of encoded values take one byte each, so that a mutation of few bytes is an envelope that is
/// nearly right.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/byte_source.h"
#include "numera/host/array.h"

namespace numera::fuzz {

struct HostTree {
  hxArrayPtr root;          ///< may be null
  bool has_sparse = false;  ///< `first_difference` finds no two sparse arrays equal
};

/// A value of at most a few thousand arrays and slots, and of at most a few hundred thousand
/// elements in all, shared copies counted with all that they hold: none is slow only because it is
/// large.
HostTree read_host_tree(ByteSource& source);

/// Bytes that give `value` back, for seeds. Throws `std::invalid_argument` for a value that is too
/// large for them.
std::vector<std::uint8_t> write_host_tree(const hxArray* value);

}  // namespace numera::fuzz
