#include <utility>

#include "numera/core/encoded_table.h"
#include "numera/core/to_numera.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Table> table) {
  ARROW_ASSIGN_OR_RAISE(EncodedTable encoded, begin_encoded_table(table.get()));
  for (int i = 0; i < table->num_columns(); ++i) {
    hxThrowIfInterruptPending();
    ARROW_ASSIGN_OR_RAISE(EncodedColumn column, encode_column(*table, i));
    put_column(encoded, i, std::move(column));
  }
  return std::move(encoded.envelope);
}

}  // namespace numera::io::arrow::core
