#include <algorithm>
#include <utility>

#include "numera/files/formats.h"

namespace numera::files {

::arrow::Result<std::vector<int>> find_columns(const ::arrow::Schema& schema,
                                               const std::vector<std::string>& columns) {
  std::vector<int> numbers;
  if (columns.empty()) {
    for (int i = 0; i < schema.num_fields(); ++i) numbers.push_back(i);
  }
  for (const std::string& name : columns) {
    const auto found = schema.GetAllFieldIndices(name);
    if (found.empty()) return ::arrow::Status::Invalid("there is no column '", name, "'");
    if (found.size() > 1) {
      return ::arrow::Status::Invalid(found.size(), " columns have the name '", name,
                                      "', so the name selects none");
    }
    if (std::ranges::find(numbers, found.front()) != numbers.end()) {
      return ::arrow::Status::Invalid("column '", name, "' is asked for twice");
    }
    numbers.push_back(found.front());
  }
  return numbers;
}

::arrow::Result<Stream> select_columns(const ::arrow::Schema& whole, const ReadOptions& options,
                                       std::function<BatchResult()> pull,
                                       std::optional<std::int64_t> rows) {
  ARROW_ASSIGN_OR_RAISE(auto columns, find_columns(whole, options.columns));
  ::arrow::FieldVector fields;
  for (const int column : columns) fields.push_back(whole.field(column));
  auto count = std::make_shared<std::int64_t>(0);
  auto next = [pull = std::move(pull), columns = std::move(columns), count]() -> BatchResult {
    ARROW_ASSIGN_OR_RAISE(const auto batch, pull());
    if (batch == nullptr) return nullptr;
    ++*count;
    return batch->SelectColumns(columns);
  };
  return Stream{::arrow::schema(std::move(fields), whole.metadata()), std::move(next), rows, count};
}

}  // namespace numera::files
