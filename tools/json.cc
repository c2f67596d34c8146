#include "tools/json.h"

#include <algorithm>

#include "tools/characters.h"

namespace numera::tools {
namespace {

std::string escaped(unsigned char code) {
  constexpr std::string_view kHex = "0123456789abcdef";
  switch (code) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    default:
      return {'\\', 'u', '0', '0', kHex[code >> 4U], kHex[code & 15U]};
  }
}

bool is_escaped(unsigned char byte) {
  return byte < 0x20U || byte == 0x7FU || byte == '"' || byte == '\\';
}

/// Control characters beyond ASCII, from U+0080 to U+009F.
bool is_c1(std::string_view character) {
  return character.starts_with('\xC2') && static_cast<unsigned char>(character.back()) < 0xA0U;
}

}  // namespace

std::string json_text(std::string_view text) {
  std::string json = "\"";
  while (!text.empty()) {
    const size_t length = length_of_character(text);
    const std::string_view character = text.substr(0, std::max<size_t>(length, 1));
    const auto last = static_cast<unsigned char>(character.back());
    if (length == 0) {
      json += "\\ufffd";
    } else if (length == 1 ? is_escaped(last) : is_c1(character)) {
      json += escaped(last);
    } else {
      json += character;
    }
    text.remove_prefix(character.size());
  }
  return json + '"';
}

std::string json_text_or_null(const std::optional<std::string>& text) {
  return text ? json_text(*text) : "null";
}

std::string json_number(std::optional<std::int64_t> number) {
  return number ? std::to_string(*number) : "null";
}

std::string json_array(const std::vector<std::string>& values) {
  std::string json = "[";
  for (const std::string& value : values) {
    if (json.size() > 1) json += ',';
    json += value;
  }
  return json + ']';
}

std::string json_object(const std::vector<std::pair<std::string_view, std::string>>& members) {
  std::string json = "{";
  for (const auto& [name, value] : members) {
    if (json.size() > 1) json += ',';
    json += json_text(name) + ':' + value;
  }
  return json + '}';
}

}  // namespace numera::tools
