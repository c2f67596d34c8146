#pragma once

#include <arrow/result.h>

#include <string>
#include <vector>

#include "examples/document.h"

/// Trees of a few rows of the files in `data_folder`, and of small columns of types that no file
/// has. If the readable form of a column differs from the written form, it gets a second tree
/// "PLACE read". That form is converted to Arrow and back first.
::arrow::Result<std::vector<Shown>> encoding_trees(const std::string& data_folder);

/// The table of types: how a column of each type is written, and what it becomes when it is read
/// back as written.
::arrow::Result<Shown> encoding_types();
