#include "numera/files/row_blocks.h"

#include <algorithm>
#include <utility>

namespace numera::files {
namespace {

using MaybeBlock = ::arrow::Result<std::shared_ptr<::arrow::Buffer>>;

}  // namespace

RowBlocks::RowBlocks(std::shared_ptr<::arrow::io::InputStream> text,
                     std::unique_ptr<::arrow::Chunker> rows, const ReadOptions& options)
    : text_(std::move(text)),
      rows_(std::move(rows)),
      pool_(options.pool),
      while_waiting_(options.while_waiting),
      rest_(::arrow::Buffer::FromString("")) {}

MaybeBlock RowBlocks::next() {
  while (!is_at_end_) {
    ARROW_ASSIGN_OR_RAISE(auto block, read());
    if (is_at_end_) return last(std::move(block));
    std::shared_ptr<::arrow::Buffer> whole;
    ARROW_RETURN_NOT_OK(rows_->Process(std::move(block), &whole, &rest_));
    if (whole->size() > 0) {
      ended_with_return_ = std::string_view(*whole).ends_with('\r');
      return whole;
    }
    if (rest_->size() >= kLongestRowBytes) {
      return ::arrow::Status::Invalid("a row is longer than 64 MiB, or a quotation mark in it is ",
                                      "not closed");
    }
  }
  return nullptr;
}

/// What is left at the end of a file is no whole row.
MaybeBlock RowBlocks::last(std::shared_ptr<::arrow::Buffer> block) {
  if (block->size() == 0) return nullptr;
  lacks_last_line_break_ = true;  // or a quotation mark is not closed
  return ::arrow::ConcatenateBuffers({std::move(block), ::arrow::Buffer::FromString("\n")}, pool_);
}

/// The start of a row and what follows it: as much again, so that a long row takes few steps.
MaybeBlock RowBlocks::read() {
  if (while_waiting_) ARROW_RETURN_NOT_OK(while_waiting_());
  const std::int64_t room = kLongestRowBytes - rest_->size();
  ARROW_ASSIGN_OR_RAISE(auto more,
                        text_->Read(std::min(std::max(kTextBlockBytes, rest_->size()), room)));
  is_at_end_ = more->size() == 0;
  if (is_at_start_ && std::string_view(*more).starts_with(kByteOrderMark)) {
    more = ::arrow::SliceBuffer(more, std::ssize(kByteOrderMark));
  }
  is_at_start_ = false;
  if (ended_with_return_ && std::string_view(*more).starts_with('\n')) {
    more = ::arrow::SliceBuffer(more, 1);
  }
  ended_with_return_ = false;
  if (rest_->size() == 0) return more;
  return ::arrow::ConcatenateBuffers({rest_, std::move(more)}, pool_);
}

}  // namespace numera::files
