#pragma once

#include <arrow/array/array_base.h>

#include <cstdint>
#include <optional>
#include <string>

namespace numera::tools {

/// An element that is not null as a number, a time or a truth value; none if the array has another
/// type.
std::optional<std::string> fixed_text(const ::arrow::Array& array, std::int64_t row);

}  // namespace numera::tools
