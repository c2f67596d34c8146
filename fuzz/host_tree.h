#pragma once

/// \file
/// Builds host values from bytes. Any bytes give a value. The words and field names of encoded
/// values take one byte each, so that mutating a few bytes gives an almost correct envelope.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/byte_source.h"
#include "numera/host/array.h"

namespace numera::fuzz {

struct HostTree {
  hxArrayPtr root;          ///< may be null
  bool has_sparse = false;  ///< `first_difference` never reports two sparse arrays as equal
};

/// A value with at most a few thousand arrays and slots, and at most a few hundred thousand
/// elements. Shared copies count with their whole content. So no input is slow only because it is
/// large.
HostTree read_host_tree(ByteSource& source);

/// The bytes from which `read_host_tree` builds `value`, for seeds. Throws `std::invalid_argument`
/// if the value is too large for the format.
std::vector<std::uint8_t> write_host_tree(const hxArray* value);

}  // namespace numera::fuzz
