#pragma once

/// \file
/// Encoded arrays of every type that `to_arrow` reads, every byte of them given by a seed.

#include <string>
#include <vector>

#include "numera/host/array.h"
#include "tests/gauntlet/generate.h"

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
  std::string type;                       ///< what "Type" says
  hxClassID class_id = hxClassID::Int64;  ///< of numbers, times and codes
  std::string units;                      ///< "Units", and where it is a datetime the zone is "UTC"
  std::vector<HostType> children;
};

/// Every type, in every class and unit, and each of them in a list and in a struct.
std::vector<HostType> host_types();

enum class Shape : std::uint8_t { kColumn, kRow, kPages };

struct HostMaking {
  Nulls nulls = Nulls::kNoBitmap;
  Memory memory = Memory::kExact;  ///< of bitmaps, truth values and the bytes of texts
  Shape shape = Shape::kColumn;    ///< of everything but these
  std::uint64_t seed = 0;
};

hxArrayPtr make_host_value(const HostType& type, size_t length, const HostMaking& making);

}  // namespace numera::gauntlet
