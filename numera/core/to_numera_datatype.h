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

/// The name of the host class of values of this type. None if the type, or a type inside it, is a
/// null pointer or has no host class. None if the type nests deeper than `kMaxNestingLevels`.
///
/// The name differs from the "Type" text of encoded arrays: dates and timestamps are "datetime",
/// times of day "duration", durations "int64", the null type "double", binary types, lists and maps
/// "cell", structs "table", dictionaries "categorical".
///
/// Any number of threads may call it at the same time. It throws only `std::bad_alloc`. Cost: one
/// step per node of the type.
NUMERA_EXPORT std::optional<std::string> to_numera_datatype(
    const std::shared_ptr<::arrow::DataType>& type);

}  // namespace numera::io::arrow::core
