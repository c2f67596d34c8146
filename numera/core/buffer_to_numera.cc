#include <arrow/buffer.h>

#include <utility>

#include "numera/core/array_view.h"
#include "numera/core/messages.h"
#include "numera/core/to_numera.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Buffer> buffer) {
  const Bytes bytes = bytes_of(buffer.get());
  if (buffer != nullptr && std::cmp_not_equal(bytes.size(), buffer->size())) {
    return messages::not_readable();
  }
  hxArrayPtr envelope = format::make_struct(1, format::kBuffer);
  hxSetField(envelope.get(), 0, format::kArrowType, format::make_word(format::kBufferKind));
  const hxArrayPtr values = format::make_byte_column(bytes);
  hxSetField(envelope.get(), 0, format::kValues, hxSharedCopy(values.get()));
  return envelope;
}

}  // namespace numera::io::arrow::core
