#include <arrow/json/options.h>
#include <arrow/json/reader.h>
#include <arrow/type.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "numera/files/formats.h"
#include "numera/files/json_lines.h"
#include "numera/files/json_types.h"

namespace numera::files {
namespace {

namespace json = ::arrow::json;

using TypePtr = std::shared_ptr<::arrow::DataType>;
using Text = std::shared_ptr<::arrow::Buffer>;

/// `before`, widened by the types in the lines.
::arrow::Result<TypePtr> widen_by(const TypePtr& before, const Text& lines) {
  ARROW_ASSIGN_OR_RAISE(const auto batch, json::ParseOne(json::ParseOptions::Defaults(), lines));
  return widen_rows(before, ::arrow::struct_(batch->schema()->fields()));
}

/// The end of each line.
std::vector<std::int64_t> ends_of_lines(std::string_view text) {
  std::vector<std::int64_t> ends;
  for (size_t at = 0; at < text.size();) {
    at += length_of_line(text.substr(at));
    ends.push_back(static_cast<std::int64_t>(at));
  }
  return ends;
}

/// Arrow's message without what it adds: its own prefix, and the number of the row in its block.
std::string reason_of(const ::arrow::Status& failure) {
  constexpr std::string_view kPrefix = "JSON parse error: ";
  std::string reason = failure.message();
  if (reason.starts_with(kPrefix)) reason.erase(0, kPrefix.size());
  reason.resize(std::min(reason.size(), reason.rfind(" in row 0")));
  if (reason.ends_with('.')) reason.pop_back();
  return reason;
}

/// Finds the first line that cannot be read after those before it.
::arrow::Status explained(const TypePtr& before, const JsonLines& lines,
                          const ::arrow::Status& failure) {
  const auto ends = ends_of_lines(std::string_view(*lines.text));
  const auto is_read = [&](std::int64_t end) {
    return widen_by(before, ::arrow::SliceBuffer(lines.text, 0, end)).ok();
  };
  const auto bad = std::ranges::partition_point(ends, is_read);
  if (bad == ends.end()) return failure;
  const std::int64_t start = bad == ends.begin() ? 0 : *(bad - 1);
  TypePtr read = before;
  if (start > 0) {
    ARROW_ASSIGN_OR_RAISE(read, widen_by(before, ::arrow::SliceBuffer(lines.text, 0, start)));
  }
  const auto alone = widen_by(read, ::arrow::SliceBuffer(lines.text, start, *bad - start)).status();
  return failure.WithMessage("line ", lines.first + (bad - ends.begin()), ": ",
                             reason_of(alone.ok() ? failure : alone));
}

/// The type of all rows of the file.
::arrow::Result<TypePtr> find_types(JsonPieces pieces) {
  TypePtr type = ::arrow::struct_({});
  while (true) {
    ARROW_ASSIGN_OR_RAISE(const JsonLines lines, pieces.next());
    if (lines.text == nullptr) return type;
    const auto widened = widen_by(type, lines.text);
    if (!widened.ok()) return explained(type, lines, widened.status());
    type = *widened;
  }
}

/// The rows of a file whose types are known.
class JsonRows {
 public:
  JsonRows(std::shared_ptr<::arrow::io::InputStream> text, JsonFields fields,
           const std::shared_ptr<::arrow::Schema>& schema, const ReadOptions& options)
      : fields_(std::move(fields)), pieces_(std::move(text), fields_, options) {
    options_.explicit_schema = schema;
    options_.unexpected_field_behavior = json::UnexpectedFieldBehavior::Ignore;
  }

  BatchResult next() {
    ARROW_ASSIGN_OR_RAISE(const JsonLines lines, pieces_.next());
    if (lines.text == nullptr) return nullptr;
    ARROW_ASSIGN_OR_RAISE(auto batch, json::ParseOne(options_, lines.text));
    ++*count_;
    if (batch->num_rows() == lines.rows) return batch;
    return ::arrow::Status::Invalid("found ", batch->num_rows(), " rows in ", lines.rows,
                                    " lines with objects");
  }

  const std::shared_ptr<std::int64_t>& pieces() const { return count_; }

 private:
  JsonFields fields_;  ///< of the whole file, so that pieces have few rows if there are many fields
  JsonPieces pieces_;
  json::ParseOptions options_ = json::ParseOptions::Defaults();
  std::shared_ptr<std::int64_t> count_ = std::make_shared<std::int64_t>(0);
};

}  // namespace

::arrow::Result<Stream> open_json(const OpenText& open, const ReadOptions& options) {
  JsonFields fields;
  ARROW_ASSIGN_OR_RAISE(auto text, open());
  ARROW_ASSIGN_OR_RAISE(const TypePtr type,
                        find_types(JsonPieces(std::move(text), fields, options)));
  const ::arrow::Schema whole(type->fields());
  ARROW_ASSIGN_OR_RAISE(const auto columns, find_columns(whole, options.columns));
  ::arrow::FieldVector wanted;
  for (const int column : columns) wanted.push_back(whole.field(column));
  const auto schema = ::arrow::schema(std::move(wanted));
  ARROW_ASSIGN_OR_RAISE(text, open());
  const auto rows = std::make_shared<JsonRows>(std::move(text), std::move(fields), schema, options);
  return Stream{schema, [rows] { return rows->next(); }, std::nullopt, rows->pieces()};
}

}  // namespace numera::files
