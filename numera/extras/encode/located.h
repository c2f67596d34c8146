#pragma once

/// \file
/// Host values with their paths, for error messages.

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::extras::encoding {

/// The value that is made readable, or a value inside it. The parents are a linked list on the
/// stack, so a parent must outlive its children. The text of the path is built only for an error.
struct Located {
  const hxArray* value = nullptr;
  const Located* parent = nullptr;  ///< null: the outermost value
  const char* field = nullptr;      ///< null: a cell or an element of its parent
  size_t index = 0;  ///< of the cell, the element, or the parent's element that has the field
  /// The names of the columns if this is the columns of a table. Paths inside begin with a column.
  const std::string* column_names = nullptr;
};

/// The path, such as `.Data.FieldData{1}` or `Column 'price' (index 2).Data`; "Value" for the
/// outermost value.
std::string path_of(const Located& place);

/// \name Failures: the place, what was found, what was expected
/// @{
::arrow::Status wrong_class(const Located& place, std::string_view expected);
::arrow::Status invalid(const Located& place, std::string_view found, std::string_view expected);
/// Puts the path of the place before the message of a status from other code.
::arrow::Status at(const Located& place, const ::arrow::Status& status);
/// @}

/// Whether the value is a struct, or an object that is not a string array.
bool has_fields(const hxArray* value);

/// \name Access
/// TypeError if the container has another class or no such field, or if the slot is empty. `index`
/// must be in range.
/// @{
::arrow::Result<Located> field(const Located& record, size_t index, const char* name);
::arrow::Result<Located> field(Located&& record, size_t index, const char* name) = delete;
::arrow::Result<Located> cell(const Located& cells, size_t index);
::arrow::Result<Located> cell(Located&& cells, size_t index) = delete;
/// @}

/// \name Checks
/// @{
::arrow::Status check_class(const Located& place, hxClassID class_id, std::string_view expected);
/// Numbers, real and not sparse.
::arrow::Status check_numbers(const Located& place);
/// Numbers of one class, real and not sparse.
::arrow::Status check_numbers(const Located& place, hxClassID class_id, std::string_view expected);
::arrow::Status check_one_element(const Located& place);
/// @}

/// The text of a char array as UTF-8. TypeError for another class, Invalid if the text is not valid
/// UTF-16.
::arrow::Result<std::string> text_of(const Located& place);

}  // namespace numera::extras::encoding
