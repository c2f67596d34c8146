#pragma once

/// \file
/// The shape of what a literal lists.

#include <cstddef>
#include <optional>
#include <vector>

#include "numera/extras/inspect/head_reader.h"
#include "numera/extras/inspect/scanner.h"

namespace numera::extras::inspect {

/// Counts what is listed between two brackets, and where ";" ends a row.
struct Listed {
  size_t count = 0;
  std::vector<size_t> row_ends = {};

  void end_row() { row_ends.push_back(count); }
};

/// The dimensions that `given` states, or else the rows and columns that are listed; 0x0 where
/// nothing is. Fails where the count is another than that of the dimensions, where a row does not
/// end at a multiple of their second one, or where the rows differ in length. The scanner stands at
/// the end of the list.
Dims shape_of(const Listed& listed, const std::optional<Dims>& given, const Scanner& scanner);

/// Fails where a list has another number of elements than it should.
void check_count(size_t count, size_t expected, const Scanner& scanner);

}  // namespace numera::extras::inspect
