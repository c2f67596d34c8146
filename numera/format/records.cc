#include "numera/format/records.h"

#include <span>

namespace numera::format {

void store_buffer(hxArray* buffers, size_t index, hxArrayPtr values, std::int64_t length) {
  hxSetField(buffers, index, kValues, std::move(values));
  hxSetField(buffers, index, kLength, make_double(static_cast<double>(length)));
  hxSetField(buffers, index, kArrowType, make_word(kBufferKind));
}

hxArrayPtr make_packed_logical(hxArrayPtr bits, std::int64_t length) {
  hxArrayPtr packed = make_struct(1, kBitmaps);
  store_buffer(packed.get(), 0, std::move(bits), length);
  return packed;
}

BitmapWriter store_bitmap(hxArray* buffers, size_t index, std::int64_t length, BitFill fill) {
  const auto size = fill == BitFill::NoBits ? 0 : static_cast<size_t>(bitmap_bytes(length));
  hxArrayPtr values = make_column(hxClassID::UInt8, size);
  const std::span<std::uint8_t> bytes(elements<std::uint8_t>(values), size);
  store_buffer(buffers, index, std::move(values), length);
  return {bytes, length, static_cast<std::uint8_t>(fill == BitFill::Ones ? 0xFF : 0)};
}

}  // namespace numera::format
