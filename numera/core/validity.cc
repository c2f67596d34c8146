#include "numera/core/validity.h"

#include "numera/core/buffer_envelope.h"
#include "numera/core/chunk_memory.h"

namespace numera::io::arrow::core {
namespace {

BitFill fill_for(std::int64_t null_count) {
  return null_count >= 1 ? BitFill::Ones : BitFill::NoBits;
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
  hxArrayPtr envelope = make_buffer_envelope();
  BitmapWriter writer = store_bitmap(envelope.get(), 0, column.length(), fill_for(nulls));
  if (nulls < 1) return envelope;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const auto bits, unsliced_validity(chunk));
    writer.append(bits, chunk.length);
  }
  return envelope;
}

::arrow::Result<hxArrayPtr> bitmap_of_each_chunk(const ColumnView& column) {
  hxArrayPtr envelopes = make_bitmap_envelopes(column.chunks().size());
  size_t i = 0;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t nulls, count_nulls(chunk));
    BitmapWriter writer = store_bitmap(envelopes.get(), i++, chunk.length, fill_for(nulls));
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
