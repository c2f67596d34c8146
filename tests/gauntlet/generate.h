#pragma once

/// \file
/// Arrow arrays of any type, every byte of them given by a seed.

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>

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

/// An array without offset. Slots below nulls hold values like the others, null lists and texts
/// elements. Every null count is unknown, but that of map entries and keys is 0.
std::shared_ptr<::arrow::ArrayData> generate(const std::shared_ptr<::arrow::DataType>& type,
                                             std::int64_t length, const Making& making);

}  // namespace numera::gauntlet
