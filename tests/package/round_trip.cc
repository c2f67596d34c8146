// A table of weather readings goes from Arrow to the host and back.

#include <arrow/json/from_string.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <cstdlib>
#include <iostream>
#include <memory>

#include "numera/extras/inspect/inspect.h"
#include "numera/numera.h"

namespace core = numera::io::arrow::core;

static arrow::Result<std::shared_ptr<arrow::Table>> make_readings() {
  const auto column = [](const std::shared_ptr<arrow::DataType>& type, const char* json) {
    return arrow::json::ArrayFromJSONString(type, json);
  };
  ARROW_ASSIGN_OR_RAISE(auto station, column(arrow::int32(), "[10637, 10384, 10513]"));
  ARROW_ASSIGN_OR_RAISE(auto celsius, column(arrow::float64(), "[21.5, null, 19.25]"));
  ARROW_ASSIGN_OR_RAISE(auto rain, column(arrow::boolean(), "[false, true, true]"));
  return arrow::Table::Make(arrow::schema({arrow::field("station", arrow::int32()),
                                           arrow::field("celsius", arrow::float64()),
                                           arrow::field("rain", arrow::boolean())}),
                            {station, celsius, rain});
}

static arrow::Status run() {
  ARROW_ASSIGN_OR_RAISE(const auto readings, make_readings());
  std::cout << "An Arrow table:\n\n" << readings->ToString() << "\n";

  // The host value owns copies of all data. The Arrow table is no longer needed.
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr encoded, core::to_numera(readings));
  std::cout << "The same on the host:\n\n" << numera::extras::print(encoded.get()) << "\n";

  // The Arrow table borrows the host's memory: `encoded` must outlive it.
  ARROW_ASSIGN_OR_RAISE(const auto back, core::to_arrow_table(encoded.get()));
  ARROW_RETURN_NOT_OK(back->ValidateFull());
  if (!back->Equals(*readings)) return arrow::Status::Invalid("the tables differ");
  std::cout << "Back in Arrow, without a copy, the tables are equal.\n";
  return arrow::Status::OK();
}

int main() {
  const arrow::Status status = run();
  if (!status.ok()) std::cerr << status.ToString() << "\n";
  return status.ok() ? EXIT_SUCCESS : EXIT_FAILURE;
}
