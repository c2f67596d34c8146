#include "numera/core/to_numera.h"

#include <utility>

#include "numera/core/array_layout.h"
#include "numera/core/arrow_types.h"
#include "numera/core/chunk_memory.h"
#include "numera/core/dispatch.h"
#include "numera/core/host_values.h"
#include "numera/core/validity.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> data_to_numera(const ::arrow::ChunkedArray& column) {
  const Writer writer = arrow_type_row(column.type()->id()).writer;
  if (writer == nullptr) {
    return ::arrow::Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ",
                                      column.type()->ToString());
  }
  ARROW_RETURN_NOT_OK(check_chunks(column));
  return writer(column);
}

::arrow::Result<hxArrayPtr> column_to_numera(const ::arrow::ChunkedArray& column) {
  const ArrowTypeRow& row = arrow_type_row(column.type()->id());
  const std::u16string_view kind = row.kind;
  hxArrayPtr envelope = make_struct(1, {"ArrowType", "Type", "Valid", "Data"});
  hxSetField(envelope.get(), 0, "ArrowType", make_char_row(kind));
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr data, data_to_numera(column));
  hxSetField(envelope.get(), 0, "Data", std::move(data));
  hxSetField(envelope.get(), 0, "Valid", validity_to_numera(column, kind == u"array"));
  hxSetField(envelope.get(), 0, "Type", make_char_row(row.encoded_name));
  return envelope;
}

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Array> array) {
  if (array == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Array conversion");
  }
  return to_numera(single_chunk(std::move(array)));
}

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::ChunkedArray> column) {
  if (column == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Column conversion");
  }
  ARROW_RETURN_NOT_OK(check_nesting(*column->type()));
  ARROW_RETURN_NOT_OK(check_layout(*column));
  return column_to_numera(*column);
}

}  // namespace numera::io::arrow::core
