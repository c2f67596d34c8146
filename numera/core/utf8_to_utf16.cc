#include "numera/core/utf8_to_utf16.h"

#include "numera/host/text_codec.h"

namespace numera::io::arrow::core {

std::u16string Utf8ToUtf16(std::string_view utf8) {
  static const hxUTF8ToUTF16 codec("UTF-8");
  return codec.convert(utf8);
}

}  // namespace numera::io::arrow::core
