#pragma once

/// \file
/// Values with the place where they stand, and failures that name it.

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::extras::encoding {

/// A value below the one that is encoded. The chain of parents lies on the stack and is written out
/// for a failure only, so a parent must outlive its children.
struct Located {
  const hxArray* value = nullptr;
  const Located* parent = nullptr;  ///< null: the value that is encoded
  const char* field = nullptr;      ///< null: a cell or an element of its parent
  size_t index = 0;                 ///< of the cell or element, or of the element with the field
};

/// `.Columns(2).Data.FieldData{1}`, or "Value" for the value that is encoded.
std::string path_of(const Located& place);

/// \name Failures: the place, what was found, what was expected
/// @{
::arrow::Status wrong_class(const Located& place, std::string_view expected);
::arrow::Status invalid(const Located& place, std::string_view found, std::string_view expected);
/// What another part of the system reports about a place.
::arrow::Status at(const Located& place, const ::arrow::Status& status);
/// @}

/// A struct or an object that is no string array.
bool has_fields(const hxArray* value);

/// \name Access
/// TypeError where the record or cell array is of another class, has no such field, or the slot is
/// empty. The element exists.
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

/// The text of a char array as UTF-8. TypeError for another class, Invalid where it is not UTF-16.
::arrow::Result<std::string> text_of(const Located& place);

}  // namespace numera::extras::encoding
