#include "numera/files/ipc_counts.h"

#include <arrow/buffer.h>
#include <arrow/extension_type.h>
#include <arrow/ipc/dictionary.h>
#include <arrow/ipc/message.h>
#include <arrow/ipc/options.h>
#include <arrow/ipc/reader.h>
#include <arrow/util/endian.h>

#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace numera::files {
namespace {

using MessagePtr = std::unique_ptr<::arrow::ipc::Message>;

/// Reads the metadata of messages and steps over their bodies.
class MetadataReader {
 public:
  MetadataReader(File file, std::int64_t start, std::int64_t size)
      : file_(std::move(file)), at_(start), size_(size) {}

  /// Null at the marker of the end.
  ::arrow::Result<MessagePtr> next() {
    ARROW_ASSIGN_OR_RAISE(std::int32_t length, read_length());
    if (length == -1) {  // the continuation marker, which messages before Arrow 0.15 do not have
      ARROW_ASSIGN_OR_RAISE(length, read_length());
    }
    if (length == 0) return nullptr;
    ARROW_RETURN_NOT_OK(check_is_inside(length));
    ARROW_ASSIGN_OR_RAISE(const auto metadata, file_->ReadAt(at_, length));
    at_ += length;
    ARROW_ASSIGN_OR_RAISE(auto message,
                          ::arrow::ipc::Message::Open(metadata, ::arrow::Buffer::FromString("")));
    ARROW_RETURN_NOT_OK(check_is_inside(message->body_length()));
    at_ += message->body_length();
    return message;
  }

 private:
  ::arrow::Result<std::int32_t> read_length() {
    std::int32_t length = 0;
    ARROW_RETURN_NOT_OK(check_is_inside(sizeof length));
    ARROW_ASSIGN_OR_RAISE(const std::int64_t read, file_->ReadAt(at_, sizeof length, &length));
    at_ += read;
    return ::arrow::bit_util::FromLittleEndian(length);
  }

  ::arrow::Status check_is_inside(std::int64_t length) const {
    if (length >= 0 && length <= size_ - at_) return ::arrow::Status::OK();
    return ::arrow::Status::Invalid("a message leads out of the file");
  }

  File file_;
  std::int64_t at_;
  std::int64_t size_;
};

/// A record batch has a node with a length and a number of nulls for each column and for each
/// field within it.
void add_nodes(const ::arrow::DataType& type, ::arrow::FieldVector& nodes) {
  if (type.id() == ::arrow::Type::EXTENSION) {
    add_nodes(*static_cast<const ::arrow::ExtensionType&>(type).storage_type(), nodes);
    return;
  }
  nodes.push_back(::arrow::field("", ::arrow::null()));
  for (const auto& field : type.fields()) add_nodes(*field->type(), nodes);
}

/// Reads the counts in the metadata of record batches. Arrow reads no buffers for columns of nulls,
/// so such columns take the place of all nodes.
class BatchCounter {
 public:
  explicit BatchCounter(const ::arrow::Schema& schema)
      : nulls_(static_cast<size_t>(schema.num_fields()), 0) {
    ::arrow::FieldVector nodes;
    for (const auto& field : schema.fields()) {
      options_.included_fields.push_back(static_cast<int>(nodes.size()));
      add_nodes(*field->type(), nodes);
    }
    nodes_ = ::arrow::schema(std::move(nodes));
  }

  ::arrow::Status add(const ::arrow::ipc::Message& message) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, ::arrow::ipc::ReadRecordBatch(
                                                message, nodes_, &no_dictionaries_, options_));
    const std::int64_t rows = batch->num_rows();
    if (rows < 0 || rows > std::numeric_limits<std::int64_t>::max() - rows_) {
      return ::arrow::Status::Invalid("found a record batch of ", rows, " rows");
    }
    rows_ += rows;
    ++batches_;
    for (size_t i = 0; i < nulls_.size(); ++i) {
      const std::int64_t nulls = batch->column_data(static_cast<int>(i))->null_count;
      auto& sum = nulls_[i];
      sum = sum && nulls >= 0 && nulls <= rows ? std::optional(*sum + nulls) : std::nullopt;
    }
    return ::arrow::Status::OK();
  }

  StatedCounts counts() const { return {.rows = rows_, .chunks = batches_, .nulls = nulls_}; }

 private:
  std::int64_t rows_ = 0;
  std::int64_t batches_ = 0;
  std::vector<std::optional<std::int64_t>> nulls_;
  std::shared_ptr<::arrow::Schema> nodes_;
  ::arrow::ipc::DictionaryMemo no_dictionaries_;
  ::arrow::ipc::IpcReadOptions options_ = ::arrow::ipc::IpcReadOptions::Defaults();
};

}  // namespace

::arrow::Result<StatedCounts> count_ipc(const File& file, std::int64_t start,
                                        const ::arrow::Schema& schema) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, file->GetSize());
  MetadataReader messages(file, start, size);
  BatchCounter counter(schema);
  while (true) {
    ARROW_ASSIGN_OR_RAISE(const MessagePtr message, messages.next());
    if (message == nullptr) return counter.counts();
    if (message->type() == ::arrow::ipc::MessageType::RECORD_BATCH) {
      ARROW_RETURN_NOT_OK(counter.add(*message));
    }
  }
}

}  // namespace numera::files
