#pragma once

#include <string>
#include <string_view>

namespace numera::io::arrow::core {

/// UTF-8 to UTF-16 by the host's strict codec, the one of `hxUTF8Decoder`. Any number of threads
/// may convert. Throws `hxCodecError`.
std::u16string Utf8ToUtf16(std::string_view utf8);

}  // namespace numera::io::arrow::core
