#include "numera/core/to_numera.h"

#include <string_view>
#include <utility>

#include "numera/core/array_checks.h"
#include "numera/core/arrow_types.h"
#include "numera/core/dispatch.h"
#include "numera/core/types/nested.h"
#include "numera/core/validity.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

/// Adds the other fields to "Data".
[[gnu::noinline]] EncodedColumn complete(const ColumnView& column, hxArrayPtr data) {
  const ArrowTypeRow& row = arrow_type_row(column.type()->id());
  EncodedColumn encoded;
  encoded.data = std::move(data);
  encoded.arrow_type = format::make_word(row.kind);
  encoded.type = format::make_word(row.encoded_name);
  encoded.valid = validity_to_numera(column, std::string_view(row.kind) == format::kArrayKind);
  return encoded;
}

hxArrayPtr envelope_of(EncodedColumn column) {
  hxArrayPtr envelope = format::make_struct(1, format::kArray);
  put_fields(envelope.get(), 0, std::move(column));
  return envelope;
}

[[gnu::noinline]] void store_envelope(const Slot& slot, const ColumnView& column, hxArrayPtr data) {
  hxArrayPtr envelope = envelope_of(complete(column, std::move(data)));
  if (slot.field == nullptr) {
    hxSetCell(slot.container, slot.index, std::move(envelope));
  } else {
    hxSetField(slot.container, slot.index, slot.field, std::move(envelope));
  }
}

::arrow::Result<EncodedColumn> encode_checked(const ColumnView& column) {
  ARROW_RETURN_NOT_OK(check_column(column));
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr data, data_to_numera(column));
  return complete(column, std::move(data));
}

}  // namespace

::arrow::Result<hxArrayPtr> data_to_numera(const ColumnView& column) {
  return arrow_type_row(column.type()->id()).writer(column);
}

void put_fields(hxArray* envelopes, size_t index, EncodedColumn column) {
  hxSetField(envelopes, index, format::kArrowType, std::move(column.arrow_type));
  hxSetField(envelopes, index, format::kType, std::move(column.type));
  hxSetField(envelopes, index, format::kValid, std::move(column.valid));
  hxSetField(envelopes, index, format::kData, std::move(column.data));
}

::arrow::Result<EncodedColumn> encode_checked(const ::arrow::ChunkedArray* column) {
  if (column == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Column conversion");
  }
  return encode_checked(ColumnView(*column));
}

::arrow::Result<hxArrayPtr> failed(::arrow::Status status) { return status; }

::arrow::Status store_child(const Slot& slot, const ArrayView& child) {
  const ColumnView column(child);
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr data, data_to_numera(column));
  store_envelope(slot, column, std::move(data));
  return ::arrow::Status::OK();
}

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Array> array) {
  if (array == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Array conversion");
  }
  ARROW_ASSIGN_OR_RAISE(EncodedColumn encoded, encode_checked(ColumnView(ArrayView(*array))));
  return envelope_of(std::move(encoded));
}

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::ChunkedArray> column) {
  ARROW_ASSIGN_OR_RAISE(EncodedColumn encoded, encode_checked(column.get()));
  return envelope_of(std::move(encoded));
}

}  // namespace numera::io::arrow::core
