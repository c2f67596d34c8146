#pragma once

/// \file
/// Texts of any content as printable UTF-8.

#include <cstddef>
#include <string>
#include <string_view>

namespace numera::extras::inspect {

/// The text in quotes, escaped. If it takes more than `max_columns` columns, it is cut and ends in
/// `"...`. It then takes at most `max_columns` columns, or five if that is more.
std::string quote(std::u16string_view text, size_t max_columns);

/// The same for a text that should be UTF-8, never cut. If it is not UTF-8, every byte beyond ASCII
/// is escaped as `\xFF`. No UTF-8 text yields that escape, so different texts stay different.
std::string quote(std::string_view text);

/// A field name: unchanged if it is an identifier, else in quotes.
std::string name_text(std::string_view name);

/// The columns that printable UTF-8 takes: one per code point.
size_t columns(std::string_view text);

}  // namespace numera::extras::inspect
