/// \file
/// Text conversions in both directions, compared with ICU: converted texts, refused texts, and the
/// row that an error names. Also compares the host's bulk operation with setting one text after
/// another.

#include <arrow/array/array_binary.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>

#include "numera/core/types/string.h"
#include "numera/host/message_id_exception.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/encoded_texts.h"
#include "tests/support/icu.h"

namespace numera::io::arrow {
namespace {

using namespace numera::testing;
using core::FillHostStrings;

/// Tests that take minutes without optimization run in full only in release builds.
#ifdef NDEBUG
constexpr unsigned kSampledEvery = 1;
#else
constexpr unsigned kSampledEvery = 61;
#endif

using MaybeUtf16 = std::optional<std::u16string>;
using MaybeUtf8 = std::optional<std::string>;

/// Encodes any value as if it were a code point, even a surrogate.
std::string EncodeUtf8(char32_t value) {
  const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
  const auto next = [&](int shift) { return byte(0x80 | (value >> shift & 0x3F)); };
  if (value < 0x80) return {byte(value)};
  if (value < 0x800) return {byte(0xC0 | value >> 6), next(0)};
  if (value < 0x10000) return {byte(0xE0 | value >> 12), next(6), next(0)};
  return {byte(0xF0 | value >> 18), next(12), next(6), next(0)};
}

std::u16string EncodeUtf16(char32_t value) {
  if (value < 0x10000) return {static_cast<char16_t>(value)};
  return {static_cast<char16_t>(0xD7C0 + (value >> 10)),
          static_cast<char16_t>(0xDC00 + (value & 0x3FF))};
}

/// Converts texts to UTF-16, each in three ways that must agree.
class Utf8Comparison {
 public:
  void check(std::string_view text) { check_plain(text, check_bulk(text)); }

  const std::string& differences() const { return differences_; }

 private:
  using Offsets = std::span<const std::int64_t>;

  MaybeUtf16 check_bulk(std::string_view text) {
    const MaybeUtf16 expected = IcuToUtf16(text);
    const std::array<std::int64_t, 2> offsets = {0, static_cast<std::int64_t>(text.size())};
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    compare("bulk", text, store_->assign_utf8(0, Offsets(offsets), bytes), expected);
    return expected;
  }

  void check_plain(std::string_view text, const MaybeUtf16& expected) {
    const std::array<std::int64_t, 2> offsets = {0, static_cast<std::int64_t>(text.size())};
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    compare("plain", text, store_->hxStringArray::assign_utf8(0, Offsets(offsets), bytes),
            expected);
  }

  void compare(const char* way, std::string_view text, std::optional<size_t> refused,
               const MaybeUtf16& expected) {
    const bool same = expected ? !refused && store_->element(0) == *expected : refused == size_t{0};
    if (same || differences_.size() > 1000) return;
    differences_ += std::string(way) + " of";
    for (const char byte : text) {
      differences_ += " " + std::to_string(static_cast<unsigned char>(byte));
    }
    differences_ += "\n";
  }

  std::unique_ptr<hxStringArray> store_ = hxMakeStringArray(Dims{1, 1});
  std::string differences_;
};

TEST(Utf8AgainstIcu, AgreesOnEveryCodePoint) {
  Utf8Comparison comparison;
  for (char32_t value = 0; value <= 0x120000; ++value) comparison.check(EncodeUtf8(value));
  EXPECT_EQ(comparison.differences(), "");
}

TEST(Utf8AgainstIcu, AgreesOnEveryTextOfTwoBytes) {
  Utf8Comparison comparison;
  for (unsigned value = 0; value < 0x10000; ++value) {
    const char text[] = {static_cast<char>(value >> 8), static_cast<char>(value)};
    comparison.check({text, 2});
  }
  EXPECT_EQ(comparison.differences(), "");
}

TEST(Utf8AgainstIcu, AgreesOnTextsOfThreeBytes) {
  Utf8Comparison comparison;
  for (unsigned value = 0; value < 0x1000000; value += kSampledEvery) {
    const char text[] = {static_cast<char>(value >> 16), static_cast<char>(value >> 8),
                         static_cast<char>(value)};
    comparison.check({text, 3});
  }
  EXPECT_EQ(comparison.differences(), "");
}

/// Random texts with sequences of all lengths, some damaged. They are the same in every run.
class RandomTexts {
 public:
  explicit RandomTexts(unsigned seed) : random_(seed) {}

  size_t below(size_t limit) { return random_() % limit; }

