#pragma once

/// \file
/// Host class names of Arrow data types.

#include <arrow/type.h>

#include <memory>
#include <optional>
#include <string>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::io::arrow::core {

/// Name of the host class that a value of this type becomes on the host side, or none where the
/// type has no host counterpart, is null, or is nested deeper than `kMaxNestingLevels`, or a type
/// in it has none or is null. It differs from the "Type" text of encoded arrays: dates and
/// timestamps are "datetime", times of day "duration", durations "int64", the null type "double",
/// binary types, lists and maps "cell", structs "table", dictionaries "categorical".
///
/// Any number of threads may ask at a time. Throws `std::bad_alloc` alone. Cost: one step a
/// node of the type.
NUMERA_EXPORT std::optional<std::string> to_numera_datatype(
    const std::shared_ptr<::arrow::DataType>& type);

}  // namespace numera::io::arrow::core
