#pragma once

#include <arrow/buffer.h>
#include <arrow/io/interfaces.h>
#include <arrow/result.h>
#include <arrow/util/delimiting.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "numera/files/read.h"

namespace numera::files {

/// The number of bytes that text files are read in, and the longest row that is read.
inline constexpr std::int64_t kTextBlockBytes = std::int64_t{1} << 20;
inline constexpr std::int64_t kLongestRowBytes = std::int64_t{1} << 26;

/// The mark of the byte order, which may be at the start of a text file.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Cuts a text file into blocks of whole rows. A block has about 1 MiB, or the length of its first
/// row if that is longer.
class RowBlocks {
 public:
  /// `rows` finds the ends of rows. The pool of the options outlives the blocks. Calls their
  /// `while_waiting` before each MiB, and returns its error.
  RowBlocks(std::shared_ptr<::arrow::io::InputStream> text, std::unique_ptr<::arrow::Chunker> rows,
            const ReadOptions& options);

  /// The next block; null after the last one. The mark of the byte order at the start of a file is
  /// left out, and the last row gets a line break if it has none. Invalid for a row of more than 64
  /// MiB.
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> next();

  /// Whether the file has been read to its end, and its last row has no line break of its own.
  bool lacks_last_line_break() const { return lacks_last_line_break_; }

 private:
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> read();
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> last(std::shared_ptr<::arrow::Buffer> block);

  std::shared_ptr<::arrow::io::InputStream> text_;
  std::unique_ptr<::arrow::Chunker> rows_;
  ::arrow::MemoryPool* pool_;
  std::function<::arrow::Status()> while_waiting_;
  std::shared_ptr<::arrow::Buffer> rest_;  ///< the start of a row
  bool is_at_start_ = true;
  bool is_at_end_ = false;
  bool lacks_last_line_break_ = false;
  bool ended_with_return_ = false;  ///< a line feed that follows belongs to the last block
};

}  // namespace numera::files
