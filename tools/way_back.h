#pragma once

#include <arrow/array/array_base.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/there_and_back.h"

namespace numera::tools {

/// The result for one column after the batches so far.
struct WayBack {
  std::string encoded_type = "-";
  std::int64_t nulls = 0;
  std::vector<std::string> casts;  ///< "price: decimal128(9, 2) to double"
  std::shared_ptr<::arrow::DataType> returned;
  std::string failure;    ///< why the column failed; empty if it did not
  bool left_out = false;  ///< the failure is one of the type, and columns of such types are skipped

  bool checked = true;  ///< what came back was compared with the input

  /// Adds the result for `input`, which starts at row `rows_before`. With `check`, compares what
  /// came back with the input, or with what the input was cast to.
  void add(const std::shared_ptr<::arrow::Array>& input, const Trip& trip, std::int64_t rows_before,
           bool check);

  /// "equal", "equal as large_string", "cast to double, equal as double", "left out" or the
  /// failure. "not checked" stands for "equal" if nothing was compared.
  std::string text(const ::arrow::DataType& went) const;
  /// The result for a column of these rows and chunks as a JSON object.
  std::string json(const ::arrow::Field& column, std::int64_t rows, std::int64_t chunks) const;
};

/// Whether two types are equal except for nullability, metadata and the names of list elements.
bool same_type(const ::arrow::DataType& one, const ::arrow::DataType& other);

}  // namespace numera::tools
