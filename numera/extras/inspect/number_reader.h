#pragma once

/// \file
/// Numbers and truth values out of their texts.

#include <cstdint>
#include <string_view>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// Writes the element that `number_text` gives as `token`, both parts of a complex one; false where
/// the class has no such element. NaN gives the quiet NaN without a payload.
bool read_number(std::string_view token, hxClassID class_id, bool complex, std::uint8_t* element);

}  // namespace numera::extras::inspect
