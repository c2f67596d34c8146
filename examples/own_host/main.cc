#include <arrow/api.h>
#include <arrow/json/from_string.h>

#include <iostream>

#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"

// Takes a table to this host and back. Nothing of the in-memory host is linked.
int main() {
  using namespace numera::io::arrow::core;
  const auto column = [](const std::shared_ptr<arrow::DataType>& type, const char* json) {
    return arrow::json::ArrayFromJSONString(type, json).ValueOrDie();
  };
  const auto table = arrow::Table::Make(
      arrow::schema(
          {arrow::field("name", arrow::large_utf8()), arrow::field("height", arrow::float64())}),
      {column(arrow::large_utf8(), R"(["Ada", null])"), column(arrow::float64(), "[1.65, 1.8]")});

  const hxArrayPtr written = to_numera(table).ValueOrDie();
  std::cout << numera::extras::print(written.get()) << '\n';

  const hxArrayPtr readable = numera::extras::make_readable(written.get()).ValueOrDie();
  const auto back = to_arrow_table(readable.get()).ValueOrDie();
  std::cout << "back in Arrow: " << (back->Equals(*table) ? "equal" : "different") << '\n';
}
