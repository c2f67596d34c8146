#include <arrow/util/config.h>

#ifdef ARROW_ORC
#include <arrow/adapters/orc/adapter.h>
#endif

#include <algorithm>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "numera/files/formats.h"

namespace numera::files {

#ifdef ARROW_ORC
namespace {

using ::arrow::adapters::orc::ORCFileReader;

/// The library takes memory for the whole batch at once, however few rows there are.
constexpr std::int64_t kMostRowsAtOnce = 65536;

/// Arrow turns most exceptions of its ORC library into statuses, but not all.
template <class Read>
auto without_exceptions(const Read& read) -> decltype(read()) {
  try {
    return read();
  } catch (const std::exception& error) {
    return ::arrow::Status::IOError("ORC: ", error.what());
  }
}

/// Names for `GetRecordBatchReader`, or none if it has to read all columns: it takes a name with a
/// dot for a path.
std::vector<std::string> names_of(const ::arrow::Schema& whole, const std::vector<int>& columns) {
  std::vector<std::string> names;
  for (int i = 0; i < whole.num_fields(); ++i) {
    const std::string& name = whole.field(i)->name();
    if (name.empty() || name.find('.') != std::string::npos) return {};
    if (whole.GetAllFieldIndices(name).size() > 1) return {};
    if (std::ranges::find(columns, i) != columns.end()) names.push_back(name);
  }
  return names;
}

/// Reads the stripes in order, each batch by batch. Never seeks to a stripe: the library would
/// follow an index of rows that a damaged file lacks.
class Stripes {
 public:
  Stripes(std::shared_ptr<ORCFileReader> file, std::shared_ptr<::arrow::RecordBatchReader> batches,
          std::vector<int> places)
      : file_(std::move(file)), batches_(std::move(batches)), places_(std::move(places)) {}

  const std::shared_ptr<std::int64_t>& opened() const { return opened_; }

  BatchResult next() {
    std::shared_ptr<::arrow::RecordBatch> batch;
    ARROW_RETURN_NOT_OK(batches_->ReadNext(&batch));
    if (batch != nullptr) {
      rows_ += batch->num_rows();
      while (rows_ > rows_opened_ && *opened_ < file_->NumberOfStripes()) {
        rows_opened_ += file_->GetStripeInformation((*opened_)++).num_rows;
      }
      return batch->SelectColumns(places_);
    }
    if (rows_ == file_->NumberOfRows()) return nullptr;
    return ::arrow::Status::Invalid("found ", rows_, " rows, expected ", file_->NumberOfRows(),
                                    ", as the footer states");
  }

 private:
  std::shared_ptr<ORCFileReader> file_;
  std::shared_ptr<::arrow::RecordBatchReader> batches_;
  std::vector<int> places_;  ///< of the columns asked for, in what is read
  std::int64_t rows_ = 0;
  std::int64_t rows_opened_ = 0;  ///< of the stripes that were opened
  std::shared_ptr<std::int64_t> opened_ = std::make_shared<std::int64_t>(0);
};

::arrow::Result<Stream> open_stripes(const File& file, const ReadOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto opened, ORCFileReader::Open(file, options.pool));
  const std::shared_ptr<ORCFileReader> reader = std::move(opened);
  ARROW_ASSIGN_OR_RAISE(const auto whole, reader->ReadSchema());
  ARROW_ASSIGN_OR_RAISE(const auto columns, find_columns(*whole, options.columns));
  const auto names = names_of(*whole, columns);
  ::arrow::FieldVector fields;
  std::vector<int> places;
  for (const int column : columns) {
    fields.push_back(whole->field(column));
    const auto place = std::ranges::find(names, fields.back()->name()) - names.begin();
    places.push_back(names.empty() ? column : static_cast<int>(place));
  }
  const std::int64_t rows = std::min(options.batch_rows, kMostRowsAtOnce);
  ARROW_ASSIGN_OR_RAISE(auto batches, reader->GetRecordBatchReader(rows, names));
  StatedCounts counts{.rows = reader->NumberOfRows(), .chunks = reader->NumberOfStripes()};
  counts.nulls.resize(columns.size());
  const auto stripes = std::make_shared<Stripes>(reader, std::move(batches), std::move(places));
  auto next = [stripes] { return without_exceptions([&] { return stripes->next(); }); };
  return Stream{::arrow::schema(std::move(fields), whole->metadata()), std::move(next),
                reader->NumberOfRows(), stripes->opened(), [counts] { return counts; }};
}

}  // namespace

::arrow::Result<Stream> open_orc(const File& file, const ReadOptions& options) {
  return without_exceptions([&] { return open_stripes(file, options); });
}

#else

::arrow::Result<Stream> open_orc(const File&, const ReadOptions&) {
  return ::arrow::Status::Invalid("it is ORC, which this build does not read");
}

#endif

}  // namespace numera::files
