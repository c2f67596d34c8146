#include "numera/host/memory/utf_transcode.h"

namespace numera::host::memory {

std::string describe(const Transcoded& result) {
  const auto says = [&result](const char* what, const char* place) {
    return std::string(what) + " at " + place + " " + std::to_string(result.read) + ".";
  };
  switch (result.fault) {
    case TextFault::None:
      break;
    case TextFault::TruncatedSequence:
      return says("Truncated sequence", "byte");
    case TextFault::InvalidByte:
      return says("Invalid lead byte", "byte");
    case TextFault::OverlongSequence:
      return says("Overlong sequence", "byte");
    case TextFault::SurrogateCodePoint:
      return says("Surrogate code point", "byte");
    case TextFault::CodePointTooLarge:
      return says("Code point above U+10FFFF", "byte");
    case TextFault::UnpairedHighSurrogate:
      return says("Unpaired high surrogate", "code unit");
    case TextFault::UnpairedLowSurrogate:
      return says("Unpaired low surrogate", "code unit");
  }
  return "No fault.";
}

}  // namespace numera::host::memory
