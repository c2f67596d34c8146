/// \file
/// Arrow IPC streams, sliced into other chunks, through the intake to the host and back.
///
/// The input is 8 bytes that decide the slices, followed by a stream. Arrow's own reader is not
/// under test: it gets a limited memory pool, its refusals are accepted, and batches that fail the
/// program's check of a batch are dropped. Every buffer is copied into a block of exactly its size,
/// so that a read past its end is detected.

#include <arrow/array/array_base.h>
#include <arrow/io/memory.h>
#include <arrow/ipc/reader.h>
#include <arrow/memory_pool.h>
#include <arrow/record_batch.h>
#include <arrow/table.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/arrow_copies.h"
#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "fuzz/taken_in.h"

namespace numera::fuzz {
namespace {

constexpr std::int64_t kMostBytes = 1 << 24;
constexpr std::int64_t kMostRows = 1 << 11;
constexpr int kMostBatches = 6;

using Batches = std::vector<std::shared_ptr<::arrow::RecordBatch>>;
using TablePtr = std::shared_ptr<::arrow::Table>;

/// The batches before the first one that is refused.
::arrow::Result<TablePtr> read_stream(std::span<const std::uint8_t> bytes,
                                      ::arrow::MemoryPool* pool) {
  auto options = ::arrow::ipc::IpcReadOptions::Defaults();
  options.memory_pool = pool;
  options.use_threads = false;
  const auto input = std::make_shared<::arrow::io::BufferReader>(
      std::make_shared<::arrow::Buffer>(bytes.data(), static_cast<std::int64_t>(bytes.size())));
  ARROW_ASSIGN_OR_RAISE(const auto reader,
                        ::arrow::ipc::RecordBatchStreamReader::Open(input, options));
  Batches batches;
  while (batches.size() < kMostBatches) {
    std::shared_ptr<::arrow::RecordBatch> batch;
    if (!reader->ReadNext(&batch).ok() || batch == nullptr) break;
    if (batch->num_rows() > kMostRows || !batch->Validate().ok()) break;
    batches.push_back(std::move(batch));
  }
  return ::arrow::Table::FromRecordBatches(reader->schema(), batches);
}

std::shared_ptr<::arrow::ChunkedArray> uncounted(const ::arrow::ChunkedArray& column) {
  ::arrow::ArrayVector chunks;
  for (const auto& chunk : column.chunks()) {
    chunks.push_back(::arrow::MakeArray(testing::Uncounted(*chunk->data())));
  }
  return std::make_shared<::arrow::ChunkedArray>(std::move(chunks), column.type());
}

/// `counted`: keeps the null counts of the stream.
TablePtr exact_table(const ::arrow::Table& table, size_t shift, bool counted) {
  ::arrow::ChunkedArrayVector columns;
  for (const auto& column : table.columns()) {
    const auto copy = exact_copy(*column, shift);
    columns.push_back(counted ? copy : uncounted(*copy));
  }
  return ::arrow::Table::Make(table.schema(), std::move(columns), table.num_rows());
}

/// Up to three slices of the table, which may overlap, as chunks.
TablePtr sliced(const TablePtr& table, ByteSource& decisions) {
  std::vector<TablePtr> pieces;
  for (size_t count = decisions.below(4); count > 0; --count) {
    const auto rows = static_cast<size_t>(table->num_rows());
    const size_t start = rows == 0 ? 0 : decisions.below(std::min(rows, size_t{256}));
    pieces.push_back(table->Slice(static_cast<std::int64_t>(start),
                                  static_cast<std::int64_t>(decisions.below(80))));
  }
  if (pieces.empty()) return table;
  auto joined = ::arrow::ConcatenateTables(pieces);
  return joined.ok() ? *joined : table;
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  ByteSource source(input);
  ByteSource decisions(source.take(8));
  ::arrow::CappedMemoryPool pool(::arrow::default_memory_pool(),
                                 ::arrow::default_memory_pool()->bytes_allocated() + kMostBytes);
  const auto table = read_stream(source.rest(), &pool);
  if (!table.ok()) return;
  const size_t memory = decisions.below(8);
  const size_t shift = memory % 4;
  check_taken(sliced(exact_table(**table, shift, memory < 4), decisions), shift % 2 == 0);
}

}  // namespace numera::fuzz
