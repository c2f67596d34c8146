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

/// A row group is collected first and then written column by column. Encoders for all columns at
/// once would need several times as much memory. Groups are not smaller, because the footer grows
/// with their number and stays in memory to the end.
constexpr std::int64_t kGroupRows = 262144;  // few bytes of dictionary indices may stand for many

class ParquetWriter {
 public:
  ParquetWriter(const Encoding& encoding, Output output)
      : encoding_(encoding), output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t bytes, ::arrow::util::ReferencedBufferSize(*batch));
    group_.push_back(batch);
    bytes_ += bytes;
    rows_ += batch->num_rows();
    return bytes_ < encoding_.group_bytes && rows_ < kGroupRows ? ::arrow::Status::OK()
                                                                : write_group();
  }

  ::arrow::Status close() try {
    if (!group_.empty()) ARROW_RETURN_NOT_OK(write_group());
    return writer_->Close();
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }

 private:
  ::arrow::Status write_group() try {
    ARROW_ASSIGN_OR_RAISE(const auto table, ::arrow::Table::FromRecordBatches(group_));
    if (writer_ == nullptr) ARROW_RETURN_NOT_OK(open(*table->schema()));
    ARROW_RETURN_NOT_OK(writer_->WriteTable(*table, std::max<std::int64_t>(rows_, 1)));
    group_.clear();
    bytes_ = rows_ = 0;
    return ::arrow::Status::OK();
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }

  ::arrow::Status open(const ::arrow::Schema& schema) {
    const auto properties = parquet::WriterProperties::Builder()
                                .compression(encoding_.codec)
                                ->compression_level(encoding_.level)
                                ->build();
    const auto arrow_properties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
    return parquet::arrow::FileWriter::Open(schema, ::arrow::default_memory_pool(), output_,
                                            properties, arrow_properties)
        .Value(&writer_);
  }

  Encoding encoding_;
  Output output_;
  std::unique_ptr<parquet::arrow::FileWriter> writer_;
  ::arrow::RecordBatchVector group_;
  std::int64_t bytes_ = 0;
  std::int64_t rows_ = 0;
};

}  // namespace

Encoder make_parquet_encoder(const Encoding& encoding, Output output) {
  return encoder_of(std::make_shared<ParquetWriter>(encoding, std::move(output)));
}

}  // namespace numera::files
