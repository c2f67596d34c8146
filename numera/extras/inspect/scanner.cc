#include "numera/extras/inspect/scanner.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "numera/extras/inspect/text.h"
#include "numera/host/text_codec.h"

namespace numera::extras::inspect {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kEndsOfToken = " \t\r\n[](){};,\"=";
constexpr std::string_view kWord =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

std::string in_quotes(std::string_view token) { return "\"" + std::string(token) + "\""; }

}  // namespace

bool Scanner::take(std::string_view token) {
  if (!text_.substr(position_).starts_with(token)) return false;
  position_ += token.size();
  return true;
}

void Scanner::expect(std::string_view token) {
  if (!take(token)) fail(in_quotes(token));
}

void Scanner::skip_blanks() {
  while (!at_end() && kBlanks.find(peek()) != kBlanks.npos) ++position_;
}

void Scanner::skip_space() {
  for (skip_blanks(); peek() == '\n'; skip_blanks()) ++position_;
}

std::string_view Scanner::take_word() {
  const size_t end = std::min(text_.find_first_not_of(kWord, position_), text_.size());
  const std::string_view word = text_.substr(position_, end - position_);
  position_ = end;
  return word;
}

std::string_view Scanner::take_token() {
  const size_t end = std::min(text_.find_first_of(kEndsOfToken, position_), text_.size());
  const std::string_view token = text_.substr(position_, end - position_);
  position_ = end;
  return token;
}

size_t Scanner::take_count() {
  size_t count = 0;
  const char* const begin = text_.data() + position_;
  const auto [end, error] = std::from_chars(begin, text_.data() + text_.size(), count);
  if (error == std::errc::invalid_argument) fail("a count");
  if (error != std::errc()) fail("a count within 64 bits");
  position_ += static_cast<size_t>(end - begin);
  return count;
}

unsigned Scanner::take_hexadecimal(int digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  unsigned value = 0;
  for (; digits > 0; --digits, ++position_) {
    const size_t digit = kDigits.find(peek());
    if (at_end() || digit == kDigits.npos) fail("a hexadecimal digit");
    value = value * 16 + static_cast<unsigned>(digit);
  }
  return value;
}

template <class OnUnit, class OnByte>
void Scanner::take_escape(OnUnit on_unit, OnByte on_byte) {
  const size_t start = position_++;
  if (take("\"")) {
    on_unit(u'"', start);
  } else if (take("\\")) {
    on_unit(u'\\', start);
  } else if (take("n")) {
    on_unit(u'\n', start);
  } else if (take("t")) {
    on_unit(u'\t', start);
  } else if (take("u")) {
    on_unit(static_cast<char16_t>(take_hexadecimal(4)), start);
  } else if (take("x")) {
    on_byte(static_cast<char>(take_hexadecimal(2)), start);
  } else {
    fail_at(start, R"(\", \\, \n, \t or \u with four digits)");
  }
}

template <class OnPlain, class OnUnit, class OnByte>
void Scanner::take_quoted(OnPlain on_plain, OnUnit on_unit, OnByte on_byte) {
  expect("\"");
  while (!take("\"")) {
    if (at_line_end()) fail("a quote that ends the text");
    if (peek() == '\\') {
      take_escape(on_unit, on_byte);
      continue;
    }
    const size_t end = std::min(text_.find_first_of("\"\\\n", position_), text_.size());
    on_plain(text_.substr(position_, end - position_));
    position_ = end;
  }
}

std::u16string Scanner::take_text() {
  std::u16string units;
  take_quoted(
      [&](std::string_view plain) {
        try {
          units += hxUTF8ToUTF16("UTF-8").convert(plain);
        } catch (const hxCodecError&) {
          fail("text in UTF-8");
        }
      },
      [&](char16_t unit, size_t) { units += unit; },
      [&](char, size_t start) { fail_at(start, "no byte of its own in a text"); });
  return units;
}

std::string Scanner::take_name() {
  const size_t begin = position_;
  if (peek() != '"') {
    std::string name(at_digit() ? "" : take_word());
    if (name.empty()) fail("a name");
    return name;
  }
  std::string name;
  take_quoted([&](std::string_view plain) { name += plain; },
              [&](char16_t unit, size_t start) {
                try {
                  name += hxUTF16ToUTF8("UTF-8").convert(&unit, 1);
                } catch (const hxCodecError&) {
                  fail_at(start, "a character");
                }
              },
              [&](char byte, size_t) { name += byte; });
  if (name.find('\0') != name.npos) fail_at(begin, "a name without NUL");
  return name;
}

void Scanner::end_line() {
  skip_blanks();
  if (!at_line_end()) fail("the end of the line");
  skip_blank_lines();
}

void Scanner::skip_blank_lines() {
  size_t line = position_;
  for (skip_blanks(); peek() == '\n'; skip_blanks()) line = ++position_;
  if (!at_end()) position_ = line;
}

size_t Scanner::indent() const {
  const std::string_view rest = text_.substr(position_);
  return std::min(rest.find_first_not_of(' '), rest.size());
}

std::string Scanner::found_at(size_t position) const {
  constexpr size_t kLongest = 20;
  const std::string_view rest = text_.substr(position);
  if (rest.empty()) return "the end of the text";
  if (rest[0] == '\n') return "the end of the line";
  size_t length = std::min(rest.find_first_of(kEndsOfToken, 1), rest.size());
  if (length > kLongest) {
    length = kLongest;
    while (length > 1 && (static_cast<unsigned char>(rest[length]) & 0xC0) == 0x80) --length;
  }
  return quote(rest.substr(0, length));
}

void Scanner::fail_at(size_t position, std::string_view expected) const {
  fail_at(position, found_at(position), expected);
}

void Scanner::fail_at(size_t position, std::string_view found, std::string_view expected) const {
  const std::string_view before = text_.substr(0, position);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const size_t column = columns(before.substr(before.rfind('\n') + 1)) + 1;
  throw std::invalid_argument("line " + std::to_string(line) + ", column " +
                              std::to_string(column) + ": found " + std::string(found) +
                              ", expected " + std::string(expected) + ".");
}

}  // namespace numera::extras::inspect
