#pragma once

/// \file
/// The parts of the values of a case, for Arrow and for the host: validity, bits, texts, codes and
/// offsets. The seed determines all of them.

#include <cstdint>
#include <string>
#include <vector>

#include "tests/gauntlet/memory.h"

namespace numera::gauntlet {

enum class Nulls : std::uint8_t {
  kNoBitmap,
  kNone,  ///< a bitmap in which every slot is valid
  kEveryThird,
  kAll,
};

inline constexpr Nulls kNulls[] = {Nulls::kNoBitmap, Nulls::kNone, Nulls::kEveryThird, Nulls::kAll};

const char* name_of(Nulls nulls);

/// The dictionaries of the chunks of a column.
enum class Dictionaries : std::uint8_t {
  kEqual,
  kDiffering,   ///< each chunk shares a third of its texts with the next
  kUnused,      ///< entries that no code uses, and one text twice
  kOutOfRange,  ///< null slots hold codes beyond the dictionary
  kNoEntries,   ///< an empty dictionary
  kSliced,      ///< the dictionary is a slice
};

struct Making {
  Nulls nulls = Nulls::kNoBitmap;
  Memory memory = Memory::kExact;
  Dictionaries dictionaries = Dictionaries::kEqual;
  bool sliced_children = false;  ///< children of lists, structs and maps have offsets of their own
  int chunk = 0;
  std::uint64_t seed = 0;
};

/// The same settings for child `number` of a value, with a seed of its own.
Making child_making(const Making& making, std::uint64_t number);

/// A pseudo-random number for a seed and an index.
std::uint64_t mix(std::uint64_t seed, std::uint64_t i);

/// A bitmap for `length` slots; empty if there is to be none.
Bytes validity_bits(std::int64_t length, const Making& making);

/// `length` random bits, padded with random bits to whole bytes.
Bytes random_bits(std::int64_t length, const Making& making);

/// Texts of 0 to 12 bytes; a character has 1 to 4 bytes.
std::vector<std::string> random_texts(std::int64_t length, const Making& making);

/// The texts of a dictionary.
std::vector<std::string> categories(const Making& making);

/// Code `i` for a dictionary of `entries` entries. It is out of range if there are no entries, and
/// for null slots with `kOutOfRange`.
std::uint64_t random_code(const Making& making, std::int64_t i, std::uint64_t entries);

/// The offsets of lists. The first list starts after two elements that belong to no list.
std::vector<std::int64_t> random_starts(std::int64_t length, const Making& making);

}  // namespace numera::gauntlet
