#pragma once

#include <arrow/type_fwd.h>

#include <optional>
#include <string_view>

namespace numera::format {

/// The text of "Units". Every value that is no unit gives that of milliseconds.
const char* unit_name(::arrow::TimeUnit::type unit);

/// The unit of a text of "Units"; none where it is no such text.
std::optional<::arrow::TimeUnit::type> unit_of(std::string_view name);

}  // namespace numera::format
