#pragma once

#include <arrow/type.h>

#include <string>

namespace numera::extras::intake {

/// The text form of a type. Only its name if the type nests deeply or has a null pointer in place
/// of an inner type: Arrow prints types by unlimited recursion.
std::string type_text(const ::arrow::DataType& type);

}  // namespace numera::extras::intake
