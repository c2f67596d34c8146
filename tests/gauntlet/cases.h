#pragma once

/// \file
/// The product of everything that a column can be.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/gauntlet/column.h"
#include "tests/gauntlet/subjects.h"

namespace numera::gauntlet {

struct Slice {
  const char* name;
  std::vector<std::int64_t> starts;  ///< one slice of the slice before a start
};

struct Chunks {
  const char* name;
  std::vector<std::int64_t> extra;  ///< a chunk for each, so much longer; below 0: without elements
};

struct Case {
  const Subject* subject;
  std::int64_t length;
  Nulls nulls;
  const Slice* slice;
  const Chunks* chunks;
  Memory memory;
  std::uint64_t number;

  /// "int32 / length 65 / nulls every 3rd / slice at 7 / 2 chunks / exact buffers"
  std::string name() const;
  Column column() const;
};

/// One case of so many is run: the number in the environment variable NUMERA_GAUNTLET, without
/// which a test takes a second. A prime above 7 meets every value of every dimension.
std::uint64_t stride();

/// Calls `run` with every `stride()`-th case and returns how many there were. Ends early once a
/// few tests have failed.
std::uint64_t for_each_case(const std::vector<Subject>& subjects,
                            const std::function<void(const Case&)>& run);

}  // namespace numera::gauntlet
