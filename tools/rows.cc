#include "tools/rows.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/json.h"
#include "tools/json_value.h"
#include "tools/memory_check.h"
#include "tools/terminal.h"
#include "tools/text_table.h"
#include "tools/value_table.h"

namespace numera::tools {
namespace {

/// Rows of a file, and how many the file has if that is known.
struct TableRows {
  ::arrow::RecordBatchVector batches;
  std::optional<std::int64_t> all;
};

std::int64_t count_rows(const ::arrow::RecordBatchVector& batches) {
  std::int64_t rows = 0;
  for (const auto& batch : batches) rows += batch->num_rows();
  return rows;
}

::arrow::Result<TableRows> first_rows(files::Source& source, std::int64_t wanted) {
  TableRows rows{{}, source.rows()};
  while (wanted > 0) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, source.Next());
    if (batch == nullptr) {
      rows.all = count_rows(rows.batches);
      break;
    }
    rows.batches.push_back(batch->Slice(0, wanted));
    wanted -= rows.batches.back()->num_rows();
  }
  return rows;
}

::arrow::Result<TableRows> last_rows(files::Source& source, std::int64_t wanted) {
  std::deque<std::shared_ptr<::arrow::RecordBatch>> last;
  std::int64_t held = 0;
  std::int64_t read = 0;
  Progress progress(source);
  while (true) {
    ARROW_ASSIGN_OR_RAISE(auto batch, source.Next());
    if (batch == nullptr) break;
    held += batch->num_rows();
    read += batch->num_rows();
    last.push_back(std::move(batch));
    while (!last.empty() && held - last.front()->num_rows() >= wanted) {
      held -= last.front()->num_rows();
      last.pop_front();
    }
    progress.show(read);
  }
  if (held > wanted) last.front() = last.front()->Slice(held - wanted);
  return TableRows{{last.begin(), last.end()}, read};
}

void print_json(const ::arrow::RecordBatchVector& batches, std::ostream& out) {
  for (const auto& batch : batches) {
    std::vector<std::string> keys;
    for (const auto& field : batch->schema()->fields()) keys.push_back(json_text(field->name()));
    for (std::int64_t row = 0; row < batch->num_rows(); ++row) {
      const char* separator = "{";
      for (size_t i = 0; i < keys.size(); ++i) {
        out << separator << keys[i] << ':' << json_value(*batch->column(static_cast<int>(i)), row);
        separator = ",";
      }
      out << (keys.empty() ? "{}\n" : "}\n");
    }
  }
}

void print_count(const TableRows& rows, std::ostream& out) {
  if (!rows.all) return;
  const std::int64_t shown = count_rows(rows.batches);
  const std::string all = grouped(*rows.all) + (*rows.all == 1 ? " row" : " rows");
  out << '\n' << (shown == *rows.all ? all : grouped(shown) + " of " + all) << '\n';
}

}  // namespace

::arrow::Status print_rows(const std::vector<std::string>& paths, const files::ReadOptions& options,
                           const RowsOptions& wanted, std::ostream& out) {
  files::ReadOptions few = options;
  if (wanted.part == Part::kFirst) {  // no more than that is decoded
    few.batch_rows = std::clamp<std::int64_t>(wanted.rows, 1, options.batch_rows);
  }
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(paths, few));
  ARROW_ASSIGN_OR_RAISE(const TableRows rows, wanted.part == Part::kFirst
                                                  ? first_rows(*source, wanted.rows)
                                                  : last_rows(*source, wanted.rows));
  // Files can hold offsets and codes that lead out of their buffers.
  for (const auto& batch : rows.batches) ARROW_RETURN_NOT_OK(check_memory(*batch));
  if (wanted.json) {
    print_json(rows.batches, out);
    return ::arrow::Status::OK();
  }
  const Layout layout{.width = output_width().value_or(kUnlimited), .colour = output_has_colour()};
  (wanted.vertical ? print_blocks : print_table)(*source->schema(), rows.batches, layout, out);
  if (wanted.count) print_count(rows, out);
  return ::arrow::Status::OK();
}

}  // namespace numera::tools
