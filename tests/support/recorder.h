#pragma once

/// \file
/// The calls from the recording host's forwarding file to the recorder.

#include <memory>
#include <string>
#include <string_view>

#include "numera/host/array.h"
#include "numera/host/string_array.h"

namespace numera::testing {

/// Counts a call of an operation that cannot fail.
void note(const char* operation) noexcept;
/// Counts a call of an operation that may fail. Throws if this call is to fail.
void note_throwing(const char* operation);
/// The text that the UTF-8 encoder receives in place of `text`.
std::u16string codec_input(std::u16string_view text);
/// Records a new array and returns it.
hxArrayPtr created(const char* operation, hxArrayPtr array);
/// Records a new string array object. Returns a wrapper that records the calls on it.
std::unique_ptr<hxStringArray> created(const char* operation,
                                       std::unique_ptr<hxStringArray> strings);

}  // namespace numera::testing
