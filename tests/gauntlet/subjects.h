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

/// Every type without children that `to_numera` accepts, in every unit. Dictionaries of every index
/// type and every kind.
std::vector<Subject> plain_subjects();

/// Each of them inside `wrap`, some with sliced children. Maps have them as items and some of them
/// as keys.
enum class Wrap : std::uint8_t { kList, kLargeList, kStruct, kMap };
std::vector<Subject> nested_subjects(Wrap wrap);

/// Nested types inside nested types.
std::vector<Subject> deep_subjects();

}  // namespace numera::gauntlet
