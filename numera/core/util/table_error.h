#pragma once

/// \file
/// Tells which column of a table failed to convert.

#include <arrow/status.h>

#include <cstdint>
#include <memory>
#include <string>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::io::arrow::core::util {

/// The kind of status that a column failed with.
enum class TableErrorCode : std::int32_t {
  TypeError = 0,  ///< a type error: with another type the column may convert
  Internal = 1    ///< every other code
};

/// Names the column of a table that failed to convert. It is attached to the status of the failure.
/// Read it with `dynamic_cast`, or with `static_cast` after a check of `type_id()`. The status owns
/// the detail, and copies of the status share it. It never changes, so any thread may read it.
///
/// \code
///   const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
///   if (detail != nullptr) std::cerr << "column " << detail->column_name() << ": ";
/// \endcode
class NUMERA_EXPORT TableErrorStatusDetail : public ::arrow::StatusDetail {
 public:
  /// `columnName` is copied; `columnIndex` counts from 0.
  TableErrorStatusDetail(TableErrorCode code, const std::string& columnName, int columnIndex);
  /// For use in your own status. There is no assignment, because details are shared.
  TableErrorStatusDetail(const TableErrorStatusDetail&) = default;
  /// The moved-from detail may only be destroyed.
  TableErrorStatusDetail(TableErrorStatusDetail&&) = default;
  TableErrorStatusDetail& operator=(const TableErrorStatusDetail&) = delete;
  TableErrorStatusDetail& operator=(TableErrorStatusDetail&&) = delete;
  ~TableErrorStatusDetail() override;

  /// "TypeError" for `TableErrorCode::TypeError`, else "Internal". The text has static lifetime.
  const char* type_id() const override;
  /// The text of `type_id()`.
  std::string ToString() const override;

  /// `TypeError` if the status of the column is a type error, `Internal` for every other code.
  TableErrorCode error_code() const;
  /// The column name in the table. It may be empty, and several columns may have the same name.
  std::string column_name() const;
  /// The column index in the table, from 0. It distinguishes columns of the same name.
  int column_index() const;

 private:
  TableErrorCode error_code_;
  std::string column_name_;
  int column_index_;
};

/// Returns `status`, which is not OK, with the name and the 0-based index of the failing column as
/// its `TableErrorStatusDetail`.
inline ::arrow::Status in_column(const ::arrow::Status& status, const std::string& name,
                                 int index) {
  const auto code = status.IsTypeError() ? TableErrorCode::TypeError : TableErrorCode::Internal;
  return status.WithDetail(std::make_shared<TableErrorStatusDetail>(code, name, index));
}

}  // namespace numera::io::arrow::core::util
