#include "numera/core/buffer_envelope.h"

#include <cstring>
#include <utility>

#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/to_numera.h"

namespace numera::io::arrow::core {

hxArrayPtr make_buffer_envelope() { return make_struct(1, {"ArrowType", "Values", "Length"}); }

hxArrayPtr make_bitmap_envelopes(size_t count) {
  return make_struct(count, {"Values", "Length", "ArrowType"});
}

BitmapWriter store_bitmap(hxArray* envelopes, size_t index, std::int64_t length, BitFill fill) {
  const auto size = fill == BitFill::NoBits ? 0 : static_cast<size_t>(bitmap_bytes(length));
  hxArrayPtr values = make_column(hxClassID::UInt8, size);
  const std::span<std::uint8_t> bytes(elements<std::uint8_t>(values), size);
  hxSetField(envelopes, index, "Values", std::move(values));
  hxSetField(envelopes, index, "Length", make_double(static_cast<double>(length)));
  hxSetField(envelopes, index, "ArrowType", make_char_row(u"buffer"));
  return {bytes, length, static_cast<std::uint8_t>(fill == BitFill::Ones ? 0xFF : 0)};
}

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Buffer> buffer) {
  ARROW_ASSIGN_OR_RAISE(const auto bytes, readable_bytes(buffer));
  if (buffer != nullptr && std::cmp_not_equal(bytes.size(), buffer->size())) {
    return messages::not_readable();
  }
  hxArrayPtr envelope = make_buffer_envelope();
  hxSetField(envelope.get(), 0, "ArrowType", make_char_row(u"buffer"));
  hxArrayPtr values = make_column(hxClassID::UInt8, bytes.size());
  if (!bytes.empty()) {
    std::memcpy(elements<std::uint8_t>(values), bytes.data(), bytes.size());
  }
  hxSetField(envelope.get(), 0, "Values", hxSharedCopy(values.get()));
  return envelope;
}

}  // namespace numera::io::arrow::core
