#include "numera/extras/inspect/listed_shape.h"

#include <string>

namespace numera::extras::inspect {
namespace {

Dims rows_and_columns(const Listed& listed) {
  if (listed.count == 0) return {0, 0};
  if (listed.row_ends.empty()) return {1, listed.count};
  return {listed.row_ends.size() + 1, listed.row_ends.front()};
}

std::string elements(size_t count) {
  return std::to_string(count) + (count == 1 ? " element" : " elements");
}

}  // namespace

void check_count(size_t count, size_t expected, const Scanner& scanner) {
  if (count == expected) return;
  scanner.fail_at(scanner.position(), elements(count), elements(expected));
}

Dims shape_of(const Listed& listed, const std::optional<Dims>& given, const Scanner& scanner) {
  Dims dims = given ? *given : rows_and_columns(listed);
  if (given) check_count(listed.count, checked_element_count(dims, scanner), scanner);
  if (listed.count == 0) return dims;
  size_t row_start = 0;
  const auto check_row = [&](size_t row_end) {
    const size_t length = row_end - row_start;
    if (given ? row_end % dims[1] == 0 : length == dims[1]) {
      row_start = row_end;
      return;
    }
    scanner.fail_at(scanner.position(), "a row of " + elements(length),
                    "rows of " + elements(dims[1]));
  };
  for (const size_t row_end : listed.row_ends) check_row(row_end);
  check_row(listed.count);
  return dims;
}

}  // namespace numera::extras::inspect
