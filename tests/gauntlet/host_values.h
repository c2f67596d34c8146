#pragma once

/// \file
/// Encoded arrays of every type that `to_arrow` reads. They share their parts with the Arrow
/// arrays.

#include <cstdint>
#include <string>
#include <vector>

#include "numera/host/array.h"
#include "tests/gauntlet/making.h"

namespace numera::gauntlet {

enum class HostKind : std::uint8_t {
  kNumeric,
  kLogical,
  kDatetime,
  kDuration,
  kText,
  kCategorical,
  kList,
  kStruct,
};

struct HostType {
  std::string name;
  HostKind kind;
  std::string type;                       ///< the text of "Type"
  hxClassID class_id = hxClassID::Int64;  ///< the class of numbers, times and codes
  std::string units;                      ///< "Units"; the zone of a datetime is "UTC" or ""
  std::vector<HostType> children;
  Dictionaries dictionaries = Dictionaries::kEqual;
};

/// Every type in every class and unit, plain, in a list and in a struct.
std::vector<HostType> host_types();

enum class Shape : std::uint8_t { kColumn, kRow, kPages };

/// `memory` applies to bitmaps, truth values and the bytes of texts, `shape` to everything else.
/// `dictionaries` comes from the type.
struct HostMaking : Making {
  Shape shape = Shape::kColumn;
};

hxArrayPtr make_host_value(const HostType& type, size_t length, const HostMaking& making);

}  // namespace numera::gauntlet
