#pragma once

/// \file
/// Finds runs of texts that are contiguous in memory and can be converted together. Measures the
/// UTF-8 length of each text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace numera::io::arrow::unicode {

/// A run of contiguous texts. It begins where the previous run ends; `end` is the index after its
/// last text.
struct TextRun {
  std::u16string_view units;
  size_t end;
  bool ascii;
};

/// Has no early exit, so that the compiler can vectorize it.
inline bool is_ascii(std::u16string_view text) {
  char16_t bits = 0;
  for (const char16_t unit : text) bits |= unit;
  return bits < 0x80;
}

/// \name Vectors of eight code units
/// @{
inline constexpr size_t kUnitLanes = 8;
using UnitLanes [[gnu::vector_size(2 * kUnitLanes)]] = std::uint16_t;
using CountLanes [[gnu::vector_size(2 * kUnitLanes)]] = std::int16_t;

inline UnitLanes load_units(const char16_t* units) {
  UnitLanes lanes;
  std::memcpy(&lanes, units, sizeof lanes);
  return lanes;
}

/// Loads the first `length` units and fills the rest with zeros. Units before `end` may be read.
inline UnitLanes load_some_units(const char16_t* units, size_t length, const char16_t* end) {
  constexpr UnitLanes kPlaces = {0, 1, 2, 3, 4, 5, 6, 7};
  UnitLanes lanes{};
  if (static_cast<size_t>(end - units) < kUnitLanes) {
    std::memcpy(&lanes, units, length * sizeof(char16_t));
    return lanes;
  }
  return kPlaces < static_cast<std::uint16_t>(length) ? load_units(units) : lanes;
}

/// Minus the number of UTF-8 bytes that each unit takes beyond its first byte. Each half of a
/// surrogate pair takes two bytes.
inline CountLanes minus_more_bytes(UnitLanes units) {
  return (units >= 0x80) + ((units >= 0x800) & ((units & 0xF800) != 0xD800));
}
/// @}

/// UTF-8 length in bytes of a valid text. Units between the end of the text and `end` may be read
/// but are not counted.
inline size_t utf8_length(std::u16string_view text, const char16_t* end) {
  constexpr size_t kMostUnits = 4000 * kUnitLanes;  // so that the sum of all lanes fits 16 bits
  size_t bytes = text.size();
  while (!text.empty()) {
    const char16_t* units = text.data();
    size_t left = std::min(text.size(), kMostUnits);
    text.remove_prefix(left);
    CountLanes more{};
    for (; left >= kUnitLanes; left -= kUnitLanes, units += kUnitLanes) {
      more -= minus_more_bytes(load_units(units));
    }
    if (left > 0) more -= minus_more_bytes(load_some_units(units, left, end));
    std::uint64_t words[2];
    std::memcpy(words, &more, sizeof words);
    bytes += (words[0] + words[1]) * 0x0001000100010001 >> 48;
  }
  return bytes;
}

/// Adds the run of texts [first, end) unless it is empty. On entry, `ends` holds the ends of these
/// texts as if they were ASCII; on return, their ends in UTF-8 bytes.
inline void add_run(std::vector<TextRun>& runs, std::u16string_view units, size_t first, size_t end,
                    std::uint64_t* ends) {
  if (first == end) return;
  const bool ascii = is_ascii(units);
  runs.push_back({units, end, ascii});
  if (ascii) return;
  const char16_t* text = units.data();
  std::uint64_t unit_end = ends[first];
  for (size_t i = first; i < end; ++i) {
    const auto length = static_cast<size_t>(ends[i + 1] - unit_end);
    unit_end = ends[i + 1];
    ends[i + 1] = ends[i] + utf8_length({text, length}, units.data() + units.size());
    text += length;
  }
}

/// Limits the length of a run so that its data stays in the processor cache.
inline constexpr std::ptrdiff_t kMostUnitsOfRun = std::ptrdiff_t{1} << 14;

/// Groups the texts that `text(i)` returns into runs and computes where the UTF-8 bytes of each
/// text end. `ends` has one entry more than there are texts; its first entry is 0.
template <class Text>
std::vector<TextRun> gather_runs(size_t count, const Text& text, std::uint64_t* ends) {
  std::vector<TextRun> runs;
  size_t first = 0;
  const char16_t* begin = nullptr;
  const char16_t* end = nullptr;
  std::uint64_t unit_end = 0;  // as if the run were ASCII
  for (size_t i = 0; i < count; ++i) {
    const std::u16string_view units = text(i);
    if (!units.empty()) {
      // A text that starts with a low surrogate starts a run: otherwise the surrogate could pair
      // with a high one at the end of the previous text.
      const bool low = (units.front() & 0xFC00) == 0xDC00;
      if (units.data() != end || end - begin >= kMostUnitsOfRun || low) {
        add_run(runs, {begin, end}, first, i, ends);
        first = i;
        begin = units.data();
        unit_end = ends[i];
      }
      end = units.data() + units.size();
    }
    unit_end += units.size();
    ends[i + 1] = unit_end;
  }
  add_run(runs, {begin, end}, first, count, ends);
  return runs;
}

}  // namespace numera::io::arrow::unicode
