#include <arrow/util/config.h>

#ifdef ARROW_ORC
#include <arrow/adapters/orc/adapter.h>
#endif

#include <algorithm>
#include <exception>
#include <utility>

#include "numera/files/formats.h"

namespace numera::files {

#ifdef ARROW_ORC
namespace {

using ::arrow::adapters::orc::ORCFileReader;

/// Arrow turns most exceptions of its ORC library into statuses, but not all.
template <class Read>
auto without_exceptions(const Read& read) -> decltype(read()) {
  try {
    return read();
  } catch (const std::exception& error) {
    return ::arrow::Status::IOError("ORC: ", error.what());
  }
}

/// Reads the stripes in order, each batch by batch.
class Stripes {
 public:
  /// `columns` are the numbers of the columns to read, in the order of the result.
  Stripes(std::shared_ptr<ORCFileReader> file, std::vector<int> columns, std::int64_t batch_rows)
      : file_(std::move(file)),
        sorted_(columns),
        batch_rows_(batch_rows),
        rows_expected_(file_->NumberOfRows()) {
    std::ranges::sort(sorted_);
    for (const int column : columns) {
      const auto place = std::ranges::lower_bound(sorted_, column) - sorted_.begin();
      places_.push_back(static_cast<int>(place));
    }
  }

  const std::shared_ptr<std::int64_t>& opened() const { return opened_; }

  BatchResult next() {
    while (true) {
      if (batches_ == nullptr) {
        ARROW_ASSIGN_OR_RAISE(batches_, file_->NextStripeReader(batch_rows_, sorted_));
        if (batches_ == nullptr) break;
        ++*opened_;
      }
      std::shared_ptr<::arrow::RecordBatch> batch;
      ARROW_RETURN_NOT_OK(batches_->ReadNext(&batch));
      if (batch != nullptr) {
        rows_ += batch->num_rows();
        return batch->SelectColumns(places_);
      }
      batches_ = nullptr;
    }
    if (rows_ == rows_expected_) return nullptr;
    return ::arrow::Status::Invalid("found ", rows_, " rows, expected ", rows_expected_,
                                    ", as the footer states");
  }

 private:
  std::shared_ptr<ORCFileReader> file_;
  std::vector<int> sorted_;  ///< Arrow returns the columns in the order of the file
  std::vector<int> places_;  ///< the place of each column in what Arrow returns
  std::int64_t batch_rows_;
  std::int64_t rows_expected_;
  std::int64_t rows_ = 0;
  std::shared_ptr<std::int64_t> opened_ = std::make_shared<std::int64_t>(0);
  std::shared_ptr<::arrow::RecordBatchReader> batches_;
};

::arrow::Result<Stream> open_stripes(const File& file, const ReadOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto opened, ORCFileReader::Open(file, options.pool));
  const std::shared_ptr<ORCFileReader> reader = std::move(opened);
  ARROW_ASSIGN_OR_RAISE(const auto whole, reader->ReadSchema());
  ARROW_ASSIGN_OR_RAISE(auto columns, find_columns(*whole, options.columns));
  ::arrow::FieldVector fields;
  for (const int column : columns) fields.push_back(whole->field(column));
  const std::int64_t rows = reader->NumberOfRows();
  const auto stripes = std::make_shared<Stripes>(reader, std::move(columns), options.batch_rows);
  auto next = [stripes] { return without_exceptions([&] { return stripes->next(); }); };
  return Stream{::arrow::schema(std::move(fields), whole->metadata()), std::move(next), rows,
                stripes->opened()};
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
