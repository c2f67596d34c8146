#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "numera/host/string_array.h"
#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

/// A string array that uses the interface's default implementation for many texts at once.
class PlainStringArray final : public hxStringArray {
 public:
  explicit PlainStringArray(size_t size) : dims_{size, 1}, texts_(size, std::u16string()) {}
  std::span<const size_t> dimensions() const override { return dims_; }
  size_t size() const override { return texts_.size(); }
  std::optional<std::u16string_view> element(size_t i) const override { return texts_.at(i); }
  void set(size_t i, std::u16string_view text) override {
    if (i >= size()) throw std::out_of_range("String index is out of range.");
    texts_[i] = std::u16string(text);
  }
  void set_missing(size_t i) override { texts_.at(i) = std::nullopt; }

 private:
  Dims dims_;
  Texts texts_;
};

template <class Offset>
struct Chunk {
  std::vector<Offset> offsets{0};
  std::string bytes;

  explicit Chunk(const std::vector<std::string>& texts, std::string_view before = {}) {
    bytes = before;
    offsets = {static_cast<Offset>(bytes.size())};
    for (const std::string& text : texts) {
      bytes += text;
      offsets.push_back(static_cast<Offset>(bytes.size()));
    }
  }

  std::optional<size_t> assign_to(hxStringArray& strings, size_t first) const {
    // A copy of the exact size, so that a memory checker reports a read past its end.
    const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
    return strings.assign_utf8(first, std::span<const Offset>(offsets), exact.data());
  }
};

template <class Offset>
struct AssignUtf8 : Claim {};
using OffsetTypes = ::testing::Types<std::int32_t, std::int64_t>;
TYPED_TEST_SUITE(AssignUtf8, OffsetTypes);

TYPED_TEST(AssignUtf8, SetsTheWholeArray) {
  const auto strings = hxMakeStringArray(Dims{3, 1});
  EXPECT_EQ(Chunk<TypeParam>({"ab", "", "c"}).assign_to(*strings, 0), std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"ab", u"", u"c"}));
  EXPECT_EQ(
      Chunk<TypeParam>({"z\xC3\xBC", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}).assign_to(*strings, 0),
      std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"z\u00FC", u"\u20AC", u"\U0001F600"}));
}

TYPED_TEST(AssignUtf8, SetsChunkAfterChunk) {
  const auto strings = hxMakeStringArray(Dims{5, 1});
  EXPECT_EQ(Chunk<TypeParam>({"a", "b"}).assign_to(*strings, 0), std::nullopt);
  EXPECT_EQ(Chunk<TypeParam>({}).assign_to(*strings, 2), std::nullopt);
  EXPECT_EQ(Chunk<TypeParam>({"\xC3\xBC", "d"}, "skipped").assign_to(*strings, 3), std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"a", u"b", u"", u"\u00FC", u"d"}));
}

TYPED_TEST(AssignUtf8, SetsARangeOfElementsSetBefore) {
  const auto strings = hxMakeStringArray(Dims{3, 1});
  strings->set(0, u"0");
  strings->set(2, u"2");
  EXPECT_EQ(Chunk<TypeParam>({"one", "two"}).assign_to(*strings, 1), std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"0", u"one", u"two"}));
}

TYPED_TEST(AssignUtf8, ReplacesAWholeArraySetOutOfOrder) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  strings->set(1, u"first");
  strings->set(0, u"second");
  EXPECT_EQ(Chunk<TypeParam>({"a", "\xC3\xBC"}).assign_to(*strings, 0), std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"a", u"\u00FC"}));
}

TYPED_TEST(AssignUtf8, TakesNoOffsetsAndNoBytes) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  EXPECT_EQ(strings->assign_utf8(9, std::span<const TypeParam>(), nullptr), std::nullopt);
  const std::vector<TypeParam> one = {5};
  EXPECT_EQ(strings->assign_utf8(9, one, nullptr), std::nullopt);
  const std::vector<TypeParam> empty_texts = {5, 5, 5};
  EXPECT_EQ(strings->assign_utf8(0, empty_texts, nullptr), std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"", u""}));
}

