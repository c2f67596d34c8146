#pragma once

/// \file
/// Structs: named children of one length.
///
/// "Data" of a struct is a struct array with one element a chunk and the fields "FieldName" (cell
/// of char rows) and "FieldData" (cell of the envelopes of the children), both in the order of the
/// fields and written as rows. Children are cut to the slice. Only the first chunk is read.

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// A struct envelope to a struct array over its children. Cells of different numbers are Invalid
/// before any child is converted; what is no cell gives the host's exception; children that do not
/// make a struct (none, or of different lengths) give Arrow's status.
::arrow::Status StructToArrow(const EnvelopeFields& envelope, int level, DataPtr& data);

/// Structs to their "Data". A field name that is not UTF-8 gives the host's `hxCodecError`.
::arrow::Result<hxArrayPtr> StructToHost(const ColumnView& chunked);

}  // namespace numera::io::arrow::core
