#include "numera/extras/inspect/text.h"

#include <algorithm>
#include <limits>

#include "numera/host/text_codec.h"

namespace numera::extras::inspect {
namespace {

bool is_high_surrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool is_low_surrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
bool is_control(char16_t unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); }

// Code units of the first character of a text.
size_t character_length(std::u16string_view text) {
  const bool pair = text.size() > 1 && is_high_surrogate(text[0]) && is_low_surrogate(text[1]);
  return pair ? 2 : 1;
}

void append_hexadecimal(std::string& out, unsigned value, int digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) out += kDigits[(value >> shift) & 0xF];
}

// Appends one character, escaped for use between quotes.
void append_character(std::string& out, std::u16string_view character) {
  const char16_t unit = character[0];
  const bool lone_surrogate =
      character.size() == 1 && (is_high_surrogate(unit) || is_low_surrogate(unit));
  if (unit == u'"' || unit == u'\\') {
    out += {'\\', static_cast<char>(unit)};
  } else if (unit == u'\n') {
    out += "\\n";
  } else if (unit == u'\t') {
    out += "\\t";
  } else if (is_control(unit) || lone_surrogate) {
    out += "\\u";
    append_hexadecimal(out, unit, 4);
  } else {
    out += hxUTF16ToUTF8("UTF-8").convert(character.data(), character.size());
  }
}

bool is_identifier(std::string_view name) {
  const auto is_letter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  return !name.empty() && !is_digit(name[0]) &&
         std::all_of(name.begin(), name.end(), [&](char c) { return is_letter(c) || is_digit(c); });
}

}  // namespace

std::string quote(std::u16string_view text, size_t max_columns) {
  constexpr std::string_view kCut = "\"...";
  std::string out = "\"";
  size_t used = 1;
  size_t cut = 1;  // the largest size of `out` at which `kCut` still fits
  while (!text.empty()) {
    const size_t before = out.size();
    const size_t length = character_length(text);
    append_character(out, text.substr(0, length));
    text.remove_prefix(length);
    used += columns(std::string_view(out).substr(before));
    if (used >= max_columns) break;
    if (max_columns - used >= kCut.size()) cut = out.size();
  }
  if (text.empty() && used < max_columns) return out + "\"";
  out.resize(cut);
  return out.append(kCut);
}

std::string quote(std::string_view text) {
  constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();
  try {
    return quote(hxUTF8ToUTF16("UTF-8").convert(text), kNoLimit);
  } catch (const hxCodecError&) {
    std::string out = "\"";
    for (const char byte : text) {
      const char16_t unit = static_cast<unsigned char>(byte);
      if (unit < 0x80) {
        append_character(out, std::u16string_view(&unit, 1));
      } else {
        out += "\\x";
        append_hexadecimal(out, unit, 2);
      }
    }
    return out + "\"";
  }
}

std::string name_text(std::string_view name) {
  return is_identifier(name) ? std::string(name) : quote(name);
}

size_t columns(std::string_view text) {
  const auto starts_code_point = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
  };
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), starts_code_point));
}

}  // namespace numera::extras::inspect