TYPED_TEST(AssignUtf8, MakesMissingElementsTexts) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  strings->set_missing(0);
  strings->set_missing(1);
  EXPECT_EQ(Chunk<TypeParam>({"a"}).assign_to(*strings, 0), std::nullopt);
  EXPECT_EQ(texts_of(*strings), Texts({u"a", std::nullopt}));
}

TYPED_TEST(AssignUtf8, ReturnsTheFirstTextThatIsNotValid) {
  struct Row {
    std::vector<std::string> texts;
    size_t failed;
  };
  const Row rows[] = {
      {{"\xFF", "b"}, 0},
      {{"a", "b\xC3"}, 1},
      {{"a", "\xC3", "\xBC"}, 1},       // one character split over two texts
      {{"a\xE2\x82", "\xAC", "c"}, 0},  // split too, although the joined bytes are valid
      {{"\xF0\x9F", "\x98\x80"}, 0},
      {{"a", "b", "\xED\xA0\x80", "\xFF"}, 2},
      {{"\xC3\xBC", "sixteen letters!\x80"}, 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.texts.front());
    const auto strings = hxMakeStringArray(Dims{row.texts.size() + 3, 1});
    EXPECT_EQ(Chunk<TypeParam>(row.texts).assign_to(*strings, 3), row.failed + 3);
    EXPECT_EQ(strings->size(), row.texts.size() + 3);
    strings->set(3, u"still usable");
    EXPECT_EQ(strings->element(3), u"still usable");
  }
}

TYPED_TEST(AssignUtf8, ChecksTheRangeAsOneTextAfterAnotherDoes) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  EXPECT_THROW(Chunk<TypeParam>({"a", "b", "c"}).assign_to(*strings, 0), std::out_of_range);
  EXPECT_THROW(Chunk<TypeParam>({"a"}).assign_to(*strings, 3), std::out_of_range);
  EXPECT_EQ(Chunk<TypeParam>({"a", "\xFF", "c"}).assign_to(*strings, 0), 1u);
}

std::string random_text(std::mt19937& random) {
  static const char* const kPieces[] = {"a",
                                        "letters",
                                        "\xC3\xBC",
                                        "\xE2\x82\xAC",
                                        "\xF0\x9F\x98\x80",
                                        "\xED\x9F\xBF",
                                        "sixteen letters!",
                                        "\xDF\xBF",
                                        "\xEF\xBF\xBF",
                                        " "};
  std::string text;
  for (size_t pieces = random() % 6; pieces > 0; --pieces) text += kPieces[random() % 10];
  return text;
}

TYPED_TEST(AssignUtf8, GivesWhatOneTextAfterAnotherGives) {
  std::mt19937 random(2);
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE(round);
    const size_t size = 1 + random() % 12;
    const auto strings = hxMakeStringArray(Dims{size, 1});
    PlainStringArray model(size);
    bool valid = true;
    for (int step = 0; step < 4 && valid; ++step) {
      const size_t first = random() % size;
      std::vector<std::string> texts;
      for (size_t i = random() % (size - first + 1); i > 0; --i) {
        texts.push_back(random_text(random));
      }
      Chunk<TypeParam> chunk(texts, random() % 2 == 0 ? "" : "before");
      if (random() % 4 == 0 && !chunk.bytes.empty()) {
        chunk.bytes[random() % chunk.bytes.size()] = static_cast<char>(random() % 256);
      }
      if (random() % 4 == 0 && chunk.offsets.size() > 2) {
        // Makes one text empty. Its bytes become the start of the next text.
        const size_t border = 1 + random() % (chunk.offsets.size() - 2);
        chunk.offsets[border] = chunk.offsets[border - 1];
      }
      const auto expected = chunk.assign_to(model, first);
      ASSERT_EQ(chunk.assign_to(*strings, first), expected);
      valid = !expected;
      if (valid) {
        ASSERT_EQ(texts_of(*strings), texts_of(model));
      }
    }
  }
}

}  // namespace
}  // namespace numera::host_conformance
