/// \file
/// Compares the host's transcoder with an independent one: at every position within the words that
/// it reads, and with buffers of the exact size.

#include "numera/host/memory/utf_transcode.h"

#include <gtest/gtest.h>
#include <utf8.h>

#include <array>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "numera/host/memory/utf_measure.h"

namespace numera::host::memory {
namespace {

/// The result of a conversion up to the first fault of the text.
template <class Target>
struct Outcome {
  size_t read;
  Target written;
  bool valid;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

/// Converts between buffers of the exact size, so that a memory checker reports any access beyond
/// them.
template <class Target, class Text, class Convert>
Outcome<Target> convert_exactly(const Text& text, size_t room, Convert convert) {
  using Unit = typename Text::value_type;
  const std::vector<Unit> source(text.begin(), text.end());
  std::vector<typename Target::value_type> target(room);
  const Transcoded done =
      convert(std::basic_string_view<Unit>(source.data(), source.size()), std::span(target));
  return {done.read, Target(target.data(), done.written), done.fault == TextFault::None};
}

Outcome<std::u16string> ours(const std::string& text) {
  return convert_exactly<std::u16string>(text, measure_utf8(text), utf8_to_utf16);
}

Outcome<std::string> ours(const std::u16string& text) {
  return convert_exactly<std::string>(text, measure_utf16(text), utf16_to_utf8);
}

Outcome<std::u16string> judge(const std::string& text) {
  const auto fault = utf8::find_invalid(text.begin(), text.end());
  std::u16string units;
  utf8::unchecked::utf8to16(text.begin(), fault, std::back_inserter(units));
  return {static_cast<size_t>(fault - text.begin()), units, fault == text.end()};
}

std::string in_hexadecimal(const std::string& text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  for (const char byte : text) {
    digits += kDigits[static_cast<unsigned char>(byte) >> 4];
    digits += kDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return digits;
}

/// Every byte at the border of a range in the table of well-formed sequences, and its neighbours.
constexpr unsigned kSecondBytes[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F,
                                     0xA0, 0xBF, 0xC0, 0xC2, 0xE0, 0xF0, 0xFF};
constexpr unsigned kLaterBytes[] = {0x00, 0x7F, 0x80, 0x9F, 0xBF, 0xC0, 0xFF};

TEST(Utf8ToUtf16, AgreesOnSequencesOfFourBytesAtEveryPlace) {
  for (unsigned lead = 0x7F; lead <= 0xFF; ++lead) {
    for (const unsigned second : kSecondBytes) {
      for (const unsigned third : kLaterBytes) {
        for (const unsigned fourth : kLaterBytes) {
          std::string sequence;
          for (const unsigned byte : {lead, second, third, fourth}) {
            sequence += static_cast<char>(byte);
          }
          for (const size_t before : {size_t{0}, size_t{3}, size_t{7}, size_t{32}}) {
            for (const size_t behind : {size_t{0}, size_t{9}}) {
              const std::string text =
                  std::string(before, 'a') + sequence + std::string(behind, 'b');
              ASSERT_TRUE(ours(text) == judge(text)) << in_hexadecimal(text);
            }
          }
        }
      }
    }
  }
}

/// Sequences of all lengths, at both ends of their ranges.
const std::string kCharacters[] = {"\x7F",         "a",
                                   "\xC2\x80",     "\xDF\xBF",
                                   "\xE0\xA0\x80", "\xED\x9F\xBF",
                                   "\xEE\x80\x80", "\xEF\xBF\xBF",
                                   "\xE6\xBC\xA2", "\xF0\x90\x80\x80",
                                   "\xCE\x91",     "\xF4\x8F\xBF\xBF"};

/// Random runs of equal characters, some damaged. The sequence is the same in every test run.
class RandomTexts {
 public:
  size_t below(size_t limit) { return random_() % limit; }

  std::string utf8() {
    std::string text;
    for (size_t runs = below(6); runs > 0; --runs) {
      const std::string& character = kCharacters[below(std::size(kCharacters))];
      for (size_t count = below(20); count > 0; --count) text += character;
    }
    return text;
  }

  std::string damaged_utf8() {
    std::string text = utf8();
    if (!text.empty()) text[below(text.size())] = static_cast<char>(below(256));
    return text;
  }

 private:
  std::mt19937 random_{1};
};

TEST(Utf8ToUtf16, AgreesOnRandomRuns) {
  RandomTexts random;
  for (int round = 0; round < 100'000; ++round) {
    const std::string text = round % 2 == 0 ? random.utf8() : random.damaged_utf8();
    ASSERT_TRUE(ours(text) == judge(text)) << in_hexadecimal(text);
  }
}

TEST(Utf16ToUtf8, GivesBackRandomRuns) {
  RandomTexts random;
  for (int round = 0; round < 100'000; ++round) {
    const std::string text = random.utf8();
    const std::u16string units = judge(text).written;
    const Outcome<std::string> back = {units.size(), text, true};
    ASSERT_TRUE(ours(units) == back) << in_hexadecimal(text);
  }
}

TEST(Utf16ToUtf8, StopsAtAnUnpairedSurrogateAtEveryPlace) {
  for (const char16_t unpaired : {u'\xD800', u'\xDBFF', u'\xDC00', u'\xDFFF'}) {
    for (size_t before = 0; before < 20; ++before) {
      for (const char16_t filler : {u'a', u'\u03B1', u'\u6F22'}) {
        for (const size_t behind : {size_t{0}, size_t{9}}) {
          const std::u16string units =
              std::u16string(before, filler) + unpaired + std::u16string(behind, filler);
          const Outcome<std::string> done = ours(units);
          EXPECT_EQ(done.read, before);
          EXPECT_FALSE(done.valid);
        }
      }
    }
  }
}

TEST(Measure, CountsWhatTextsTakeInTheOtherEncoding) {
  RandomTexts random;
  for (int round = 0; round < 20'000; ++round) {
    const std::string text = random.utf8();
    const std::u16string units = judge(text).written;
    ASSERT_EQ(measure_utf8(text), units.size()) << in_hexadecimal(text);
    ASSERT_EQ(measure_utf16(units), text.size()) << in_hexadecimal(text);
  }
  const std::string many(1'000'000, '\xF0');  // each byte counts as two units
  EXPECT_EQ(measure_utf8(many), 2'000'000U);
  EXPECT_EQ(measure_utf16(std::u16string(100'000, u'\u6F22')), 300'000U);
}

TEST(Measure, TellsBordersWithinCharacters) {
  const std::string chunk = "a\xCE\xB1\xF0\x9F\x98\x80z";
  struct Row {
    std::vector<std::int32_t> offsets;
    Borders borders;
    std::vector<size_t> begins;
  };
  const Row rows[] = {
      {{7, 8, 10, 14, 15}, Borders::BetweenCharacters, {100, 101, 102, 104, 105}},
      {{7, 7, 15, 15}, Borders::BetweenCharacters, {100, 100, 105, 105}},
      {{7, 9, 15}, Borders::WithinCharacters, {100, 102, 105}},
      {{7, 12, 12, 15}, Borders::WithinCharacters, {100, 104, 104, 105}},
  };
  for (const Row& row : rows) {
    std::vector<size_t> begins(row.offsets.size());
    EXPECT_EQ(measure_texts(std::span<const std::int32_t>(row.offsets), chunk, 100, begins.data()),
              row.borders);
    EXPECT_EQ(begins, row.begins);
  }
}

TEST(IsAscii, SeesAByteAboveAtEveryPlace) {
  for (const size_t length : {size_t{0}, size_t{1}, size_t{1023}, size_t{1024}, size_t{2050}}) {
    EXPECT_TRUE(is_ascii(std::string(length, '\x7F')));
    for (size_t place = 0; place < length; ++place) {
      std::string text(length, 'a');
      text[place] = '\x80';
      ASSERT_FALSE(is_ascii(text)) << length << ", " << place;
    }
  }
}

}  // namespace
}  // namespace numera::host::memory
