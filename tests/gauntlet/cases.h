#pragma once

/// \file
/// All combinations of the properties that a column can have.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/gauntlet/column.h"
#include "tests/gauntlet/subjects.h"

namespace numera::gauntlet {

struct Slice {
  const char* name;
  std::vector<std::int64_t> starts;  ///< each start cuts a slice from the slice before
};

struct Chunks {
  const char* name;
  std::vector<std::int64_t> extra;  ///< the extra length of each chunk; negative: an empty chunk
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

/// Only every `stride()`-th case runs. The environment variable NUMERA_GAUNTLET sets the stride;
/// with the default a test takes a second. A prime above 7 reaches every value of every dimension.
std::uint64_t stride();

/// Calls `run` for every `stride()`-th case and returns the number of calls. Stops early after a
/// few test failures.
std::uint64_t for_each_case(const std::vector<Subject>& subjects,
                            const std::function<void(const Case&)>& run);

}  // namespace numera::gauntlet
