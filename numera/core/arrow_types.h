#pragma once

#include <arrow/type_fwd.h>

#include "numera/core/dispatch.h"

namespace numera::io::arrow::core {

/// What depends on an Arrow type, towards the host.
struct ArrowTypeRow {
  ::arrow::Type::type id;
  const char* kind;          ///< "ArrowType" of the envelope
  const char* encoded_name;  ///< "Type" of the envelope; null where the type is refused
  const char* class_name;    ///< host class of a value; null where there is none
  Writer writer;             ///< null where the type is refused
};

/// The row of a type; every id has one.
const ArrowTypeRow& arrow_type_row(::arrow::Type::type id);

/// Invalid where the type is null, or the type of a field or of dictionary values in it is; and
/// where lists, structs and maps lie in one another deeper than `kMaxNestingLevels`.
::arrow::Status check_type(const ::arrow::DataType* type);

}  // namespace numera::io::arrow::core
