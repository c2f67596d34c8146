#include "numera/extras/encode/readable.h"

#include <utility>

#include "numera/core/to_arrow.h"
#include "numera/format/records.h"

namespace numera::extras::encoding {

void store(hxArray* envelopes, size_t index, ReadableValue readable) {
  hxArrayPtr valid = format::make_struct(1, format::kBuffer);
  if (readable.valid == nullptr) readable.valid = format::make_zero_column(hxClassID::UInt8, 0);
  format::store_buffer(valid.get(), 0, std::move(readable.valid),
                       static_cast<std::int64_t>(readable.length));
  hxSetField(envelopes, index, format::kArrowType, format::make_word(readable.kind));
  hxSetField(envelopes, index, format::kType, format::make_word(readable.type));
  hxSetField(envelopes, index, format::kValid, std::move(valid));
  hxSetField(envelopes, index, format::kData, std::move(readable.data));
}

Envelope make_envelope(ReadableValue readable) {
  Envelope envelope{format::make_struct(1, format::kArray), readable.length};
  store(envelope.value.get(), 0, std::move(readable));
  return envelope;
}

::arrow::Result<std::shared_ptr<::arrow::Array>> borrow(const hxArray* envelopes, size_t index,
                                                        const Located& origin) {
  auto array = io::arrow::core::to_arrow(envelopes, index);
  return array.ok() ? array : at(origin, array.status());
}

::arrow::Status validate(const hxArray* envelopes, size_t index, const Located& origin) {
  ARROW_ASSIGN_OR_RAISE(const auto array, borrow(envelopes, index, origin));
  const ::arrow::Status status = array->ValidateFull();
  return status.ok() ? status : at(origin, status);
}

}  // namespace numera::extras::encoding
