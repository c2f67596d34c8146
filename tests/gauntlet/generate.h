#pragma once

/// \file
/// Arrow arrays of any type, every byte of them given by a seed.

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>

#include "tests/gauntlet/making.h"

namespace numera::gauntlet {

/// An array without offset. Slots below nulls hold values like the others, null lists and texts
/// elements. Every null count is unknown, but that of map entries and keys is 0.
std::shared_ptr<::arrow::ArrayData> generate(const std::shared_ptr<::arrow::DataType>& type,
                                             std::int64_t length, const Making& making);

}  // namespace numera::gauntlet
