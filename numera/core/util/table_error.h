#pragma once

#include <arrow/status.h>

#include <cstdint>
#include <string>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::io::arrow::core::util {

enum class TableErrorCode : std::int32_t { TypeError = 0, Internal = 1 };

/// Names the column that a table conversion towards the host failed on; attached to the column's
/// status. Read it back with `dynamic_cast` or, after a look at `type_id()`, `static_cast`.
class NUMERA_EXPORT TableErrorStatusDetail : public ::arrow::StatusDetail {
 public:
  TableErrorStatusDetail(TableErrorCode code, const std::string& columnName, int columnIndex);
  TableErrorStatusDetail(const TableErrorStatusDetail&) = default;
  TableErrorStatusDetail(TableErrorStatusDetail&&) = default;
  TableErrorStatusDetail& operator=(const TableErrorStatusDetail&) = delete;
  TableErrorStatusDetail& operator=(TableErrorStatusDetail&&) = delete;
  ~TableErrorStatusDetail() override;

  /// "TypeError" for `TableErrorCode::TypeError`, else "Internal".
  const char* type_id() const override;
  /// The text of `type_id()`.
  std::string ToString() const override;

  /// `TypeError` where the column's status is a type error, `Internal` for every other code.
  TableErrorCode error_code() const;
  std::string column_name() const;
  int column_index() const;  ///< 0-based

 private:
  TableErrorCode error_code_;
  std::string column_name_;
  int column_index_;
};

}  // namespace numera::io::arrow::core::util
