#pragma once

/// \file
/// Arrow arrays of any type. The seed determines every byte.

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>

#include "tests/gauntlet/making.h"

namespace numera::gauntlet {

/// An array with offset 0. Null slots hold values like the others; null lists and texts are not
/// empty. All null counts are unknown, except that those of map entries and keys are 0.
std::shared_ptr<::arrow::ArrayData> generate(const std::shared_ptr<::arrow::DataType>& type,
                                             std::int64_t length, const Making& making);

}  // namespace numera::gauntlet
