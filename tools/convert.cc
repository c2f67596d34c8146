#include "tools/convert.h"

#include <arrow/table.h>
#include <arrow/util/thread_pool.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <future>
#include <ostream>
#include <utility>
#include <vector>

#include "numera/files/write.h"
#include "numera/numera.h"
#include "tools/characters.h"
#include "tools/json.h"
#include "tools/terminal.h"
#include "tools/text_table.h"
#include "tools/there_and_back.h"
#include "tools/tree.h"
#include "tools/way_back.h"

namespace numera::tools {
namespace {

namespace core = numera::io::arrow::core;

/// So many rows does `--show` print.
constexpr std::int64_t kShownRows = TreeOptions().rows;

/// Whether standard output is a terminal and what is written is not plain text.
bool would_garble_terminal(const files::WriteOptions& options) {
  using files::Format;
  const bool is_text = options.format == Format::kCsv || options.format == Format::kJsonLines;
  const bool is_packed = !options.compression.empty() && options.compression != "none";
  return (!is_text || is_packed) && ::isatty(STDOUT_FILENO) == 1;
}

class Conversion {
 public:
  explicit Conversion(const ConvertOptions& options) : options_(options) {}

  ::arrow::Status run() {
    ARROW_ASSIGN_OR_RAISE(source_, files::open_source(options_.paths, options_.source));
    columns_.resize(static_cast<size_t>(source_->schema()->num_fields()));
    if (options_.skip_unsupported) ARROW_RETURN_NOT_OK(leave_out());
    if (!options_.output.empty()) ARROW_RETURN_NOT_OK(open_output());
    return go_through();
  }

  /// Prints the first rows, of the columns that are not left out.
  ::arrow::Status print_first_rows(std::ostream& out) const {
    std::vector<int> kept;
    for (size_t i = 0; i < columns_.size(); ++i) {
      if (!columns_[i].left_out) kept.push_back(static_cast<int>(i));
    }
    ARROW_ASSIGN_OR_RAISE(auto table,
                          ::arrow::Table::FromRecordBatches(source_->schema(), first_rows_));
    ARROW_ASSIGN_OR_RAISE(table, table->SelectColumns(kept));
    return print_tree(table, {.rows = kShownRows, .cast = options_.cast}, out);
  }

  void print(std::ostream& out) const {
    TextTable table({"column", "Arrow type", "encoded type", "host class", "rows", "chunks",
                     "nulls", "way back"});
    for (size_t i = 0; i < columns_.size(); ++i) {
      const auto& field = source_->schema()->field(static_cast<int>(i));
      table.add({field->name(), field->type()->ToString(), columns_[i].encoded_type,
                 core::to_numera_datatype(field->type()).value_or("-"), grouped(rows_),
                 grouped(source_->chunks()), grouped(columns_[i].nulls),
                 columns_[i].text(*field->type())});
    }
    table.print(out, output_has_colour(options_.output == "-" ? STDERR_FILENO : STDOUT_FILENO));
    out << '\n';
    print_leg(out, "to the host:  ", legs_.to_host);
    print_leg(out, "to Arrow:     ", legs_.to_arrow);
    for (size_t i = 0; i < columns_.size(); ++i) {
      if (!columns_[i].left_out) continue;
      out << one_line("left out:     " + name(i) + ": " + columns_[i].failure) << '\n';
    }
  }

  void print_json(std::ostream& out) const {
    for (size_t i = 0; i < columns_.size(); ++i) {
      const auto& field = source_->schema()->field(static_cast<int>(i));
      out << columns_[i].json(*field, rows_, source_->chunks()) << '\n';
    }
    out << json_object({{"to_host", json_of(legs_.to_host)}, {"to_arrow", json_of(legs_.to_arrow)}})
        << '\n';
  }

  /// Invalid if a column failed, or if `strict` is set and a column changed its type.
  ::arrow::Status check() const {
    const auto is_left_out = [](const WayBack& column) { return column.left_out; };
    const auto has_failed = [](const WayBack& column) {
      return !column.failure.empty() && !column.left_out;
    };
    if (!columns_.empty() && std::ranges::all_of(columns_, is_left_out)) {
      return ::arrow::Status::Invalid("no column is left: none has a type with a host form");
    }
    const auto failed = std::ranges::count_if(columns_, has_failed);
    if (failed > 0) {
      return ::arrow::Status::Invalid(
          failed, " of ", columns_.size(), " columns were refused or came back different",
          options_.skip_unsupported ? "; only those are left out whose type has no host form" : "");
    }
    return options_.strict ? check_types() : ::arrow::Status::OK();
  }

  /// Puts the output file in place.
  ::arrow::Status finish() { return sink_ == nullptr ? ::arrow::Status::OK() : sink_->finish(); }

 private:
  const std::string& name(size_t column) const {
    return source_->schema()->field(static_cast<int>(column))->name();
  }

  ::arrow::Status open_output() {
    files::WriteOptions encoding = options_.encoding;
    if (options_.output == "-" && encoding.format && would_garble_terminal(encoding)) {
      return ::arrow::Status::Invalid("standard output is a terminal, which shows text alone");
    }
    encoding.inputs = options_.paths;
    encoding.use_threads = options_.threads != 1;
    const auto threads = static_cast<int>(std::min<size_t>(options_.threads, INT_MAX));
    if (threads > 1 && threads < ::arrow::GetCpuThreadPoolCapacity()) {
      ARROW_RETURN_NOT_OK(::arrow::SetCpuThreadPoolCapacity(threads));
    }
    return files::open_sink(options_.output, encoding).Value(&sink_);
  }

