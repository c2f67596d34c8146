#pragma once

/// \file
/// The status of a table column that failed: its message and its detail name the column. All
/// conversions of extras make it with these functions, and so may callers of the core, whose
/// message does not name the column.

#include <arrow/status.h>

#include <string>

#include "numera/arrow_version.h"
#include "numera/core/util/table_error.h"

namespace numera::extras {

/// "Column 'price' (index 1)": what each message about a column begins with, and the first part of
/// a path inside it.
inline std::string column_text(const std::string& name, int index) {
  return "Column '" + name + "' (index " + std::to_string(index) + ")";
}

/// `status`, which is not OK, as the status of this column. Its message begins with `column_text`,
/// which is added unless it is there. A `TableErrorStatusDetail` replaces its detail.
inline ::arrow::Status status_of_column(const ::arrow::Status& status, const std::string& name,
                                        int index) {
  const std::string column = column_text(name, index);
  const bool is_named = status.message().starts_with(column);
  const ::arrow::Status named =
      is_named ? status : status.WithMessage(column, ": ", status.message());
  return io::arrow::core::util::in_column(named, name, index);
}

}  // namespace numera::extras
