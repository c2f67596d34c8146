#include "tools/value_table.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "tools/cells.h"
#include "tools/text_table.h"
#include "tools/value_text.h"

namespace numera::tools {
namespace {

/// Blocks hold no values of megabytes.
constexpr size_t kWidestValue = 100'000;

Cell value_cell(const ::arrow::Array& array, std::int64_t row, size_t width) {
  auto text = value_text(array, row, width);
  if (!text) return {"null", Style::kDim};
  return {std::move(*text)};
}

CellColumn column_of(const ::arrow::Field& field, int index,
                     const ::arrow::RecordBatchVector& batches, size_t widest) {
  CellColumn column;
  column.aligned_right = is_aligned_right(*field.type());
  column.cells.push_back({fitted(field.name(), widest), Style::kBold});
  column.cells.push_back({});
  for (const auto& batch : batches) {
    const auto array = batch->column(index);
    for (std::int64_t row = 0; row < array->length(); ++row) {
      column.cells.push_back(value_cell(*array, row, widest));
    }
  }
  add_type(column, *field.type(), widest);
  return column;
}

/// Says which columns are left out, on a line about as wide as the table.
void print_left_out(const ::arrow::Schema& schema, size_t shown, size_t width, std::ostream& out) {
  const auto left_out = static_cast<size_t>(schema.num_fields()) - shown;
  std::string line = grouped(static_cast<long long>(left_out)) +
                     (left_out == 1 ? " more column: " : " more columns: ");
  const std::string advice =
      "; --columns or --vertical show " + std::string(left_out == 1 ? "it" : "them");
  for (size_t i = shown; i < shown + left_out; ++i) {
    const std::string name =
        (i == shown ? "" : ", ") + fitted(schema.field(static_cast<int>(i))->name(), kWidestCell);
    const bool fits = width_of(line) + width_of(name) + advice.size() <= width;
    if (i > shown && !fits) {
      line += ", …";
      break;
    }
    line += name;
  }
  out << line << advice << '\n';
}

/// The columns that fit into a line, at least one.
std::vector<CellColumn> columns_that_fit(const ::arrow::Schema& schema,
                                         const ::arrow::RecordBatchVector& batches, size_t width) {
  const size_t widest = std::min(kWidestCell, width);
  std::vector<CellColumn> columns;
  size_t used = 0;
  for (int i = 0; i < schema.num_fields(); ++i) {
    CellColumn column = column_of(*schema.field(i), i, batches, widest);
    used += column.width + (i == 0 ? 0 : kGap);
    if (i > 0 && used > width) break;
    columns.push_back(std::move(column));
  }
  return columns;
}

}  // namespace

void print_table(const ::arrow::Schema& schema, const ::arrow::RecordBatchVector& batches,
                 const Layout& layout, std::ostream& out) {
  const std::vector<CellColumn> columns = columns_that_fit(schema, batches, layout.width);
  if (columns.empty()) return;
  print_columns(columns, layout.colour, out);
  if (columns.size() < static_cast<size_t>(schema.num_fields())) {
    print_left_out(schema, columns.size(), layout.width, out);
  }
}

void print_blocks(const ::arrow::Schema& schema, const ::arrow::RecordBatchVector& batches,
                  const Layout& layout, std::ostream& out) {
  std::vector<std::string> labels;
  size_t widest = 0;
  for (const auto& field : schema.fields()) {
    labels.push_back(fitted(field->name(), kWidestCell) + ":");
    widest = std::max(widest, width_of(labels.back()));
  }
  const size_t indent = widest + 1;
  const size_t least = 10;
  const size_t room = std::min(std::max(layout.width, indent + least) - indent, kWidestValue);
  const char* separator = "";
  for (const auto& batch : batches) {
    for (std::int64_t row = 0; row < batch->num_rows(); ++row) {
      out << separator;
      separator = "\n";
      for (size_t i = 0; i < labels.size(); ++i) {
        const Cell value = value_cell(*batch->column(static_cast<int>(i)), row, room);
        const std::string blanks(value.text.empty() ? 0 : indent - width_of(labels[i]), ' ');
        out << styled({labels[i], Style::kBold}, layout.colour) << blanks
            << styled(value, layout.colour) << '\n';
      }
    }
  }
}

}  // namespace numera::tools
