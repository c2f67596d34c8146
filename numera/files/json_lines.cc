#include "numera/files/json_lines.h"

#include <arrow/util/delimiting.h>

#include <algorithm>
#include <utility>

namespace numera::files {
namespace {

constexpr std::int64_t kMostValues = std::int64_t{1} << 22;
/// A line of 64 MiB has fewer, unless few of its fields are in each of its objects.
constexpr std::int64_t kMostValuesOfALine = std::int64_t{1} << 26;

}  // namespace

/// Every break that `arrow::MakeNewlineBoundaryFinder` knows ends a line.
size_t length_of_line(std::string_view text) {
  const size_t end = text.find_first_of("\r\n");
  if (end == std::string_view::npos) return text.size();
  return end + (text.substr(end).starts_with("\r\n") ? 2 : 1);
}

JsonPieces::JsonPieces(std::shared_ptr<::arrow::io::InputStream> text, JsonFields& fields,
                       const ReadOptions& options)
    : blocks_(std::move(text),
              std::make_unique<::arrow::Chunker>(::arrow::MakeNewlineBoundaryFinder()), options),
      fields_(fields) {}

::arrow::Result<JsonLines> JsonPieces::next() {
  while (true) {
    if (rest_ == nullptr || rest_->size() == 0) {
      ARROW_ASSIGN_OR_RAISE(rest_, blocks_.next());
      if (rest_ == nullptr) return JsonLines{};
    }
    JsonLines lines{.text = nullptr, .first = line_};
    const auto length = scan(lines);
    if (!length.ok()) {
      return length.status().WithMessage("line ", line_, ": ", length.status().message());
    }
    lines.text = ::arrow::SliceBuffer(rest_, 0, *length);
    rest_ = ::arrow::SliceBuffer(rest_, *length);
    if (lines.rows > 0) return lines;
  }
}

/// Returns the length of the lines.
::arrow::Result<std::int64_t> JsonPieces::scan(JsonLines& lines) {
  const std::string_view text(*rest_);
  size_t at = 0;
  fields_.restart();
  while (at < text.size()) {
    const size_t length = length_of_line(text.substr(at));
    ARROW_ASSIGN_OR_RAISE(const bool is_row, fields_.scan(text.substr(at, length)));
    if (fields_.values() > kMostValues && lines.rows > 0) break;  // it is scanned again
    if (fields_.values() > kMostValuesOfALine) {
      return ::arrow::Status::Invalid("its objects have too many different fields");
    }
    if (is_row) ++lines.rows;
    at += length;
    ++line_;
  }
  return static_cast<std::int64_t>(at);
}

}  // namespace numera::files
