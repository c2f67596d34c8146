#include "numera/host/text_codec.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include "numera/host/memory/blocks.h"
#include "numera/host/memory/operations.h"
#include "numera/host/memory/utf_measure.h"
#include "numera/host/memory/utf_transcode.h"

namespace numera::host::memory {

void check_encoding(const char* encoding) {
  if (encoding == nullptr || std::strcmp(encoding, "UTF-8") != 0) {
    throw std::invalid_argument("Encoding is not UTF-8.");
  }
}

std::u16string decode_utf8(std::string_view text) {
  count_allocation();
  std::u16string units(measure_utf8(text), u'\0');
  const Transcoded result = utf8_to_utf16(text, units);
  if (result.fault != TextFault::None) throw hxCodecError(describe(result));
  return units;
}

std::string encode_utf8(const char16_t* text, size_t length) {
  count_allocation();
  const std::u16string_view units(text, length);
  std::string bytes(measure_utf16(units), '\0');
  const Transcoded result = utf16_to_utf8(units, bytes);
  if (result.fault != TextFault::None) throw hxCodecError(describe(result));
  return bytes;
}

}  // namespace numera::host::memory
