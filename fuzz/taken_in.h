#pragma once

#include <arrow/array/data.h>
#include <arrow/table.h>

#include <memory>

namespace numera::fuzz {

/// A table through the intake, and what that takes through the host and back: what is taken in is
/// valid, has no offsets, and keeps types and values where it is not cast.
void check_taken(const std::shared_ptr<::arrow::Table>& table, bool cast);

}  // namespace numera::fuzz
