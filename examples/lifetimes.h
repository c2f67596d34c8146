#pragma once

#include <arrow/result.h>

#include "examples/document.h"

/// The table of what the conversion of each type copies and what it borrows. It compares the memory
/// addresses before and after.
::arrow::Result<Shown> lifetimes_by_type();
