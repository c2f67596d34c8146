#pragma once

/// \file
/// What the recording host's forwarding file tells the recorder.

#include <memory>

#include "numera/host/array.h"
#include "numera/host/string_array.h"

namespace numera::testing {

/// Counts a call of an operation that cannot fail.
void note(const char* operation) noexcept;
/// Counts a call of an operation that may fail, and throws where this one is to fail.
void note_throwing(const char* operation);
/// Lists a new array and passes it on.
hxArrayPtr created(const char* operation, hxArrayPtr array);
/// Lists a new string array object, and returns one that records what is done to it.
std::unique_ptr<hxStringArray> created(const char* operation,
                                       std::unique_ptr<hxStringArray> strings);

}  // namespace numera::testing
