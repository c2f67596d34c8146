#pragma once

/// \file
/// Shared code of the writers of lists, structs and maps.
///
/// The writers and `store_child` call each other, so up to `kMaxNestingLevels` frames of both are
/// on the stack. All other work is in separate noinline functions, whose frames are gone before the
/// next level begins.

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstddef>
#include <span>
#include <utility>

#include "numera/core/array_view.h"
#include "numera/format/records.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The destination of a value: field `field` of element `index` of a struct array, or cell `index`
/// of a cell array if `field` is null.
struct Slot {
  hxArray* container;
  size_t index;
  const char* field = nullptr;
};

/// Stores the whole envelope of an array. `check_column` has checked the column that contains it.
::arrow::Status store_child(const Slot& slot, const ArrayView& child);

/// Turns a status into a result. noinline: this takes more stack than all else in a writer.
[[gnu::noinline]] ::arrow::Result<hxArrayPtr> failed(::arrow::Status status);

/// Makes "Data" of a nested column: a struct array with these fields and one element per chunk.
/// `write(data, index, chunk)` fills element `index`.
template <class Write>
::arrow::Result<hxArrayPtr> write_chunks(const ColumnView& column,
                                         std::span<const char* const> fields, Write write) {
  hxArrayPtr data = format::make_struct(column.chunks().size(), fields);
  size_t index = 0;
  for (const ArrayView& chunk : column.chunks()) {
    ::arrow::Status status = write(data.get(), index++, chunk);
    if (!status.ok()) return failed(std::move(status));
  }
  return data;
}

}  // namespace numera::io::arrow::core
