#pragma once

#include <arrow/result.h>

#include "examples/document.h"

/// The table of what a column of each type copies and borrows, derived from the addresses of the
/// memory before and after its conversion.
::arrow::Result<Shown> lifetimes_by_type();
