#pragma once

#include <optional>
#include <string>

#include "numera/host/array.h"
#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

using Validity = std::optional<Region>;

/// The bytes of a buffer envelope.
Region buffer_of(const hxArray* encoded);

/// The bitmap of "Valid"; none if it has no bytes.
Validity validity_of(const hxArray* valid);

/// An array of buffers without children. Without a bitmap, Arrow stores the null count 0 instead of
/// the unknown count.
ArrayTree leaf(std::shared_ptr<::arrow::DataType> type, std::int64_t length, Validity validity,
               std::vector<Region> memory);

/// The array for the "Data" of the kind "array".
ArrayTree plain_array(const hxArray* data, const std::string& type_name, Validity validity);

}  // namespace numera::gauntlet::reading
