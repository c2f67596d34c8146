#pragma once

/// \file
/// What the writers of lists, structs and maps share.
///
/// They call `store_child`, and that calls them again: up to `kMaxNestingLevels` of both lie on the
/// stack at a time. What is not on the way to a child is therefore in functions of its own that are
/// never inlined, so that their frames are gone by then.

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstddef>
#include <span>
#include <utility>

#include "numera/core/array_view.h"
#include "numera/format/records.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Where a value goes: field `field` of element `index` of a struct array or, where there is no
/// field, cell `index` of a cell array.
struct Slot {
  hxArray* container;
  size_t index;
  const char* field = nullptr;
};

/// Stores the whole envelope of an array whose type and layout are known to be good.
::arrow::Status store_child(const Slot& slot, const ArrayView& child);

/// The status as a result. Making one takes more stack than all else that a writer does.
[[gnu::noinline]] ::arrow::Result<hxArrayPtr> failed(::arrow::Status status);

/// "Data" of a nested column: a struct array of these fields with one element per chunk.
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
