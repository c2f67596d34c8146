// Nested values towards the host, beside the conversion of their leaves alone.

#include <arrow/builder.h>

#include <memory>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

constexpr std::int64_t kRows = 1'000'000;

hxArrayPtr array_to_host(const ArrayPtr& array) { return core::to_numera(array).ValueOrDie(); }

hxArrayPtr values_to_host(const std::shared_ptr<::arrow::ListArray>& lists) {
  return array_to_host(lists->values());
}

std::shared_ptr<::arrow::StructArray> numbers_and_texts() {
  ::arrow::Int64Builder numbers;
  for (std::int64_t i = 0; i < kRows; ++i) require(numbers.Append(i));
  return ::arrow::StructArray::Make({numbers.Finish().ValueOrDie(), texts(kRows, kAsciiText)},
                                    std::vector<std::string>{"number", "text"})
      .ValueOrDie();
}

std::vector<hxArrayPtr> fields_to_host(const std::shared_ptr<::arrow::StructArray>& array) {
  std::vector<hxArrayPtr> fields;
  for (const ArrayPtr& field : array->fields()) fields.push_back(array_to_host(field));
  return fields;
}

}  // namespace

void add_nested_rows() {
  add_row("to_host/list", [] { return lists(kRows, 8); }, array_to_host, values_to_host);
  add_row("to_host/struct", numbers_and_texts, array_to_host, fields_to_host);
}

}  // namespace numera::benchmarks
