#include "numera/core/validity.h"

#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

format::BitFill fill_for(std::int64_t null_count) {
  return null_count >= 1 ? format::BitFill::Ones : format::BitFill::NoBits;
}

hxArrayPtr one_bitmap(const ColumnView& column) {
  std::int64_t nulls = 0;
  for (const ArrayView& chunk : column.chunks()) nulls += count_nulls(chunk);
  hxArrayPtr envelope = format::make_struct(1, format::kBuffer);
  format::BitmapWriter writer =
      format::store_bitmap(envelope.get(), 0, column.length(), fill_for(nulls));
  if (nulls < 1) return envelope;
  for (const ArrayView& chunk : column.chunks()) {
    writer.append(unsliced_validity(chunk), chunk.length);
  }
  return envelope;
}

hxArrayPtr bitmap_of_each_chunk(const ColumnView& column) {
  hxArrayPtr envelopes = format::make_struct(column.chunks().size(), format::kBitmaps);
  size_t i = 0;
  for (const ArrayView& chunk : column.chunks()) {
    const std::int64_t nulls = count_nulls(chunk);
    format::BitmapWriter writer =
        format::store_bitmap(envelopes.get(), i++, chunk.length, fill_for(nulls));
    if (nulls >= 1) writer.append(unsliced_validity(chunk), chunk.length);
  }
  return envelopes;
}

}  // namespace

hxArrayPtr validity_to_numera(const ColumnView& column, bool plain) {
  return plain && !column.chunks().empty() ? one_bitmap(column) : bitmap_of_each_chunk(column);
}

}  // namespace numera::io::arrow::core
