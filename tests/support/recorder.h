#pragma once

/// \file
/// What the recording host's forwarding file tells the recorder.

#include <memory>
#include <string>
#include <string_view>

#include "numera/host/array.h"
#include "numera/host/string_array.h"

namespace numera::testing {

/// Counts a call of an operation that cannot fail.
void note(const char* operation) noexcept;
/// Counts a call of an operation that may fail, and throws where this one is to fail.
void note_throwing(const char* operation);
/// What the codec to UTF-8 is to be given for a text.
std::u16string codec_input(std::u16string_view text);
/// Lists a new array and passes it on.
hxArrayPtr created(const char* operation, hxArrayPtr array);
/// Lists a new string array object, and returns one that records what is done to it.
std::unique_ptr<hxStringArray> created(const char* operation,
                                       std::unique_ptr<hxStringArray> strings);

}  // namespace numera::testing
