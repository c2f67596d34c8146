#pragma once

/// \file
/// What the values of a case are made of, those of Arrow and those of the host alike: validity,
/// bits, texts, codes and offsets, every one of them given by a seed.

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
  kUnused,      ///< entries that no code names, and one text twice
  kOutOfRange,  ///< codes beyond the dictionary under null slots
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

/// The same for child `number` of a value.
Making child_making(const Making& making, std::uint64_t number);

/// A number for each seed and index.
std::uint64_t mix(std::uint64_t seed, std::uint64_t i);

/// A bitmap of so many slots; no bytes where there is to be none.
Bytes validity_bits(std::int64_t length, const Making& making);

/// `length` bits, and others up to the end of the last byte.
Bytes random_bits(std::int64_t length, const Making& making);

/// Texts of none to a dozen bytes, of one to four bytes a character.
std::vector<std::string> random_texts(std::int64_t length, const Making& making);

/// The texts of a dictionary.
std::vector<std::string> categories(const Making& making);

/// Code `i` into so many entries; where there are none, or under nulls on demand, one beyond them.
std::uint64_t random_code(const Making& making, std::int64_t i, std::uint64_t entries);

/// Where lists begin and end: the first behind two elements that belong to none.
std::vector<std::int64_t> random_starts(std::int64_t length, const Making& making);

}  // namespace numera::gauntlet
