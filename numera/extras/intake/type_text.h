#pragma once

#include <arrow/type.h>

#include <string>

namespace numera::extras::intake {

/// The text form of a type; of one that nests deeply only its name, since Arrow recurses without a
/// limit to print it.
std::string type_text(const ::arrow::DataType& type);

}  // namespace numera::extras::intake
