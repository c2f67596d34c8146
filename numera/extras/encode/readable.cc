#include "numera/extras/encode/readable.h"

#include <cstdint>
#include <utility>

#include "numera/core/to_arrow.h"
#include "numera/format/records.h"

namespace numera::extras::encoding {

Envelope make_envelope(ReadableValue readable) {
  hxArrayPtr valid = format::make_struct(1, format::kBuffer);
  if (readable.valid == nullptr) readable.valid = format::make_zero_column(hxClassID::UInt8, 0);
  format::store_buffer(valid.get(), 0, std::move(readable.valid),
                       static_cast<std::int64_t>(readable.length));
  return {format::make_record(format::kArray, format::make_word(readable.kind),
                              format::make_word(readable.type), std::move(valid),
                              std::move(readable.data)),
          readable.length};
}

::arrow::Result<std::shared_ptr<::arrow::Array>> borrow(const Envelope& envelope,
                                                        const Located& origin) {
  auto array = io::arrow::core::to_arrow<::arrow::Array>(envelope.value.get());
  return array.ok() ? array : at(origin, array.status());
}

}  // namespace numera::extras::encoding
