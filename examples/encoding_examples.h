#pragma once

#include <arrow/result.h>

#include <string>
#include <vector>

#include "examples/document.h"

/// Trees of a few rows of the real files in `data_folder`, and of small columns of the types that
/// no file has. A column whose written form is not the one that is read gives a second tree, "PLACE
/// read", which is taken to Arrow and back first.
::arrow::Result<std::vector<Shown>> encoding_trees(const std::string& data_folder);

/// The table of the types: how a column of each is written, and what becomes of it when it is read
/// back as it was written.
::arrow::Result<Shown> encoding_types();
