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
  /// The new code per old value, -1 for a null. Empty if the codes do not change.
  std::vector<std::int64_t> codes;
  std::vector<IntakeCast> casts;  ///< their paths start at the dictionary
};

struct Work {
  ::arrow::MemoryPool* pool = ::arrow::default_memory_pool();
  bool cast = false;
  bool views = false;
  /// The largest 32-bit offset; smaller in tests.
  std::int64_t narrow_limit = std::numeric_limits<std::int32_t>::max();
  /// Whether casts give 64-bit offsets, because 32 bits were not enough for a chunk of the column.
  bool wide = false;
  /// Set if a cast failed that would succeed with `wide`.
  bool needs_wide = false;
  /// Whether `note` records casts. Only for the first chunk: the other chunks have the same casts.
  bool records = true;
  std::vector<IntakeCast> casts;
  /// Dictionaries taken in so far, by input dictionary. Chunks with the same dictionary share its
  /// result.
  std::unordered_map<const ::arrow::ArrayData*, TakenDictionary> dictionaries;

  void note(const std::string& path, std::shared_ptr<::arrow::DataType> from,
            std::shared_ptr<::arrow::DataType> to) {
    if (records) casts.push_back({path, std::move(from), std::move(to)});
  }
  /// OK if the offsets of a cast can address `count` bytes or elements.
  ::arrow::Status check_reach(std::int64_t count) {
    if (wide || count <= narrow_limit) return ::arrow::Status::OK();
    needs_wide = true;
    return ::arrow::Status::CapacityError(count, " exceed 32-bit offsets");
  }
};

/// Takes in one array of the rule's type, with a valid offset and length.
using Take = DataResult (*)(Work& work, const std::string& path, const ::arrow::ArrayData& array);

/// Takes in an array by the rule of its type. `check_type` and `ValidateFull` have passed before.
DataResult take_in_data(Work& work, const std::string& path, const ::arrow::ArrayData& array);

}  // namespace numera::extras::intake
