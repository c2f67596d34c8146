#pragma once

/// \file
/// Which column of a table a conversion failed on.

#include <arrow/status.h>

#include <cstdint>
#include <string>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::io::arrow::core::util {

/// What kind of status a column failed with.
enum class TableErrorCode : std::int32_t {
  TypeError = 0,  ///< a type error: as another type, the column may pass
  Internal = 1    ///< every other code
};

/// Names the column that a conversion of a table failed on; attached to the column's status. Read
/// it back with `dynamic_cast` or, after a look at `type_id()`, `static_cast`. The status owns it,
/// and copies of the status share it; it never changes, so any thread may read it.
///
/// \code
///   const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
///   if (detail != nullptr) std::cerr << "column " << detail->column_name() << ": ";
/// \endcode
class NUMERA_EXPORT TableErrorStatusDetail : public ::arrow::StatusDetail {
 public:
  /// `columnName` is copied; `columnIndex` counts from 0.
  TableErrorStatusDetail(TableErrorCode code, const std::string& columnName, int columnIndex);
  /// For a detail of a status of one's own; assignment is missing, as details are shared.
  TableErrorStatusDetail(const TableErrorStatusDetail&) = default;
  /// The other one may then be destroyed, but not asked.
  TableErrorStatusDetail(TableErrorStatusDetail&&) = default;
  TableErrorStatusDetail& operator=(const TableErrorStatusDetail&) = delete;
  TableErrorStatusDetail& operator=(TableErrorStatusDetail&&) = delete;
  ~TableErrorStatusDetail() override;

  /// "TypeError" for `TableErrorCode::TypeError`, else "Internal"; a text that lives forever.
  const char* type_id() const override;
  /// The text of `type_id()`.
  std::string ToString() const override;

  /// `TypeError` where the column's status is a type error, `Internal` for every other code.
  TableErrorCode error_code() const;
  /// The name in the table, which need not be the only one of its kind and may be empty.
  std::string column_name() const;
  /// The place in the table, from 0: what tells columns of one name apart.
  int column_index() const;

 private:
  TableErrorCode error_code_;
  std::string column_name_;
  int column_index_;
};

}  // namespace numera::io::arrow::core::util