  char32_t code_point() {
    constexpr char32_t kEnds[] = {0x80, 0x80, 0x800, 0x10000, 0x110000};
    return static_cast<char32_t>(below(kEnds[below(5)]));
  }

  std::string utf8() {
    std::string text;
    for (size_t left = below(12); left > 0; --left) text += EncodeUtf8(code_point());
    if (below(4) == 0) text += std::string(below(40), 'a');
    if (below(2) == 0) damage(text, static_cast<char>(below(256)));
    return text;
  }

  std::u16string utf16() {
    std::u16string text;
    for (size_t left = below(12); left > 0; --left) text += EncodeUtf16(code_point());
    if (below(4) == 0) text += std::u16string(below(40), u'a');
    if (below(2) == 0) damage(text, static_cast<char16_t>(0xD700 + below(0xA00)));
    return text;
  }

 private:
  template <class Text>
  void damage(Text& text, typename Text::value_type unit) {
    const size_t place = below(text.size() + 1);
    if (place == text.size() || below(3) == 0) {
      text.insert(place, 1, unit);
    } else if (below(2) == 0) {
      text[place] = unit;
    } else {
      text.erase(place, 1);
    }
  }

  std::mt19937_64 random_;
};

TEST(Utf8AgainstIcu, AgreesOnRandomTexts) {
  Utf8Comparison comparison;
  RandomTexts random(1);
  for (unsigned i = 0; i < 1'000'000; i += kSampledEvery) comparison.check(random.utf8());
  EXPECT_EQ(comparison.differences(), "");
}

/// A string array of a host without a bulk operation.
class PlainStrings final : public hxStringArray {
 public:
  explicit PlainStrings(size_t size) : dims_{size, 1}, texts_(size) {}
  std::span<const size_t> dimensions() const override { return dims_; }
  size_t size() const override { return texts_.size(); }
  std::optional<std::u16string_view> element(size_t i) const override { return texts_[i]; }
  void set(size_t i, std::u16string_view text) override { texts_.at(i) = text; }
  void set_missing(size_t i) override { texts_.at(i).clear(); }

