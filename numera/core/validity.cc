#include "numera/core/validity.h"

#include "numera/core/chunk_memory.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

format::BitFill fill_for(std::int64_t null_count) {
  return null_count >= 1 ? format::BitFill::Ones : format::BitFill::NoBits;
}

::arrow::Result<std::int64_t> count_all_nulls(const ColumnView& column) {
  std::int64_t nulls = 0;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t more, count_nulls(chunk));
    nulls += more;
  }
  return nulls;
}

::arrow::Result<hxArrayPtr> one_bitmap(const ColumnView& column) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t nulls, count_all_nulls(column));
  hxArrayPtr envelope = format::make_struct(1, format::kBuffer);
  format::BitmapWriter writer =
      format::store_bitmap(envelope.get(), 0, column.length(), fill_for(nulls));
  if (nulls < 1) return envelope;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const auto bits, unsliced_validity(chunk));
    writer.append(bits, chunk.length);
  }
  return envelope;
}

::arrow::Result<hxArrayPtr> bitmap_of_each_chunk(const ColumnView& column) {
  hxArrayPtr envelopes = format::make_struct(column.chunks().size(), format::kBitmaps);
  size_t i = 0;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t nulls, count_nulls(chunk));
    format::BitmapWriter writer =
        format::store_bitmap(envelopes.get(), i++, chunk.length, fill_for(nulls));
    if (nulls < 1) continue;
    ARROW_ASSIGN_OR_RAISE(const auto bits, unsliced_validity(chunk));
    writer.append(bits, chunk.length);
  }
  return envelopes;
}

}  // namespace

::arrow::Result<hxArrayPtr> validity_to_numera(const ColumnView& column, bool plain) {
  return plain && !column.chunks().empty() ? one_bitmap(column) : bitmap_of_each_chunk(column);
}

}  // namespace numera::io::arrow::core
