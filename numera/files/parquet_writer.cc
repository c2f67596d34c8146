#include <arrow/table.h>
#include <arrow/util/byte_size.h>
#include <parquet/arrow/writer.h>
#include <parquet/exception.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "numera/files/encoder.h"

namespace numera::files {
namespace {

/// Groups are not smaller, because the footer grows with their number and stays in memory to the
/// end.
constexpr std::int64_t kGroupRows = 262144;  // few bytes of dictionary indices may stand for many

/// A row group is collected first and then written column by column. With threads each batch is
/// encoded at once, all columns side by side, and their encoders need several times as much memory.
class ParquetWriter {
 public:
  ParquetWriter(const Encoding& encoding, Output output)
      : encoding_(encoding), output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) try {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t bytes, ::arrow::util::ReferencedBufferSize(*batch));
    if (writer_ == nullptr) ARROW_RETURN_NOT_OK(open(*batch->schema()));
    if (encoding_.use_threads) {
      if (!is_open_) ARROW_RETURN_NOT_OK(writer_->NewBufferedRowGroup());
      is_open_ = true;
      ARROW_RETURN_NOT_OK(writer_->WriteRecordBatch(*batch));
    } else {
      group_.push_back(batch);
    }
    bytes_ += bytes;
    rows_ += batch->num_rows();
    return bytes_ < encoding_.group_bytes && rows_ < kGroupRows ? ::arrow::Status::OK()
                                                                : end_group();
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }

  ::arrow::Status close() try {
    ARROW_RETURN_NOT_OK(end_group());
    return writer_->Close();
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }

 private:
  ::arrow::Status end_group() {
    if (!group_.empty()) {
      ARROW_ASSIGN_OR_RAISE(const auto table, ::arrow::Table::FromRecordBatches(group_));
      ARROW_RETURN_NOT_OK(writer_->WriteTable(*table, std::max<std::int64_t>(rows_, 1)));
    }
    group_.clear();
    is_open_ = false;
    bytes_ = rows_ = 0;
    return ::arrow::Status::OK();
  }

  ::arrow::Status open(const ::arrow::Schema& schema) {
    const auto properties = parquet::WriterProperties::Builder()
                                .compression(encoding_.codec)
                                ->compression_level(encoding_.level)
                                ->build();
    const auto arrow_properties = parquet::ArrowWriterProperties::Builder()
                                      .store_schema()
                                      ->set_use_threads(encoding_.use_threads)
                                      ->build();
    return parquet::arrow::FileWriter::Open(schema, ::arrow::default_memory_pool(), output_,
                                            properties, arrow_properties)
        .Value(&writer_);
  }

  Encoding encoding_;
  Output output_;
  std::unique_ptr<parquet::arrow::FileWriter> writer_;
  ::arrow::RecordBatchVector group_;  ///< without threads
  bool is_open_ = false;              ///< whether a row group is, with threads
  std::int64_t bytes_ = 0;
  std::int64_t rows_ = 0;
};

}  // namespace

Encoder make_parquet_encoder(const Encoding& encoding, Output output) {
  return encoder_of(std::make_shared<ParquetWriter>(encoding, std::move(output)));
}

}  // namespace numera::files
