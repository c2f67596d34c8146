#pragma once

#include <arrow/type_fwd.h>

#include "numera/core/dispatch.h"

namespace numera::io::arrow::core {

/// What the conversion to the host needs to know about an Arrow type.
struct ArrowTypeRow {
  ::arrow::Type::type id;
  const char* kind;          ///< "ArrowType" of the envelope
  const char* encoded_name;  ///< "Type" of the envelope; null if the type is refused
  const char* class_name;    ///< host class of a value; null if there is none
  Writer writer;             ///< null if the type is refused
};

/// The row of a type. Every id has a row.
const ArrowTypeRow& arrow_type_row(::arrow::Type::type id);

/// Invalid if the type is a null pointer, or contains a field or dictionary values whose type is a
/// null pointer. Invalid if lists, structs and maps nest deeper than `kMaxNestingLevels`.
::arrow::Status check_type(const ::arrow::DataType* type);

}  // namespace numera::io::arrow::core
