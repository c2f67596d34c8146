#pragma once

#include <string>

#include "numera/host/array.h"

namespace numera::tools {

/// The fields of an element of a struct array as a JSON object. Each value is null where its slot
/// is empty, else an object of its class, its size and its elements in storage order, as
/// docs/program.md states it.
std::string host_fields_json(const hxArray* structs, size_t element);

}  // namespace numera::tools