 private:
  Dims dims_;
  std::vector<std::u16string> texts_;
};

TEST(Utf8AgainstIcu, BlamesTheSameRowOfRandomColumns) {
  constexpr size_t kRows = 8;
  RandomTexts random(2);
  int refused = 0;
  for (int round = 0; round < 20'000; ++round) {
    SCOPED_TRACE(round);
    std::string bytes;
    std::vector<std::int32_t> offsets = {0};
    std::vector<MaybeUtf16> expected;
    const bool damaged = random.below(2) == 0;
    while (expected.size() < kRows) {
      std::string text = random.utf8();
      if (!damaged && !IcuToUtf16(text)) continue;
      bytes += text;
      offsets.push_back(static_cast<std::int32_t>(bytes.size()));
      expected.push_back(IcuToUtf16(text));
    }
    const auto array = NarrowArray(::arrow::utf8(), bytes, offsets);
    const auto& texts = static_cast<const ::arrow::StringArray&>(*array);
    const auto bulk = hxMakeStringArray(Dims{kRows, 1});
    PlainStrings plain(kRows);

    const ::arrow::Status bulk_status = FillHostStrings(texts, *bulk, 0);
    const ::arrow::Status plain_status = FillHostStrings(texts, plain, 0);

    const auto first = std::find(expected.begin(), expected.end(), std::nullopt);
    if (first != expected.end()) {
      const auto wanted = ::arrow::Status::Invalid(
          "Could not convert string in row ", first - expected.begin(), " to UTF-16 string.\n");
      ASSERT_EQ(bulk_status, wanted);
      ASSERT_EQ(plain_status, wanted);
      ++refused;
      continue;
    }
    ASSERT_EQ(bulk_status, ::arrow::Status::OK());
    ASSERT_EQ(plain_status, ::arrow::Status::OK());
    for (size_t i = 0; i < kRows; ++i) {
      ASSERT_EQ(bulk->element(i), expected[i]) << i;
      ASSERT_EQ(plain.element(i), expected[i]) << i;
    }
  }
  EXPECT_GT(refused, 5'000);
  EXPECT_LT(refused, 15'000);
}

/// The result of the gateway for a column: all bytes and offsets, or the number of the refused
/// element and the reason.
struct GatewayResult {
  std::string bytes;
  std::vector<std::uint64_t> offsets;
  std::uint64_t refused = 0;
  std::string refusal;

  friend bool operator==(const GatewayResult&, const GatewayResult&) = default;
};

GatewayResult Gateway(const std::vector<std::u16string>& texts) {
  const hxArrayPtr strings = Strings({texts.begin(), texts.end()});
  const hxArray* inputs[] = {strings.get()};
  hxArrayPtr outputs[2];
  try {
    unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);
  } catch (const hxTaggedException<unicode::UnrecognizedUTF16Character>& error) {
    return {.bytes = {},
            .offsets = {},
            .refused = std::get<0>(error.arguments()[0]),
            .refusal = std::get<1>(error.arguments()[1])};
  }
  const auto* const bytes = static_cast<const char*>(hxGetData(outputs[0].get()));
  const auto* const offsets = static_cast<const std::uint64_t*>(hxGetData(outputs[1].get()));
  return {.bytes = {bytes, bytes + hxGetNumberOfElements(outputs[0].get())},
          .offsets = {offsets, offsets + hxGetNumberOfElements(outputs[1].get())},
          .refused = 0,
          .refusal = {}};
}

/// The codec's message for a text with an unpaired surrogate. ICU gives less detail.
std::string Refusal(std::u16string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const bool high = text[i] >= 0xD800 && text[i] < 0xDC00;
    const bool low = text[i] >= 0xDC00 && text[i] < 0xE000;
    const bool low_follows = i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (low) return "Unpaired low surrogate at code unit " + std::to_string(i) + ".";
    if (high && !low_follows) {
      return "Unpaired high surrogate at code unit " + std::to_string(i) + ".";
    }
    if (high) ++i;
  }
  return "";
}

GatewayResult IcuGateway(const std::vector<std::u16string>& texts) {
  GatewayResult result{.bytes = {}, .offsets = {0}, .refused = 0, .refusal = {}};
  for (size_t i = 0; i < texts.size(); ++i) {
    const MaybeUtf8 bytes = IcuToUtf8(texts[i]);
    if (!bytes) {
      return {.bytes = {}, .offsets = {}, .refused = i + 1, .refusal = Refusal(texts[i])};
    }
    result.bytes += *bytes;
    result.offsets.push_back(result.bytes.size());
  }
  result.bytes += '\0';
  return result;
}

TEST(Utf16AgainstIcu, AgreesOnEveryCodePoint) {
  std::vector<std::u16string> texts;
  for (char32_t value = 0; value <= 0x10FFFF; ++value) {
    if (value < 0xD800 || value > 0xDFFF) texts.push_back(EncodeUtf16(value));
  }
  EXPECT_TRUE(Gateway(texts) == IcuGateway(texts));
}

TEST(Utf16AgainstIcu, AgreesOnEveryPairAroundTheSurrogates) {
  std::vector<char16_t> units = {0, 0x41, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF};
  for (char16_t unit = 0xD800; unit < 0xE000; unit = static_cast<char16_t>(unit + 37)) {
    units.push_back(unit);
  }
  for (const char16_t first : units) {
    for (const char16_t second : units) {
      const std::vector<std::u16string> texts = {{first, second}};
      ASSERT_TRUE(Gateway(texts) == IcuGateway(texts)) << +first << " " << +second;
    }
  }
}

TEST(Utf16AgainstIcu, RefusesEverySurrogateAlone) {
  for (char16_t unit = 0xD800; unit < 0xE000; ++unit) {
    ASSERT_EQ(Gateway({u"a", {unit}}).refused, 2U) << +unit;
    ASSERT_EQ(IcuToUtf8(std::u16string(1, unit)), std::nullopt) << +unit;
  }
}

TEST(Utf16AgainstIcu, AgreesOnRandomTexts) {
  RandomTexts random(3);
  for (unsigned i = 0; i < 1'000'000; i += kSampledEvery) {
    const std::vector<std::u16string> texts = {random.utf16()};
    ASSERT_TRUE(Gateway(texts) == IcuGateway(texts)) << i;
  }
}

TEST(Utf16AgainstIcu, BlamesTheSameElementOfRandomColumns) {
  RandomTexts random(4);
  for (int i = 0; i < 50'000; ++i) {
    std::vector<std::u16string> texts(random.below(8));
    std::generate(texts.begin(), texts.end(), [&random] { return random.utf16(); });
    ASSERT_TRUE(Gateway(texts) == IcuGateway(texts)) << i;
  }
}

}  // namespace
}  // namespace numera::io::arrow
