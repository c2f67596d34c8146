#pragma once

/// \file
/// The two dispatches, as the converters of nested types call them again for their children.

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/result.h>

#include <cstddef>
#include <memory>
#include <string>

#include "numera/core/array_view.h"
#include "numera/core/encoded_table.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

using ArrayResult = ::arrow::Result<std::shared_ptr<::arrow::Array>>;
using DataPtr = std::shared_ptr<::arrow::ArrayData>;

/// Every reader of a type name: the "Data" struct and the validity bitmap (null: no nulls).
using Reader = ArrayResult (*)(const hxArray* data, std::shared_ptr<::arrow::Buffer> validity);

/// The fields of one encoded array, borrowed. Null is an empty slot.
struct EnvelopeFields {
  const hxArray* arrow_type;
  const hxArray* type;
  const hxArray* data;
  const hxArray* valid;
};

/// Every reader of a nested kind: an encoded array that lies `level` levels deep (the outermost is
/// level 1). It gives data, because Arrow makes an array of lists by making those of all levels
/// below it: once, at the end, is enough.
///
/// Readers and `child_to_arrow` call each other. A level may take 480 bytes of stack
/// (`kStackBytes`) and takes 308. What needs room, results among it, stands in functions that are
/// kept out of line and have returned before the next level begins.
using NestedReader = ::arrow::Status (*)(const EnvelopeFields& envelope, int level, DataPtr& data);

/// Every writer: all chunks of a column to its "Data".
using Writer = ::arrow::Result<hxArrayPtr> (*)(const ColumnView& column);

/// Element `index` of a struct array of encoded arrays.
ArrayResult element_to_arrow(const hxArray* encoded, size_t index);

/// The same for a struct array whose element 0 has passed the checks already.
ArrayResult later_element_to_arrow(const hxArray* encoded, size_t index);

/// An encoded array that lies within `outer_levels` nested values.
::arrow::Status child_to_arrow(const hxArray* encoded, int outer_levels, DataPtr& data);

/// A plain "Valid" to a bitmap over its bytes; null where it has no bytes.
::arrow::Result<std::shared_ptr<::arrow::Buffer>> validity_to_arrow(const hxArray* valid);

/// The four fields of a column, after the checks that every column from outside goes through.
::arrow::Result<EncodedColumn> encode_checked(const ::arrow::ChunkedArray* column);

/// Moves the four fields of a column into element `index` of a struct array that has them.
void put_fields(hxArray* envelopes, size_t index, EncodedColumn column);

/// "Data" alone.
::arrow::Result<hxArrayPtr> data_to_numera(const ColumnView& column);

}  // namespace numera::io::arrow::core
