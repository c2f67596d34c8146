#include "numera/files/encoder.h"

#include <arrow/array/array_dict.h>
#include <arrow/chunked_array.h>
#include <arrow/ipc/writer.h>
#include <arrow/table.h>
#include <arrow/util/byte_size.h>
#include <parquet/arrow/writer.h>
#include <parquet/exception.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace numera::files {
namespace {

using Batch = std::shared_ptr<::arrow::RecordBatch>;
using Output = std::shared_ptr<::arrow::io::OutputStream>;

/// A row group is collected first and then written column by column. Encoders for all columns at
/// once would need several times as much memory. Groups are not smaller, because the footer grows
/// with their number and stays in memory to the end.
constexpr std::int64_t kGroupBytes = std::int64_t{16} * 1024 * 1024;
constexpr std::int64_t kGroupRows = 262144;  // few bytes of dictionary indices may stand for many

class ParquetWriter {
 public:
  explicit ParquetWriter(Output output) : output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t bytes, ::arrow::util::ReferencedBufferSize(*batch));
    group_.push_back(batch);
    bytes_ += bytes;
    rows_ += batch->num_rows();
    return bytes_ < kGroupBytes && rows_ < kGroupRows ? ::arrow::Status::OK() : write_group();
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
    if (writer_ == nullptr) {
      const auto properties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
      ARROW_ASSIGN_OR_RAISE(writer_, parquet::arrow::FileWriter::Open(
                                         *table->schema(), ::arrow::default_memory_pool(), output_,
                                         parquet::default_writer_properties(), properties));
    }
    ARROW_RETURN_NOT_OK(writer_->WriteTable(*table, std::max<std::int64_t>(rows_, 1)));
    group_.clear();
    bytes_ = rows_ = 0;
    return ::arrow::Status::OK();
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }

  Output output_;
  std::unique_ptr<parquet::arrow::FileWriter> writer_;
  ::arrow::RecordBatchVector group_;
  std::int64_t bytes_ = 0;
  std::int64_t rows_ = 0;
};

/// Dictionaries only grow from batch to batch, since an IPC file cannot replace them.
class IpcWriter {
 public:
  explicit IpcWriter(Output output) : output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) {
    if (writer_ == nullptr) {
      auto options = ::arrow::ipc::IpcWriteOptions::Defaults();
      options.emit_dictionary_deltas = true;
      ARROW_ASSIGN_OR_RAISE(writer_,
                            ::arrow::ipc::MakeFileWriter(output_, batch->schema(), options));
    }
    ::arrow::ArrayVector columns = batch->columns();
    for (size_t i = 0; i < dictionaries_.size(); ++i) {
      ARROW_ASSIGN_OR_RAISE(columns[i], extend(dictionaries_[i], columns[i]));
    }
    dictionaries_.clear();
    for (const auto& column : columns) dictionaries_.push_back(column->Slice(0, 0));
    return writer_->WriteRecordBatch(
        *::arrow::RecordBatch::Make(batch->schema(), batch->num_rows(), std::move(columns)));
  }

  ::arrow::Status close() { return writer_->Close(); }

 private:
  /// `column` with each dictionary, at any depth, replaced by that of `last` plus the new values.
  static ::arrow::Result<std::shared_ptr<::arrow::Array>> extend(
      const std::shared_ptr<::arrow::Array>& last, const std::shared_ptr<::arrow::Array>& column) {
    const auto both =
        std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{last, column}, column->type());
    ARROW_ASSIGN_OR_RAISE(const auto unified, ::arrow::DictionaryUnifier::UnifyChunkedArray(both));
    return unified->chunk(1);
  }

  Output output_;
  std::shared_ptr<::arrow::ipc::RecordBatchWriter> writer_;
  ::arrow::ArrayVector dictionaries_;  ///< empty columns with the dictionaries written so far
};

template <class Writer>
Encoder make_encoder(Output output) {
  const auto writer = std::make_shared<Writer>(std::move(output));
  return {[writer](const Batch& batch) { return writer->write(batch); },
          [writer] { return writer->close(); }};
}

struct Suffix {
  std::string_view text;
  MakeEncoder make;
};

constexpr Suffix kSuffixes[] = {{".parquet", make_encoder<ParquetWriter>},
                                {".arrow", make_encoder<IpcWriter>},
                                {".feather", make_encoder<IpcWriter>},
                                {".ipc", make_encoder<IpcWriter>}};

}  // namespace

::arrow::Result<MakeEncoder> find_encoder(std::string_view path) {
  for (const Suffix& suffix : kSuffixes) {
    if (path.ends_with(suffix.text)) return suffix.make;
  }
  return ::arrow::Status::Invalid("the name ends in none of .parquet, .arrow, .feather, .ipc");
}

}  // namespace numera::files
