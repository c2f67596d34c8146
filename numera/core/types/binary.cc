#include "numera/core/types/binary.h"

#include <arrow/array/array_binary.h>
#include <arrow/type.h>
#include <arrow/util/checked_cast.h>

#include <cstdint>
#include <utility>

#include "numera/core/types/values_and_offsets.h"
#include "numera/format/values.h"

namespace numera::io::arrow::core {

ArrayResult MakeLargeBinaryArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  return borrow_large_array<::arrow::LargeBinaryArray>(s, std::move(validity));
}

ArrayResult MakeBinaryArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  return borrow_narrow_array<::arrow::BinaryArray>(s, std::move(validity));
}

template <class ArrowArray>
::arrow::Result<hxArrayPtr> BinaryChunksToHost(const ColumnView& column) {
  using Offset = typename ArrowArray::offset_type;
  hxArrayPtr cell = format::make_cell(static_cast<size_t>(column.length()), 1);
  size_t slot = 0;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const auto values, variable_width_values<Offset>(chunk));
    for (size_t i = 0; i + 1 < values.offsets.size(); ++i) {
      const auto begin = static_cast<size_t>(values.offsets[i]);
      const auto end = static_cast<size_t>(values.offsets[i + 1]);
      hxSetCell(cell.get(), slot++,
                format::make_byte_column(values.bytes.subspan(begin, end - begin)));
    }
  }
  return cell;
}

template ::arrow::Result<hxArrayPtr> BinaryChunksToHost<::arrow::BinaryArray>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> BinaryChunksToHost<::arrow::LargeBinaryArray>(
    const ColumnView&);

::arrow::Result<hxArrayPtr> FixedSizeBinaryChunksToHost(const ColumnView& column) {
  const auto& type =
      ::arrow::internal::checked_cast<const ::arrow::FixedSizeBinaryType&>(*column.type());
  const auto width = static_cast<size_t>(type.byte_width());
  hxArrayPtr cell = format::make_cell(static_cast<size_t>(column.length()), 1);
  size_t slot = 0;
  for (const ArrayView& chunk : column.chunks()) {
    const Bytes bytes = fixed_width_values(chunk, type.byte_width());
    const auto count = static_cast<size_t>(chunk.length);
    for (size_t i = 0; i < count; ++i) {
      hxSetCell(cell.get(), slot++, format::make_byte_column(bytes.subspan(i * width, width)));
    }
  }
  return cell;
}

}  // namespace numera::io::arrow::core
