#include "numera/core/util/table_error.h"

namespace numera::io::arrow::core::util {

TableErrorStatusDetail::TableErrorStatusDetail(TableErrorCode code, const std::string& columnName,
                                               int columnIndex)
    : error_code_(code), column_name_(columnName), column_index_(columnIndex) {}

TableErrorStatusDetail::~TableErrorStatusDetail() = default;

const char* TableErrorStatusDetail::type_id() const {
  return error_code_ == TableErrorCode::TypeError ? "TypeError" : "Internal";
}

std::string TableErrorStatusDetail::ToString() const { return type_id(); }

TableErrorCode TableErrorStatusDetail::error_code() const { return error_code_; }

std::string TableErrorStatusDetail::column_name() const { return column_name_; }

int TableErrorStatusDetail::column_index() const { return column_index_; }

}  // namespace numera::io::arrow::core::util
