#include <arrow/api.h>
#include <arrow/json/from_string.h>

#include <iostream>
#include <utility>

#include "numera/extras/convert.h"
#include "numera/extras/inspect/inspect.h"

int main() {
  using namespace numera::extras;
  auto column = arrow::json::ArrayFromJSONString(arrow::float64(), "[20.5, null, 22]").ValueOrDie();

  auto host = convert_to_host(column);  // checked and copied into new host arrays
  if (!host.ok()) return 1;
  std::cout << print(host->get()) << '\n';

  auto back = convert_to_arrow(std::move(*host));  // not copied: back owns the host value
  if (!back.ok()) return 1;
  std::cout << "back in Arrow: " << ((*back)->Equals(column) ? "equal" : "different") << '\n';
}
