#include "numera/core/to_numera.h"

#include <utility>

#include "numera/core/array_layout.h"
#include "numera/core/arrow_types.h"
#include "numera/core/chunk_memory.h"
#include "numera/core/dispatch.h"
#include "numera/core/host_values.h"
#include "numera/core/validity.h"

namespace numera::io::arrow::core {
namespace {

::arrow::Result<EncodedColumn> encode(const ColumnView& column) {
  const ArrowTypeRow& row = arrow_type_row(column.type()->id());
  const std::u16string_view kind = row.kind;
  EncodedColumn encoded;
  ARROW_ASSIGN_OR_RAISE(encoded.data, data_to_numera(column));
  encoded.arrow_type = make_char_row(kind);
  encoded.type = make_char_row(row.encoded_name);
  ARROW_ASSIGN_OR_RAISE(encoded.valid, validity_to_numera(column, kind == u"array"));
  return encoded;
}

/// What every column from outside goes through.
::arrow::Result<EncodedColumn> encode_checked(const ColumnView& column) {
  ARROW_RETURN_NOT_OK(check_type(column.type().get()));
  for (const ArrayView& chunk : column.chunks()) {
    if (chunk.data == nullptr || chunk.data->type == column.type()) continue;
    ARROW_RETURN_NOT_OK(check_type(chunk.data->type.get()));
  }
  ARROW_RETURN_NOT_OK(check_layout(column));
  return encode(column);
}

hxArrayPtr envelope_of(EncodedColumn column) {
  hxArrayPtr envelope = make_struct(1, {"ArrowType", "Type", "Valid", "Data"});
  put_fields(envelope.get(), 0, std::move(column));
  return envelope;
}

}  // namespace

::arrow::Result<hxArrayPtr> data_to_numera(const ColumnView& column) {
  const Writer writer = arrow_type_row(column.type()->id()).writer;
  if (writer == nullptr) {
    return ::arrow::Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ",
                                      column.type()->ToString());
  }
  ARROW_RETURN_NOT_OK(check_chunks(column));
  return writer(column);
}

void put_fields(hxArray* envelopes, size_t index, EncodedColumn column) {
  hxSetField(envelopes, index, "ArrowType", std::move(column.arrow_type));
  hxSetField(envelopes, index, "Type", std::move(column.type));
  hxSetField(envelopes, index, "Valid", std::move(column.valid));
  hxSetField(envelopes, index, "Data", std::move(column.data));
}

::arrow::Result<EncodedColumn> encode_checked(const ::arrow::ChunkedArray* column) {
  if (column == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Column conversion");
  }
  return encode_checked(ColumnView(*column));
}

::arrow::Result<hxArrayPtr> column_to_numera(const ColumnView& column) {
  ARROW_ASSIGN_OR_RAISE(EncodedColumn encoded, encode(column));
  return envelope_of(std::move(encoded));
}

::arrow::Status store_child(hxArray* data, size_t index, const char* field,
                            const ArrayView& child) {
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr envelope, column_to_numera(ColumnView(child)));
  hxSetField(data, index, field, std::move(envelope));
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
