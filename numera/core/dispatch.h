#pragma once

/// \file
/// Selects the converter of a value: a reader towards Arrow, a writer towards the host. The
/// converters of nested types call these functions for their children.

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

/// A reader of one type name. `data` is the "Data" struct, `validity` the bitmap (null: no nulls).
using Reader = ArrayResult (*)(const hxArray* data, std::shared_ptr<::arrow::Buffer> validity);

/// The borrowed fields of one encoded array. Null means that the slot is empty.
struct EnvelopeFields {
  const hxArray* arrow_type;
  const hxArray* type;
  const hxArray* data;
  const hxArray* valid;
};

/// A reader of one nested kind. `level` is the nesting level of the encoded array (outermost: 1).
/// The result is `ArrayData`, because making an Arrow list array also makes the arrays of all
/// levels below it. It is enough to do that once, at the end.
///
/// Readers and `child_to_arrow` call each other. A level takes 308 bytes of stack; `kStackBytes`
/// allows 480. Code that needs more stack, for example for a `Result`, is in noinline functions
/// that return before the next level begins.
using NestedReader = ::arrow::Status (*)(const EnvelopeFields& envelope, int level, DataPtr& data);

/// A writer: converts all chunks of a column to its "Data".
using Writer = ::arrow::Result<hxArrayPtr> (*)(const ColumnView& column);

/// Converts element `index` of a struct array of encoded arrays.
ArrayResult element_to_arrow(const hxArray* encoded, size_t index);

/// The same, if element 0 of the struct array has already passed the checks.
ArrayResult later_element_to_arrow(const hxArray* encoded, size_t index);

/// Converts an encoded array that lies inside `outer_levels` nested values.
::arrow::Status child_to_arrow(const hxArray* encoded, int outer_levels, DataPtr& data);

/// Converts the buffer envelope in "Valid" to a bitmap over its bytes. Null if it has no bytes.
::arrow::Result<std::shared_ptr<::arrow::Buffer>> validity_to_arrow(const hxArray* valid);

/// Runs the checks for columns from outside and makes the four fields.
::arrow::Result<EncodedColumn> encode_checked(const ::arrow::ChunkedArray* column);

/// Moves the four fields of a column into element `index` of a struct array with these fields.
void put_fields(hxArray* envelopes, size_t index, EncodedColumn column);

/// Makes only "Data". The column has passed `check_column`.
::arrow::Result<hxArrayPtr> data_to_numera(const ColumnView& column);

}  // namespace numera::io::arrow::core
