#pragma once

#include <arrow/type.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/gauntlet/generate.h"

namespace numera::gauntlet {

/// A type, and how its arrays are made.
struct Subject {
  std::string name;
  std::shared_ptr<::arrow::DataType> type;
  Dictionaries dictionaries = Dictionaries::kEqual;
  bool sliced_children = false;
};

/// Every type without children that `to_numera` takes, in every unit; dictionaries of every index
/// type and of every kind of entries.
std::vector<Subject> plain_subjects();

/// Each of them in `wrap`, some with offsets of their own; for a map as its items, some as its
/// keys.
enum class Wrap : std::uint8_t { kList, kLargeList, kStruct, kMap };
std::vector<Subject> nested_subjects(Wrap wrap);

/// Nested types in one another.
std::vector<Subject> deep_subjects();

}  // namespace numera::gauntlet
