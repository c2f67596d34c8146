#pragma once

/// \file
/// What texts take in the other encoding, counted before they are converted.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace numera::host::memory {

bool is_ascii(std::string_view text) noexcept;

/// UTF-16 code units of a valid text; of any other at least those of each valid piece of it.
size_t measure_utf8(std::string_view text) noexcept;

/// UTF-8 bytes of a valid text; of any other at least those of its valid beginning.
size_t measure_utf16(std::u16string_view text) noexcept;

/// Whether every text of a chunk begins where a character does.
enum class Borders { BetweenCharacters, WithinCharacters };

/// Measures texts that lie back to back, text k in bytes [offsets[k], offsets[k + 1]) of which
/// `chunk` begins with the first: `begins[k]` becomes the code units before text k, counted from
/// `base` on. `begins` has as many entries as `offsets`, at least one.
template <class Offset>
Borders measure_texts(std::span<const Offset> offsets, std::string_view chunk, size_t base,
                      size_t* begins) noexcept;

}  // namespace numera::host::memory
