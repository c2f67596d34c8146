#pragma once

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <memory>
#include <vector>

namespace numera::gauntlet {

/// A chunked array as plain data, before Arrow makes an object of it.
struct Column {
  std::shared_ptr<::arrow::DataType> type;
  std::vector<std::shared_ptr<::arrow::ArrayData>> chunks;

  std::int64_t length() const {
    std::int64_t sum = 0;
    for (const auto& chunk : chunks) sum += chunk->length;
    return sum;
  }
};

}  // namespace numera::gauntlet
