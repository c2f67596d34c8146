#pragma once

#include <arrow/csv/options.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <memory>
#include <string_view>

#include "numera/files/read.h"

namespace numera::files {

/// The delimiter that splits the first line into most columns. `start` is the start of the file.
/// Invalid if only tabs split the next lines.
::arrow::Result<char> find_delimiter(std::string_view start);

/// How the fields of columns of texts are read: only an empty field without quotation marks is
/// null, so that "NA" stays a text.
::arrow::csv::ConvertOptions fields_of_texts(const ReadOptions& options);

/// How the fields of all other columns are read: Arrow's spellings of null, such as "NA", are null.
::arrow::csv::ConvertOptions fields_of_others(const ReadOptions& options);

/// A type that the fields of both types have. Both are types that Arrow infers.
std::shared_ptr<::arrow::DataType> common_type(const std::shared_ptr<::arrow::DataType>& one,
                                               const std::shared_ptr<::arrow::DataType>& other);

}  // namespace numera::files
