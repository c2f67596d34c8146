#include "tools/tree.h"

#include <arrow/table.h>

#include <algorithm>
#include <limits>
#include <ostream>

#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/numera.h"

namespace numera::tools {
namespace {

/// Enough for every row asked for, but not for a text of megabytes.
constexpr size_t kWidestLine = 100'000;

}  // namespace

::arrow::Status print_tree(const std::vector<std::string>& paths, const files::ReadOptions& options,
                           const TreeOptions& tree, std::ostream& out) {
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(paths, options));
  ::arrow::RecordBatchVector batches;
  for (std::int64_t wanted = tree.rows; wanted > 0;) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, source->Next());
    if (batch == nullptr) break;
    hxThrowIfInterruptPending();
    batches.push_back(batch->Slice(0, wanted));
    wanted -= batches.back()->num_rows();
  }
  ARROW_ASSIGN_OR_RAISE(const auto table,
                        ::arrow::Table::FromRecordBatches(source->schema(), batches));
  ARROW_ASSIGN_OR_RAISE(const auto taken, extras::take_in(table, {.cast = tree.cast}));
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr host, io::arrow::core::to_numera(taken.value));
  const auto listed = static_cast<size_t>(std::max<std::int64_t>(tree.rows, table->num_columns()));
  const extras::PrintOptions all{.max_elements = std::max<size_t>(listed, 20),
                                 .max_width = kWidestLine,
                                 .max_lines = std::numeric_limits<size_t>::max()};
  out << extras::print(host.get(), all) << '\n';
  return ::arrow::Status::OK();
}

}  // namespace numera::tools
