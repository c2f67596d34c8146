#pragma once

#include <arrow/type.h>

#include <string>

namespace numera::tools {

/// The name of a type for headings: "list<string>" instead of "list<item: string>", "date32",
/// "dictionary<string>", "timestamp[us, Asia/Tokyo]", the name of an extension type. Others have
/// Arrow's name.
std::string short_type(const ::arrow::DataType& type);

}  // namespace numera::tools
