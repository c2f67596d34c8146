#pragma once

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/array/util.h>
#include <arrow/chunked_array.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {

inline std::shared_ptr<::arrow::ChunkedArray> Chunks(::arrow::ArrayVector chunks) {
  return std::make_shared<::arrow::ChunkedArray>(std::move(chunks));
}

/// A dictionary array whose codes and validity bitmap are in blocks of exactly their size.
inline std::shared_ptr<::arrow::Array> RawDictionary(const std::vector<std::int8_t>& codes,
                                                     const std::vector<std::uint8_t>& validity,
                                                     const std::string& values,
                                                     std::int64_t offset = 0) {
  auto data = ::arrow::ArrayData::Make(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()),
                                       static_cast<std::int64_t>(codes.size()) - offset,
                                       {ExactBuffer(validity), ExactBuffer(codes)},
                                       ::arrow::kUnknownNullCount, offset);
  data->dictionary = ArrowArray(::arrow::utf8(), values)->data();
  return ::arrow::MakeArray(data);
}

}  // namespace numera::testing
