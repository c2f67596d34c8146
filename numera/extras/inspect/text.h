#pragma once

/// \file
/// Texts of any content as printable UTF-8.

#include <cstddef>
#include <string>
#include <string_view>

namespace numera::extras::inspect {

/// The text in quotes, escaped. Where it takes more than `max_columns` columns it is cut and ends
/// in `"...`, so that it takes no more, or five columns where `max_columns` is less.
std::string quote(std::u16string_view text, size_t max_columns);

/// The same for a text that ought to be UTF-8 and is never cut. Where it is not, every byte beyond
/// ASCII is escaped as `\xFF`, which no text that is UTF-8 shows: different texts stay different.
std::string quote(std::string_view text);

/// A field name: as it stands where it is an identifier, else in quotes.
std::string name_text(std::string_view name);

/// Columns that printable UTF-8 takes: its code points.
size_t columns(std::string_view text);

}  // namespace numera::extras::inspect
