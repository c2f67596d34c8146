#pragma once

#include <arrow/type_fwd.h>

#include <optional>
#include <string_view>

namespace numera::format {

/// The text of "Units". An invalid value gives "milliseconds".
const char* unit_name(::arrow::TimeUnit::type unit);

/// The unit that a text of "Units" names; none for any other text.
std::optional<::arrow::TimeUnit::type> unit_of(std::string_view name);

}  // namespace numera::format
