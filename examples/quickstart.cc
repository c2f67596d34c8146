#include <arrow/api.h>
#include <arrow/json/from_string.h>

#include <iostream>

#include "numera/extras/inspect/inspect.h"
#include "numera/numera.h"

int main() {
  using namespace numera::io::arrow::core;
  auto column = arrow::json::ArrayFromJSONString(arrow::float64(), "[20.5, null, 22]").ValueOrDie();

  auto host = to_numera(column);  // copied: every value lies in new host arrays
  if (!host.ok()) return 1;
  std::cout << numera::extras::print(host->get()) << '\n';

  auto back = to_arrow<arrow::Array>(host->get());  // borrowed: host must outlive back
  if (!back.ok()) return 1;
  std::cout << "back in Arrow: " << ((*back)->Equals(column) ? "equal" : "different") << '\n';
}
