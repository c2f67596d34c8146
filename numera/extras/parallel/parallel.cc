#include "numera/extras/parallel/parallel.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "numera/core/encoded_table.h"
#include "numera/extras/column_status.h"
#include "numera/extras/parallel/in_order.h"

namespace numera::extras {
namespace {

/// How many columns may wait for a thread: at least one per thread, so that no thread waits for its
/// next column. More if columns are short: waking a thread can take longer than converting a
/// column, so each wake-up must cover many columns.
size_t columns_ahead(const ::arrow::Table& table, size_t threads) {
  constexpr std::int64_t kRowsAhead = 65536;
  const std::int64_t rows = std::max<std::int64_t>(table.num_rows(), 1);
  return threads * static_cast<size_t>(std::clamp<std::int64_t>(kRowsAhead / rows, 1, 256));
}

}  // namespace

::arrow::Result<hxArrayPtr> parallel_to_numera(std::shared_ptr<::arrow::Table> table,
                                               size_t threads) {
  namespace core = io::arrow::core;
  ARROW_ASSIGN_OR_RAISE(core::EncodedTable encoded, core::begin_encoded_table(table.get()));
  std::vector<core::EncodedColumn> columns(static_cast<size_t>(table->num_columns()));
  const auto check = [](size_t) { hxThrowIfInterruptPending(); };
  const auto convert = [&](size_t i) -> ::arrow::Status {
    const auto index = static_cast<int>(i);
    const auto status = core::encode_column(*table, index).Value(&columns[i]);
    return status.ok() ? status : status_of_column(status, table->field(index)->name(), index);
  };
  threads = parallel::thread_count(threads);
  ARROW_RETURN_NOT_OK(
      parallel::in_order(columns.size(), threads, columns_ahead(*table, threads), check, convert));
  for (size_t i = 0; i < columns.size(); ++i) {
    core::put_column(encoded, static_cast<int>(i), std::move(columns[i]));
  }
  return std::move(encoded.envelope);
}

}  // namespace numera::extras
