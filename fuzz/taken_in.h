#pragma once

#include <arrow/array/data.h>
#include <arrow/table.h>

#include <memory>

namespace numera::fuzz {

/// Passes a table through the intake, and the result through the host and back. The result must be
/// valid, have no offsets, and keep types and values unless it was cast.
void check_taken(const std::shared_ptr<::arrow::Table>& table, bool cast);

}  // namespace numera::fuzz
