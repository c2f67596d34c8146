#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace numera::tools {

/// Rows of cells, printed in columns two blanks apart. The first row is the heading. Each cell
/// is printed as `one_line` makes it.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> heading) : rows_{std::move(heading)} {}

  /// `cells` has as many entries as the heading.
  void add(std::vector<std::string> cells);
  /// The heading is bold where `colour` is set.
  void print(std::ostream& out, bool colour = false) const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

/// 1234567 as "1,234,567".
std::string grouped(long long number);

}  // namespace numera::tools
