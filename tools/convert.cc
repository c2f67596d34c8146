#include "tools/convert.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <utility>
#include <vector>

#include "numera/extras/encode/encode.h"
#include "numera/numera.h"
#include "tools/compare.h"
#include "tools/sink.h"
#include "tools/terminal.h"
#include "tools/text_table.h"
#include "tools/there_and_back.h"

namespace numera::tools {
namespace {

namespace core = numera::io::arrow::core;

/// What is known of a column after the batches so far.
struct Column {
  std::string encoded_type = "-";
  std::int64_t nulls = 0;
  std::string casts;
  std::shared_ptr<::arrow::DataType> returned;
  std::string failure;  ///< why it did not return as it went; empty so far

  /// "equal", "cast to double, equal as large_string", or the failure.
  std::string way_back(const ::arrow::DataType& went) const {
    if (!failure.empty()) return failure;
    if (returned == nullptr) return "no rows";
    const bool same = casts.empty() && returned->Equals(went);
    return casts + (same ? "equal" : "equal as " + returned->ToString());
  }
};

std::string describe(const std::vector<extras::IntakeCast>& casts) {
  std::string text;
  for (const extras::IntakeCast& cast : casts) text += "cast " + extras::to_string(cast) + ", ";
  return text;
}

/// Compares a column that came back with what went: the input, or what it was cast to.
std::string compare(const std::shared_ptr<::arrow::Array>& input, const Trip& trip,
                    std::int64_t rows_before) {
  const auto& went = trip.casts.empty() ? input : trip.taken;
  if (!extras::returns_as(*went->type(), *trip.back->type())) {
    return "returns as " + trip.back->type()->ToString();
  }
  const auto row = first_differing_row(*went, *trip.back);
  return row ? "differs in row " + grouped(rows_before + *row) : "";
}

class Conversion {
 public:
  explicit Conversion(const ConvertOptions& options) : options_(options) {}

  ::arrow::Status run() {
    ARROW_ASSIGN_OR_RAISE(source_, open_source(options_.file, options_.source));
    columns_.resize(static_cast<size_t>(source_.schema->num_fields()));
    if (!options_.output.empty()) {
      ARROW_ASSIGN_OR_RAISE(sink_, Sink::open(options_.output, options_.file));
    }
    Progress progress(source_.rows);
    while (true) {
      ARROW_ASSIGN_OR_RAISE(const auto batch, source_.next());
      if (batch == nullptr) return ::arrow::Status::OK();
      ARROW_RETURN_NOT_OK(add(*batch));
      progress.show(rows_);
    }
  }

  void print(std::ostream& out) const {
    TextTable table({"column", "Arrow type", "encoded type", "host class", "rows", "chunks",
                     "nulls", "way back"});
    for (size_t i = 0; i < columns_.size(); ++i) {
      const auto& field = source_.schema->field(static_cast<int>(i));
      table.add({field->name(), field->type()->ToString(), columns_[i].encoded_type,
                 core::to_numera_datatype(field->type()).value_or("-"), grouped(rows_),
                 grouped(*source_.chunks), grouped(columns_[i].nulls),
                 columns_[i].way_back(*field->type())});
    }
    table.print(out, output_has_colour());
    out << '\n';
    print_leg(out, "to the host:  ", legs_.to_host);
    print_leg(out, "to Arrow:     ", legs_.to_arrow);
  }

  /// Makes the output appear where all is well, and says what is not.
  ::arrow::Status finish() {
    const auto failed = std::ranges::count_if(
        columns_, [](const Column& column) { return !column.failure.empty(); });
    if (failed > 0) {
      return ::arrow::Status::Invalid(failed, " of ", columns_.size(),
                                      " columns did not return as they went");
    }
    if (options_.strict) ARROW_RETURN_NOT_OK(check_types());
    return sink_ == nullptr ? ::arrow::Status::OK() : sink_->finish();
  }

 private:
  ::arrow::Status add(const ::arrow::RecordBatch& batch) {
    std::vector<bool> refused;
    for (const Column& column : columns_) refused.push_back(!column.failure.empty());
    std::vector<Trip> trips = there_and_back(batch, options_.cast, refused, legs_);
    for (size_t i = 0; i < trips.size(); ++i) {
      const auto& input = batch.column(static_cast<int>(i));
      columns_[i].nulls += input->null_count();
      if (!refused[i]) add_trip(columns_[i], input, trips[i]);
    }
    rows_ += batch.num_rows();
    return sink_ == nullptr ? ::arrow::Status::OK() : write(batch, trips);
  }

  void add_trip(Column& column, const std::shared_ptr<::arrow::Array>& input,
                const Trip& trip) const {
    if (!trip.refusal.empty()) {
      column.failure = trip.refusal.substr(0, trip.refusal.find('\n'));
      return;
    }
    column.encoded_type = trip.encoded_type;
    column.casts = describe(trip.casts);
    column.returned = trip.back->type();
    column.failure = compare(input, trip, rows_);
  }

  ::arrow::Status write(const ::arrow::RecordBatch& batch, const std::vector<Trip>& trips) {
    ::arrow::FieldVector fields;
    ::arrow::ArrayVector arrays;
    for (size_t i = 0; i < trips.size(); ++i) {
      if (!columns_[i].failure.empty()) return ::arrow::Status::OK();  // nothing will be written
      fields.push_back(source_.schema->field(static_cast<int>(i))->WithType(trips[i].back->type()));
      arrays.push_back(trips[i].back);
    }
    return sink_->write(::arrow::RecordBatch::Make(
        ::arrow::schema(std::move(fields), source_.schema->metadata()), batch.num_rows(), arrays));
  }

  ::arrow::Status check_types() const {
    for (size_t i = 0; i < columns_.size(); ++i) {
      const auto& field = source_.schema->field(static_cast<int>(i));
      const auto& returned = columns_[i].returned;
      if (returned != nullptr && !returned->Equals(*field->type())) {
        return ::arrow::Status::Invalid("column '", field->name(), "' returns as ",
                                        returned->ToString());
      }
    }
    return ::arrow::Status::OK();
  }

  static void print_leg(std::ostream& out, const char* label, const Leg& leg) {
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.6f", leg.seconds);
    out << label << grouped(leg.bytes) << " bytes in " << seconds << " s\n";
  }

  const ConvertOptions& options_;
  Source source_;
  std::unique_ptr<Sink> sink_;
  std::vector<Column> columns_;
  std::int64_t rows_ = 0;
  Legs legs_;
};

}  // namespace

::arrow::Status convert(const ConvertOptions& options, std::ostream& out) {
  Conversion conversion(options);
  ARROW_RETURN_NOT_OK(conversion.run());
  conversion.print(out);
  return conversion.finish();
}

}  // namespace numera::tools
