#include "tools/summary.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "tools/cells.h"
#include "tools/memory_check.h"
#include "tools/summary_json.h"
#include "tools/terminal.h"
#include "tools/text_table.h"
#include "tools/value_summary.h"
#include "tools/value_table.h"
#include "tools/value_text.h"

namespace numera::tools {
namespace {

/// The width of a table where nothing states one.
constexpr size_t kUsualWidth = 100;

/// Nothing is cut to less.
constexpr size_t kLeastCell = 12;

constexpr std::pair<Figure, const char*> kLabels[] = {
    {Figure::kNulls, "nulls"},     {Figure::kDistinct, "distinct"},
    {Figure::kNaN, "NaN"},         {Figure::kFalse, "false"},
    {Figure::kTrue, "true"},       {Figure::kMin, "min"},
    {Figure::k5, "5 %"},           {Figure::k25, "25 %"},
    {Figure::k50, "50 %"},         {Figure::k75, "75 %"},
    {Figure::k95, "95 %"},         {Figure::kMax, "max"},
    {Figure::kMean, "mean"},       {Figure::kShortest, "shortest"},
    {Figure::kLongest, "longest"}, {Figure::kHistogram, "histogram"}};

/// Many columns share what the sums of all columns may hold.
SummaryBounds bounds_for(size_t columns) {
  const size_t sharers = std::max<size_t>(columns, 1);
  const SummaryBounds most;
  return {.distinct_values = std::clamp<size_t>(500'000 / sharers, 100, most.distinct_values),
          .distinct_bytes = std::clamp<size_t>(20'000'000 / sharers, 10'000, most.distinct_bytes),
          .sample = std::clamp<size_t>(2'000'000 / sharers, 1'000, most.sample)};
}

class ColumnSummary {
 public:
  ColumnSummary(const ::arrow::Field& field, const SummaryBounds& bounds) {
    const auto type = resolved_type(field.type());
    values_ = summary_of_numbers(type, bounds);
    if (values_ == nullptr) values_ = summary_of_others(*type, bounds);
  }

  void add(const std::shared_ptr<::arrow::Array>& column) {
    const ElementRows elements = element_rows(column);
    nulls_ += column->length() - static_cast<std::int64_t>(elements.rows.size());
    if (values_ != nullptr) values_->add(elements);
  }

  Figures figures() const {
    Figures figures = {{Figure::kNulls, count_figure(nulls_)}};
    if (values_ != nullptr) values_->put_into(figures);
    return figures;
  }

 private:
  std::unique_ptr<ValueSummary> values_;  ///< null for types of which only nulls are counted
  std::int64_t nulls_ = 0;
};

CellColumn column_of(const ::arrow::Field& field, const Figures& figures, size_t widest) {
  CellColumn column;
  column.aligned_right = is_aligned_right(*field.type());
  column.cells.push_back({fitted(field.name(), widest), Style::kBold});
  column.cells.push_back({});
  for (const auto& [figure, label] : kLabels) {
    const auto found = figures.find(figure);
    const std::string text = found == figures.end() ? "" : found->second.text;
    column.cells.push_back({column.aligned_right ? text : fitted(text, widest)});
  }
  add_type(column, *field.type(), widest);
  return column;
}

CellColumn column_of_labels() {
  CellColumn labels;
  labels.cells.resize(2);
  for (const auto& [figure, label] : kLabels) {
    labels.cells.push_back({label, Style::kBold});
    labels.width = std::max(labels.width, width_of(label));
  }
  return labels;
}

/// Leaves out the lines of figures that no column has.
void drop_empty_lines(std::vector<CellColumn>& columns) {
  for (size_t line = columns.front().cells.size(); line-- > 0;) {
    const bool is_empty = std::all_of(columns.begin() + 1, columns.end(), [&](const auto& column) {
      return column.cells[line].text.empty();
    });
    if (!is_empty || line < 2) continue;
    for (CellColumn& column : columns) {
      column.cells.erase(column.cells.begin() + static_cast<std::ptrdiff_t>(line));
    }
  }
}

/// Prints tables one after another, each with as many columns as fit, at least one.
void print_tables(std::vector<CellColumn> columns, size_t width, bool colour, std::ostream& out) {
  const CellColumn labels = column_of_labels();
  for (size_t next = 0; next < columns.size();) {
    if (next > 0) out << '\n';
    std::vector<CellColumn> table = {labels};
    for (size_t used = labels.width; next < columns.size(); ++next) {
      used += kGap + columns[next].width;
      if (used > width && table.size() > 1) break;
      table.push_back(std::move(columns[next]));
    }
    drop_empty_lines(table);
    print_columns(table, colour, out);
  }
}

::arrow::Result<std::int64_t> add_batches(files::Source& source,
                                          std::vector<ColumnSummary>& columns) {
  std::int64_t rows = 0;
  Progress progress(source);
  while (true) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, source.Next());
    if (batch == nullptr) return rows;
    ARROW_RETURN_NOT_OK(check_memory(*batch));
    for (size_t i = 0; i < columns.size(); ++i) {
      columns[i].add(batch->column(static_cast<int>(i)));
    }
    rows += batch->num_rows();
    progress.show(rows);
  }
}

void print_summary_as_tables(const ::arrow::FieldVector& fields,
                             const std::vector<Figures>& figures, std::int64_t rows,
                             std::ostream& out) {
  const size_t width = output_width().value_or(kUsualWidth);
  const size_t beside_labels = column_of_labels().width + kGap;
  const size_t room = std::max(width, beside_labels + kLeastCell) - beside_labels;
  std::vector<CellColumn> columns;
  columns.reserve(fields.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    columns.push_back(column_of(*fields[i], figures[i], std::min(room, kWidestCell)));
  }
  print_tables(std::move(columns), width, output_has_colour(), out);
  out << (fields.empty() ? "" : "\n") << grouped(rows) << (rows == 1 ? " row\n" : " rows\n");
}

void print_summary_as_json(const ::arrow::FieldVector& fields, const std::vector<Figures>& figures,
                           std::int64_t rows, std::ostream& out) {
  for (size_t i = 0; i < fields.size(); ++i) {
    out << summary_json(*fields[i], rows, figures[i]) << '\n';
  }
}

}  // namespace

::arrow::Status print_summary(const std::vector<std::string>& paths,
                              const files::ReadOptions& options, const SummaryOptions& summary,
                              std::ostream& out) {
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(paths, options));
  const ::arrow::FieldVector& fields = source->schema()->fields();
  std::vector<ColumnSummary> summaries;
  summaries.reserve(fields.size());
  for (const auto& field : fields) summaries.emplace_back(*field, bounds_for(fields.size()));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t rows, add_batches(*source, summaries));
  std::vector<Figures> figures;
  figures.reserve(summaries.size());
  for (const ColumnSummary& column : summaries) figures.push_back(column.figures());
  (summary.json ? print_summary_as_json : print_summary_as_tables)(fields, figures, rows, out);
  return ::arrow::Status::OK();
}

}  // namespace numera::tools
