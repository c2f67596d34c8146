/// \file
/// UTF-8 to UTF-16, compared with ICU: converted texts, refused texts, and the row that an error
/// names. Also compares the host's bulk operation with setting one text after another.

#include <arrow/array/array_binary.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>

#include "numera/core/types/string.h"
#include "tests/support/host_builder.h"
#include "tests/support/icu.h"
#include "tests/support/offset_arrays.h"
#include "tests/unicode/drawn_texts.h"

namespace numera::io::arrow {
namespace {

using namespace numera::testing;
using core::FillHostStrings;
using MaybeUtf16 = std::optional<std::u16string>;

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
  constexpr int kRounds = 20'000;  // texts may be damaged in half of them, and most then are
  RandomTexts random(2);
  int refused = 0;
  for (int round = 0; round < kRounds; ++round) {
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
  EXPECT_GT(refused, kRounds / 4);
  EXPECT_LT(refused, 3 * kRounds / 4);
}

}  // namespace
}  // namespace numera::io::arrow
