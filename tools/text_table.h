#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
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

/// The text with "?" for every byte of a control character or of invalid UTF-8. A control character
/// could break the line or command the terminal.
std::string one_line(std::string_view text);

/// A line of more than 600 bytes, cut to its first 400 and last 200 bytes at whole characters. A
/// shorter line stays as it is.
std::string shortened(const std::string& line);

/// 1234567 as "1,234,567".
std::string grouped(long long number);

}  // namespace numera::tools
