#pragma once

#include <arrow/buffer.h>
#include <arrow/io/interfaces.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "numera/files/json_fields.h"
#include "numera/files/row_blocks.h"

namespace numera::files {

/// Lines of a JSON lines file. The objects in them have matching brackets.
struct JsonLines {
  std::shared_ptr<::arrow::Buffer> text;  ///< null after the last line
  std::int64_t first = 1;                 ///< the number of the first line
  std::int64_t rows = 0;                  ///< lines with an object
};

/// Cuts JSON lines into pieces that need a bounded amount of memory as Arrow columns: at most 1 MiB
/// of text and 4 Mi values, or one line.
class JsonPieces {
 public:
  /// `fields` collects the fields of the lines.
  JsonPieces(std::shared_ptr<::arrow::io::InputStream> text, JsonFields& fields,
             const ReadOptions& options);

  /// The next lines, at least one of them with an object. Invalid for a line that is refused, with
  /// its number.
  ::arrow::Result<JsonLines> next();

 private:
  ::arrow::Result<std::int64_t> scan(JsonLines& lines);

  RowBlocks blocks_;
  JsonFields& fields_;
  std::shared_ptr<::arrow::Buffer> rest_;  ///< of the current block
  std::int64_t line_ = 1;
};

/// The length of the first line, with its line break.
std::size_t length_of_line(std::string_view text);

}  // namespace numera::files
