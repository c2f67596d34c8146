/// \file
/// UTF-16 to UTF-8 by the gateway, compared with ICU: converted texts, refused texts, and the
/// element that an error names.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "numera/host/message_id_exception.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/host_builder.h"
#include "tests/support/icu.h"
#include "tests/unicode/drawn_texts.h"

namespace numera::io::arrow {
namespace {

using namespace numera::testing;
using MaybeUtf8 = std::optional<std::string>;

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
