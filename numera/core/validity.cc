#include "numera/core/validity.h"

#include <arrow/array/array_base.h>

#include "numera/core/buffer_envelope.h"
#include "numera/core/chunk_memory.h"

namespace numera::io::arrow::core {
namespace {

BitFill fill_for(std::int64_t null_count) {
  return null_count >= 1 ? BitFill::Ones : BitFill::NoBits;
}

hxArrayPtr one_bitmap(const ::arrow::ChunkedArray& column) {
  hxArrayPtr envelope = make_buffer_envelope();
  BitmapWriter writer =
      store_bitmap(envelope.get(), 0, column.length(), fill_for(column.null_count()));
  for (const auto& chunk : column.chunks()) {
    writer.append(unsliced_validity(*chunk->data()), chunk->length());
  }
  return envelope;
}

hxArrayPtr bitmap_of_each_chunk(const ::arrow::ChunkedArray& column) {
  hxArrayPtr envelopes = make_bitmap_envelopes(static_cast<size_t>(column.num_chunks()));
  for (int i = 0; i < column.num_chunks(); ++i) {
    const ::arrow::ArrayData& chunk = *column.chunk(i)->data();
    store_bitmap(envelopes.get(), static_cast<size_t>(i), chunk.length,
                 fill_for(count_nulls(chunk)))
        .append(unsliced_validity(chunk), chunk.length);
  }
  return envelopes;
}

}  // namespace

hxArrayPtr validity_to_numera(const ::arrow::ChunkedArray& column, bool plain) {
  return plain && column.num_chunks() > 0 ? one_bitmap(column) : bitmap_of_each_chunk(column);
}

}  // namespace numera::io::arrow::core
