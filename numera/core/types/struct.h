#pragma once

/// \file
/// Structs: named children of equal length.
///
/// "Data" of a struct is a struct array with one element per chunk and the fields "FieldName" (cell
/// of char rows) and "FieldData" (cell of the envelopes of the children). Both are in the order of
/// the fields and written as rows. Children are cut to the slice. Towards Arrow, only the first
/// chunk is read.

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Converts a struct envelope to a struct array over its children. Errors:
/// - "FieldName" and "FieldData" differ in length: Invalid, before any child is converted
/// - a value that is not a cell: the host's exception
/// - no children, or children of different lengths: Arrow's status
::arrow::Status StructToArrow(const EnvelopeFields& envelope, int level, DataPtr& data);

/// Converts structs to their "Data". A field name that is not UTF-8 gives the host's
/// `hxCodecError`.
::arrow::Result<hxArrayPtr> StructToHost(const ColumnView& chunked);

}  // namespace numera::io::arrow::core
