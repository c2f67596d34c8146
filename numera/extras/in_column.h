#pragma once

/// \file
/// Errors of table columns.

#include <arrow/status.h>

#include <memory>
#include <string>

#include "numera/core/util/table_error.h"

namespace numera::extras {

/// Adds the name and the 0-based index of the failing column to a status.
inline ::arrow::Status in_column(const ::arrow::Status& status, const std::string& name,
                                 int index) {
  using io::arrow::core::util::TableErrorCode;
  using io::arrow::core::util::TableErrorStatusDetail;
  const auto code = status.IsTypeError() ? TableErrorCode::TypeError : TableErrorCode::Internal;
  return status.WithDetail(std::make_shared<TableErrorStatusDetail>(code, name, index));
}

}  // namespace numera::extras
