#pragma once

/// \file
/// Measures the length of texts in the other encoding before they are converted.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace numera::host::memory {

bool is_ascii(std::string_view text) noexcept;

/// UTF-16 code units of a valid text. For an invalid text, at least as many as any valid part of it
/// has.
size_t measure_utf8(std::string_view text) noexcept;

/// UTF-8 bytes of a valid text. For an invalid text, at least the bytes of its valid beginning.
size_t measure_utf16(std::u16string_view text) noexcept;

/// Whether every text of a chunk begins at a character boundary.
enum class Borders { BetweenCharacters, WithinCharacters };

/// Measures contiguous texts. Text k is bytes [offsets[k], offsets[k + 1]); `chunk` starts with
/// byte offsets[0]. Sets `begins[k]` to `base` plus the number of code units before text k.
/// `begins` has as many entries as `offsets`, at least one.
template <class Offset>
Borders measure_texts(std::span<const Offset> offsets, std::string_view chunk, size_t base,
                      size_t* begins) noexcept;

}  // namespace numera::host::memory
