#pragma once

/// \file
/// The state of one column's intake, and the recursion that all rules share.

#include <arrow/array/data.h>
#include <arrow/memory_pool.h>
#include <arrow/result.h>
#include <arrow/status.h>
#include <arrow/type.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "numera/extras/intake/intake.h"

namespace numera::extras::intake {

using Data = std::shared_ptr<::arrow::ArrayData>;
using DataResult = ::arrow::Result<Data>;

struct TakenDictionary {
  Data values;
  /// The new code of every value that there was, -1 for a null; empty where codes stay.
  std::vector<std::int64_t> codes;
  std::vector<IntakeCast> casts;  ///< with paths from the dictionary on
};

struct Work {
  ::arrow::MemoryPool* pool = ::arrow::default_memory_pool();
  bool cast = false;
  bool views = false;
  /// What 32-bit offsets can reach; smaller in tests.
  std::int64_t narrow_limit = std::numeric_limits<std::int32_t>::max();
  /// Casts give 64-bit offsets: 32 bits were not enough for a chunk of the column.
  bool wide = false;
  /// Set where a cast failed that would go through with `wide`.
  bool needs_wide = false;
  /// Casts of the first chunk; those of the others are the same.
  bool records = true;
  std::vector<IntakeCast> casts;
  /// Dictionaries taken in so far, by the input: chunks that share one still do afterwards.
  std::unordered_map<const ::arrow::ArrayData*, TakenDictionary> dictionaries;

  void note(const std::string& path, std::shared_ptr<::arrow::DataType> from,
            std::shared_ptr<::arrow::DataType> to) {
    if (records) casts.push_back({path, std::move(from), std::move(to)});
  }
  /// OK where `count` bytes or elements are within reach of the offsets of a cast.
  ::arrow::Status check_reach(std::int64_t count) {
    if (wide || count <= narrow_limit) return ::arrow::Status::OK();
    needs_wide = true;
    return ::arrow::Status::CapacityError(count, " exceed 32-bit offsets");
  }
};

/// How a rule takes in one array of its types, with a valid offset and length.
using Take = DataResult (*)(Work& work, const std::string& path, const ::arrow::ArrayData& array);

/// Takes in an array that `check_type` and `ValidateFull` found good: by the rule of its type.
DataResult take_in_data(Work& work, const std::string& path, const ::arrow::ArrayData& array);

}  // namespace numera::extras::intake
