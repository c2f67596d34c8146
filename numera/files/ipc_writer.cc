#include <arrow/array/array_dict.h>
#include <arrow/chunked_array.h>
#include <arrow/ipc/writer.h>

#include <utility>

#include "numera/files/encoder.h"

namespace numera::files {
namespace {

/// Dictionaries only grow from batch to batch, since an IPC file cannot replace them.
class IpcWriter {
 public:
  IpcWriter(const Encoding& encoding, Output output)
      : encoding_(encoding), output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) {
    if (writer_ == nullptr) ARROW_RETURN_NOT_OK(open(batch->schema()));
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
  ::arrow::Status open(const std::shared_ptr<::arrow::Schema>& schema) {
    auto options = ::arrow::ipc::IpcWriteOptions::Defaults();
    options.emit_dictionary_deltas = true;
    options.use_threads = false;  // for compression
    if (encoding_.codec != ::arrow::Compression::UNCOMPRESSED) {
      ARROW_ASSIGN_OR_RAISE(options.codec,
                            ::arrow::util::Codec::Create(encoding_.codec, encoding_.level));
    }
    return (encoding_.format == Format::kIpcFile
                ? ::arrow::ipc::MakeFileWriter(output_, schema, options)
                : ::arrow::ipc::MakeStreamWriter(output_, schema, options))
        .Value(&writer_);
  }

  /// `column` with each dictionary, at any depth, replaced by that of `last` plus the new values.
  static ::arrow::Result<std::shared_ptr<::arrow::Array>> extend(
      const std::shared_ptr<::arrow::Array>& last, const std::shared_ptr<::arrow::Array>& column) {
    const auto both =
        std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{last, column}, column->type());
    ARROW_ASSIGN_OR_RAISE(const auto unified, ::arrow::DictionaryUnifier::UnifyChunkedArray(both));
    return unified->chunk(1);
  }

  Encoding encoding_;
  Output output_;
  std::shared_ptr<::arrow::ipc::RecordBatchWriter> writer_;
  ::arrow::ArrayVector dictionaries_;  ///< empty columns with the dictionaries written so far
};

}  // namespace

Encoder make_ipc_encoder(const Encoding& encoding, Output output) {
  return encoder_of(std::make_shared<IpcWriter>(encoding, std::move(output)));
}

}  // namespace numera::files
