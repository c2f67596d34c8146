#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace numera::tools {

/// The width that nothing exceeds.
inline constexpr size_t kUnlimited = std::numeric_limits<size_t>::max();

/// The length in bytes of the first character of a text that is not empty; 0 if it is not UTF-8.
size_t length_of_character(std::string_view text);

/// The text with "?" for every byte of a control character or of invalid UTF-8. A control character
/// could break the line or command the terminal.
std::string one_line(std::string_view text);

/// The number of cells that the text takes on a terminal: two for the wide characters of East Asia
/// and for emoji, none for combining marks, one for all others. The text is one that `one_line` has
/// made.
size_t width_of(std::string_view text);

/// The text as `one_line` makes it. A text that is wider than `width` is cut and ends with "…".
/// Reads no more of the text than it shows.
std::string fitted(std::string_view text, size_t width);

/// A line of more than 600 bytes, cut to its first 400 and last 200 bytes at whole characters. A
/// shorter line stays as it is.
std::string shortened(const std::string& line);

}  // namespace numera::tools
