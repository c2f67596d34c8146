#pragma once

#include <arrow/array/array_base.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <string>

#include "tools/there_and_back.h"

namespace numera::tools {

/// What is known of a column's way to the host and back after the batches so far.
struct WayBack {
  std::string encoded_type = "-";
  std::int64_t nulls = 0;
  std::string casts;  ///< "cast price: decimal128(9, 2) to double, "
  std::shared_ptr<::arrow::DataType> returned;
  std::string failure;  ///< why it did not return as it went; empty so far

  /// Adds what became of `input`, behind `rows_before` rows. What came back is compared with what
  /// went: the input, or what it was cast to.
  void add(const std::shared_ptr<::arrow::Array>& input, const Trip& trip,
           std::int64_t rows_before);

  /// "equal", "equal as large_string", "cast to double, equal as double", or the failure.
  std::string text(const ::arrow::DataType& went) const;
};

/// Whether two types are the same but for nullability, metadata and the name of list elements.
bool same_type(const ::arrow::DataType& one, const ::arrow::DataType& other);

}  // namespace numera::tools