  /// What is refused of a batch without rows is refused for its type.
  ::arrow::Status leave_out() {
    ARROW_ASSIGN_OR_RAISE(const auto nothing, ::arrow::RecordBatch::MakeEmpty(source_->schema()));
    Legs uncounted;
    const auto trips =
        there_and_back(*nothing, {.cast = options_.cast}, failed_columns(), uncounted);
    for (size_t i = 0; i < trips.size(); ++i) {
      columns_[i].failure = trips[i].refusal;
      columns_[i].left_out = !trips[i].refusal.empty();
    }
    return ::arrow::Status::OK();
  }

  std::vector<bool> failed_columns() const {
    std::vector<bool> failed;
    failed.reserve(columns_.size());
    for (const WayBack& column : columns_) failed.push_back(!column.failure.empty());
    return failed;
  }

  /// The next batch is read and the last one is checked and written while a batch is converted; one
  /// after the other if there is one thread. Only this thread calls the host.
  ::arrow::Status go_through() {
    const auto policy = options_.threads == 1 ? std::launch::deferred : std::launch::async;
    const auto read = [this] { return source_->Next(); };
    Progress progress(*source_);
    std::int64_t rows = 0;
    std::future<::arrow::Status> added;
    std::vector<bool> refused = failed_columns();
    ARROW_ASSIGN_OR_RAISE(auto batch, read());
    if (batch == nullptr) {  // a file without rows is converted, too
      ARROW_ASSIGN_OR_RAISE(batch, ::arrow::RecordBatch::MakeEmpty(source_->schema()));
    }
    while (batch != nullptr) {
      auto next = std::async(policy, read);
      hxThrowIfInterruptPending();  // if all columns are refused, no host call checks for it
      auto trips = there_and_back(*batch, {.cast = options_.cast, .threads = options_.threads},
                                  refused, legs_);
      rows += batch->num_rows();
      if (added.valid()) ARROW_RETURN_NOT_OK(added.get());
      refused = failed_columns();
      added = std::async(policy,
                         [this, batch, trips = std::move(trips)] { return add(*batch, trips); });
      if (policy == std::launch::deferred) ARROW_RETURN_NOT_OK(added.get());
      progress.show(rows);
      ARROW_ASSIGN_OR_RAISE(batch, next.get());
    }
    return added.valid() ? added.get() : ::arrow::Status::OK();
  }

  ::arrow::Status add(const ::arrow::RecordBatch& batch, const std::vector<Trip>& trips) {
    for (size_t i = 0; i < trips.size(); ++i) {
      columns_[i].add(batch.column(static_cast<int>(i)), trips[i], rows_, options_.check);
    }
    if (options_.show && rows_ < kShownRows) {  // a pipe cannot be read again
      first_rows_.push_back(batch.Slice(0, kShownRows - rows_));
    }
    rows_ += batch.num_rows();
    return sink_ == nullptr ? ::arrow::Status::OK() : write(batch, trips);
  }

  ::arrow::Status write(const ::arrow::RecordBatch& batch, const std::vector<Trip>& trips) {
    ::arrow::FieldVector fields;
    ::arrow::ArrayVector arrays;
    for (size_t i = 0; i < trips.size(); ++i) {
      if (columns_[i].left_out) continue;
      if (!columns_[i].failure.empty()) return ::arrow::Status::OK();  // nothing will be written
      fields.push_back(
          source_->schema()->field(static_cast<int>(i))->WithType(trips[i].back->type()));
      arrays.push_back(trips[i].back);
    }
    if (fields.empty() && !columns_.empty()) return ::arrow::Status::OK();  // none is left
    return sink_->write(::arrow::RecordBatch::Make(
        ::arrow::schema(std::move(fields), source_->schema()->metadata()), batch.num_rows(),
        arrays));
  }

  ::arrow::Status check_types() const {
    for (size_t i = 0; i < columns_.size(); ++i) {
      if (columns_[i].left_out) continue;
      const auto& field = source_->schema()->field(static_cast<int>(i));
      const auto& returned = columns_[i].returned;
      if (!same_type(*field->type(), *returned)) {
        return ::arrow::Status::Invalid("column '", field->name(), "' returns as ",
                                        returned->ToString());
      }
    }
    return ::arrow::Status::OK();
  }

  static std::string seconds_of(const Leg& leg) {
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.6f", leg.seconds);
    return seconds;
  }

  static void print_leg(std::ostream& out, const char* label, const Leg& leg) {
    out << label << grouped(leg.bytes) << " bytes in " << seconds_of(leg) << " s\n";
  }

  static std::string json_of(const Leg& leg) {
    return json_object({{"bytes", json_number(leg.bytes)}, {"seconds", seconds_of(leg)}});
  }

  const ConvertOptions& options_;
  std::shared_ptr<files::Source> source_;
  std::unique_ptr<files::Sink> sink_;
  std::vector<WayBack> columns_;
  ::arrow::RecordBatchVector first_rows_;  ///< only if they are shown
  std::int64_t rows_ = 0;
  Legs legs_;
};

}  // namespace

::arrow::Status convert(const ConvertOptions& options, std::ostream& out) {
  Conversion conversion(options);
  ARROW_RETURN_NOT_OK(conversion.run());
  options.json ? conversion.print_json(out) : conversion.print(out);
  ARROW_RETURN_NOT_OK(conversion.check());
  if (options.show) {
    out << '\n';
    ARROW_RETURN_NOT_OK(conversion.print_first_rows(out));
  }
  if (!out.flush()) return ::arrow::Status::IOError("the result cannot be written");
  return conversion.finish();
}

}  // namespace numera::tools
