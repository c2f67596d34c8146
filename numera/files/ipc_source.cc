#include <arrow/buffer.h>
#include <arrow/ipc/message.h>
#include <arrow/ipc/reader.h>
#include <arrow/util/endian.h>

#include <utility>

#include "numera/files/formats.h"
#include "numera/files/ipc_counts.h"

namespace numera::files {
namespace {

/// Reads the messages of a stream and refuses a stream without an end marker. Every writer of files
/// writes that marker. A file that was cut between two messages lacks it, but Arrow reads it as
/// complete. The bytes before the cut may look like the marker. So the marker counts as read only
/// if the reader advanced past it.
class MarkedMessages : public ::arrow::ipc::MessageReader {
 public:
  explicit MarkedMessages(File file)
      : file_(std::move(file)), messages_(::arrow::ipc::MessageReader::Open(file_)) {}

  ::arrow::Result<std::unique_ptr<::arrow::ipc::Message>> ReadNextMessage() override {
    if (ended_) return nullptr;
    ARROW_ASSIGN_OR_RAISE(const std::int64_t start, file_->Tell());
    ARROW_ASSIGN_OR_RAISE(auto message, messages_->ReadNextMessage());
    if (message != nullptr) return message;
    ARROW_ASSIGN_OR_RAISE(const std::int64_t end, file_->Tell());
    ended_ = end > start;
    if (ended_) return nullptr;
    return ::arrow::Status::Invalid("the stream is truncated: the marker of its end is missing");
  }

 private:
  File file_;
  std::unique_ptr<::arrow::ipc::MessageReader> messages_;
  bool ended_ = false;
};

::arrow::ipc::IpcReadOptions in_pool(::arrow::MemoryPool* pool) {
  auto read = ::arrow::ipc::IpcReadOptions::Defaults();
  read.memory_pool = pool;
  return read;
}

/// What the messages state for the columns asked for, which exist. Nothing if they are damaged.
StatedCounts stated_by_messages(const File& file, std::int64_t start, const ::arrow::Schema& whole,
                                const std::vector<std::string>& columns) {
  const auto numbers = find_columns(whole, columns).ValueOr({});
  const auto found = count_ipc(file, start, whole).ValueOr({});
  StatedCounts counts{found.rows, found.chunks, {}};
  counts.nulls.resize(numbers.size());
  for (size_t i = 0; i < numbers.size() && found.rows; ++i) {
    counts.nulls[i] = found.nulls[static_cast<size_t>(numbers[i])];
  }
  return counts;
}

}  // namespace

::arrow::Result<Stream> open_ipc_file(const File& file, const ReadOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto reader,
                        ::arrow::ipc::RecordBatchFileReader::Open(file, in_pool(options.pool)));
  auto next = [reader, i = 0]() mutable -> BatchResult {
    if (i == reader->num_record_batches()) return nullptr;
    return reader->ReadRecordBatch(i++);
  };
  // Arrow would read all batches to count rows.
  ARROW_ASSIGN_OR_RAISE(auto stream, select_columns(*reader->schema(), options, std::move(next)));
  stream.stated = [=, columns = options.columns] {
    constexpr std::int64_t kFirstMessage = 8;  // after the magic
    const std::int64_t batches = reader->num_record_batches();
    auto counts = stated_by_messages(file, kFirstMessage, *reader->schema(), columns);
    if (counts.chunks != batches) counts = {.nulls = decltype(counts.nulls)(counts.nulls.size())};
    counts.chunks = batches;
    return counts;
  };
  return stream;
}

::arrow::Result<bool> is_old_ipc_stream(const File& file) {
  constexpr std::int64_t kLongest = 1 << 24;  // a smaller length has a NUL byte, which no text has
  std::int32_t length = 0;
  ARROW_ASSIGN_OR_RAISE(const std::int64_t read, file->ReadAt(0, sizeof length, &length));
  length = ::arrow::bit_util::FromLittleEndian(length);
  if (read < std::int64_t{sizeof length} || length <= 0 || length >= kLongest) return false;
  ARROW_ASSIGN_OR_RAISE(const auto metadata, file->ReadAt(read, length));
  const auto message = ::arrow::ipc::Message::Open(metadata, nullptr);
  return message.ok() && (*message)->type() == ::arrow::ipc::MessageType::SCHEMA;
}

::arrow::Result<Stream> open_ipc_stream(const File& file, const ReadOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto reader,
                        ::arrow::ipc::RecordBatchStreamReader::Open(
                            std::make_unique<MarkedMessages>(file), in_pool(options.pool)));
  auto next = [reader]() -> BatchResult {
    std::shared_ptr<::arrow::RecordBatch> batch;
    ARROW_RETURN_NOT_OK(reader->ReadNext(&batch));
    return batch;
  };
  ARROW_ASSIGN_OR_RAISE(auto stream, select_columns(*reader->schema(), options, std::move(next)));
  stream.stated = [=, columns = options.columns] {
    const auto position = file->Tell();
    auto counts = stated_by_messages(file, 0, *reader->schema(), columns);
    // After `ReadAt`, files refuse to read on where they are.
    const auto status = position.ok() ? file->Seek(*position) : position.status();
    return status.ok() ? counts
                       : StatedCounts{.nulls = decltype(counts.nulls)(counts.nulls.size())};
  };
  return stream;
}

}  // namespace numera::files
