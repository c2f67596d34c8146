#include "numera/core/utf8_to_utf16.h"

#include "numera/host/string_array.h"

namespace numera::io::arrow::core {

std::u16string Utf8ToUtf16(std::string_view utf8) { return hxUTF8Decoder().convert(utf8); }

}  // namespace numera::io::arrow::core
