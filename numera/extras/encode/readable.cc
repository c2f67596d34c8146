#include "numera/extras/encode/readable.h"

#include <array>
#include <span>
#include <utility>

#include "numera/core/to_arrow.h"

namespace numera::extras::encoding {

bool is_nested(const ReadableValue& readable) { return readable.kind != u"array"; }

void store(hxArray* envelopes, size_t index, ReadableValue readable) {
  hxArrayPtr valid = make_struct(1, {"ArrowType", "Values", "Length"});
  hxSetField(valid.get(), 0, "ArrowType", make_char(u"buffer"));
  if (readable.valid == nullptr) readable.valid = make_zero_column(hxClassID::UInt8, 0);
  hxSetField(valid.get(), 0, "Values", std::move(readable.valid));
  hxSetField(valid.get(), 0, "Length", make_double(static_cast<double>(readable.length)));
  hxSetField(envelopes, index, "ArrowType", make_char(readable.kind));
  hxSetField(envelopes, index, "Type", make_char(readable.type));
  hxSetField(envelopes, index, "Valid", std::move(valid));
  hxSetField(envelopes, index, "Data", std::move(readable.data));
}

Envelope make_envelope(ReadableValue readable) {
  Envelope envelope{make_struct(1, {"ArrowType", "Type", "Valid", "Data"}), readable.length};
  store(envelope.value.get(), 0, std::move(readable));
  return envelope;
}

::arrow::Result<std::shared_ptr<::arrow::Array>> read_back(const hxArray* envelopes, size_t index,
                                                           const Located& origin) {
  auto array = io::arrow::core::to_arrow(envelopes, index);
  if (!array.ok()) return at(origin, array.status());
  const ::arrow::Status valid = (*array)->ValidateFull();
  if (!valid.ok()) return at(origin, valid);
  return array;
}

hxArrayPtr make_char(std::u16string_view text) {
  return hxCreateCharArray(text.data(), text.size());
}

hxArrayPtr make_column(hxClassID class_id, size_t length) {
  return hxCreateUninitNumericArray(std::array<size_t, 2>{length, 1}, class_id, hxComplexity::Real);
}

hxArrayPtr make_zero_column(hxClassID class_id, size_t length) {
  return hxCreateNumericArray(std::array<size_t, 2>{length, 1}, class_id, hxComplexity::Real);
}

hxArrayPtr make_double(double value) {
  hxArrayPtr array = make_column(hxClassID::Double, 1);
  *elements<double>(array) = value;
  return array;
}

hxArrayPtr make_logical(bool value) {
  hxArrayPtr array = make_column(hxClassID::Logical, 1);
  *elements<std::uint8_t>(array) = value ? 1 : 0;
  return array;
}

hxArrayPtr make_cell(size_t rows, size_t columns) {
  return hxCreateCellArray(std::array<size_t, 2>{rows, columns});
}

hxArrayPtr make_struct(size_t length, std::initializer_list<const char*> fields) {
  return hxCreateStructArray(std::array<size_t, 2>{length, 1},
                             std::span<const char* const>(fields.begin(), fields.size()));
}

hxArrayPtr make_packed_logical(hxArrayPtr bits, size_t length) {
  hxArrayPtr packed = make_struct(1, {"Values", "Length", "ArrowType"});
  hxSetField(packed.get(), 0, "Values", std::move(bits));
  hxSetField(packed.get(), 0, "Length", make_double(static_cast<double>(length)));
  hxSetField(packed.get(), 0, "ArrowType", make_char(u"buffer"));
  return packed;
}

}  // namespace numera::extras::encoding
