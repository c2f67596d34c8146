#include "tools/tree.h"

#include <algorithm>
#include <limits>
#include <ostream>

#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/numera.h"
#include "tools/host_json.h"
#include "tools/json.h"

namespace numera::tools {
namespace {

/// Enough for every row asked for, but not for a text of megabytes.
constexpr size_t kWidestLine = 100'000;

/// So many elements of nested values are listed, however few rows there are.
constexpr size_t kFewestElements = 20;

void print_tree_as_text(const hxArray* table, std::int64_t elements, std::ostream& out) {
  const extras::PrintOptions all{
      .max_elements = std::max(static_cast<size_t>(elements), kFewestElements),
      .max_width = kWidestLine,
      .max_lines = std::numeric_limits<size_t>::max()};
  out << extras::print(table, all) << '\n';
}

/// "Columns" of the table has an element per column.
void print_tree_as_json(const hxArray* table, const ::arrow::Schema& schema, std::ostream& out) {
  const hxArray* columns = hxGetField(table, 0, "Columns");
  for (int i = 0; i < schema.num_fields(); ++i) {
    out << json_object({{"column", json_text(schema.field(i)->name())},
                        {"arrow_type", json_text(schema.field(i)->type()->ToString())},
                        {"encoded", host_fields_json(columns, static_cast<size_t>(i))}})
        << '\n';
  }
}

}  // namespace

::arrow::Status print_tree(const std::shared_ptr<::arrow::Table>& table, const TreeOptions& tree,
                           std::ostream& out) {
  ARROW_ASSIGN_OR_RAISE(const auto taken, extras::take_in(table, {.cast = tree.cast}));
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr host, extras::parallel_to_numera(taken.value, 1));
  if (tree.json) {
    print_tree_as_json(host.get(), *table->schema(), out);
  } else {
    print_tree_as_text(host.get(), std::max<std::int64_t>(tree.rows, table->num_columns()), out);
  }
  return ::arrow::Status::OK();
}

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
  return print_tree(table, tree, out);
}

}  // namespace numera::tools
