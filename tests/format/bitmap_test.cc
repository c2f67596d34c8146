#include "numera/format/bitmap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "tests/support/bitmap_model.h"

namespace numera::format {
namespace {

using numera::testing::Bytes;
using numera::testing::CopyBitmapModel;

/// A heap block of exactly this size, so that a memory checker reports every access beyond it.
class ExactBlock {
 public:
  explicit ExactBlock(const Bytes& bytes)
      : bytes_(std::make_unique<std::uint8_t[]>(bytes.size())), size_(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
  }
  std::span<std::uint8_t> span() { return {bytes_.get(), size_}; }
  Bytes bytes() const { return {bytes_.get(), bytes_.get() + size_}; }

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  size_t size_;
};

Bytes copied(const Bytes& source, size_t length, const Bytes& target, size_t position,
             size_t total) {
  ExactBlock from(source);
  ExactBlock to(target);
  copy_bitmap(from.span(), static_cast<std::int64_t>(length),
              {to.span(), static_cast<std::int64_t>(position), static_cast<std::int64_t>(total)});
  EXPECT_EQ(from.bytes(), source) << "the source was changed";
  return to.bytes();
}

TEST(BitmapBytes, RoundsUpToWholeBytes) {
  EXPECT_EQ(bitmap_bytes(0), 0);
  EXPECT_EQ(bitmap_bytes(1), 1);
  EXPECT_EQ(bitmap_bytes(8), 1);
  EXPECT_EQ(bitmap_bytes(9), 2);
  EXPECT_EQ(bitmap_bytes(std::int64_t{1} << 62), std::int64_t{1} << 59);
  EXPECT_EQ(bitmap_bytes(0x7FFF'FFFF'FFFF'FFFF), std::int64_t{1} << 60);
}

TEST(CopyBitmap, GivesTheBitsWrittenHere) {
  struct Case {
    const char* what;
    Bytes source;
    size_t length;
    Bytes target;
    size_t position;
    size_t total;
    Bytes expected;
  };
  const Case cases[] = {
      {"whole bytes", {0x12, 0x34}, 16, {0xFF, 0xFF}, 0, 16, {0x12, 0x34}},
      {"bits after the last whole byte", {0x12, 0x05}, 11, {0xFF, 0xFF}, 0, 12, {0x12, 0xFD}},
      {"a position within a byte", {0x00}, 5, {0xFF, 0xFF}, 3, 12, {0x07, 0xFF}},
      {"a position within a byte, over two bytes", {0x00}, 8, {0xFF, 0xFF}, 4, 12, {0x0F, 0xF0}},
      {"a position on a later byte", {0x81}, 8, {0x00, 0x00, 0x00}, 8, 24, {0x00, 0x81, 0x00}},
      {"bits that are set as well as cleared", {0x55}, 8, {0x00}, 0, 8, {0x55}},
      {"a carry into unused bits", {0x00, 0x00}, 8, {0xFF, 0xFF}, 0, 12, {0x00, 0x0F}},
      {"no carry into bits in use", {0x00, 0x00}, 8, {0xFF, 0xFF}, 0, 16, {0x00, 0xFF}},
      {"no carry of the last byte after a part of a byte", {0x00}, 3, {0xFF}, 0, 3, {0xF8}},
      {"a carry of a byte that is not the last", {0x00, 0x00}, 3, {0xFF}, 0, 3, {0x00}},
      {"no carry from a position within a byte", {0, 0, 0}, 8, {0xFF, 0xFF}, 1, 9, {0x01, 0xFE}},
      {"a source of no bytes", {}, 8, {0xFF}, 0, 8, {0xFF}},
      {"a target of no bytes", {0x00}, 8, {}, 0, 0, {}},
      {"a source too short by a byte", {0x00}, 16, {0xFF, 0xFF}, 0, 16, {0x00, 0xFF}},
      {"a source too short by a byte, within a byte",
       {0x00},
       12,
       {0xFF, 0xFF},
       4,
       16,
       {0x0F, 0xF0}},
      {"no bits, from a source with bytes", {0x00}, 0, {0xFF}, 0, 4, {0x0F}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    EXPECT_EQ(copied(one.source, one.length, one.target, one.position, one.total), one.expected);
  }
}

class RandomBitmaps : public ::testing::TestWithParam<unsigned> {
 protected:
  size_t up_to(size_t most) { return std::uniform_int_distribution<size_t>(0, most)(random_); }

  Bytes bytes(size_t size) {
    Bytes result(size);
    for (std::uint8_t& byte : result) byte = static_cast<std::uint8_t>(up_to(255));
    return result;
  }

  /// A size near the number of bytes that `bits` bits need: from zero to far more.
  size_t source_size(size_t bits) {
    const size_t needed = (bits + 7) / 8;
    switch (up_to(3)) {
      case 0:
        return up_to(needed);
      case 1:
        return needed + up_to(2);
      case 2:
        return needed + up_to(200);
      default:
        return needed;
    }
  }

  std::mt19937 random_{GetParam()};
};

TEST_P(RandomBitmaps, AreCopiedAsBitByBit) {
  for (int i = 0; i < 1000; ++i) {
    const size_t total = up_to(i % 2 == 0 ? 40 : 700);
    const size_t position = up_to(total);
    const size_t length = up_to(total - position);
    const Bytes source = bytes(source_size(length));
    const Bytes target = bytes((total + 7) / 8);
    SCOPED_TRACE(::testing::Message()
                 << "case " << i << ": " << length << " bits of " << source.size()
                 << " bytes to bit " << position << " of " << total);
    ASSERT_EQ(copied(source, length, target, position, total),
              CopyBitmapModel(source, length, target, position, total));
  }
}

TEST_P(RandomBitmaps, OfManyChunksAreJoinedAsBitByBit) {
  for (int i = 0; i < 200; ++i) {
    std::vector<size_t> lengths(up_to(8));
    size_t total = 0;
    for (size_t& length : lengths) total += length = up_to(1) == 0 ? 8 * up_to(9) : up_to(150);
    const std::uint8_t fill = i % 2 == 0 ? 0xFF : 0x00;
    Bytes expected((total + 7) / 8, fill);
    ExactBlock target(bytes(expected.size()));
    BitmapWriter writer(target.span(), static_cast<std::int64_t>(total), fill);
    size_t position = 0;
    for (const size_t length : lengths) {
      const Bytes source = up_to(3) == 0 ? Bytes() : bytes(source_size(length));
      ExactBlock exact(source);
      writer.append(exact.span(), static_cast<std::int64_t>(length));
      expected = CopyBitmapModel(source, length, expected, position, total);
      position += length;
    }
    SCOPED_TRACE(::testing::Message()
                 << "case " << i << ": lengths " << ::testing::PrintToString(lengths));
    ASSERT_EQ(target.bytes(), expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomBitmaps, ::testing::Range(1U, 11U));

TEST(CopyBitmap, MovesWordsFromAndToEveryPlace) {
  for (size_t position = 0; position < 8; ++position) {
    for (size_t length = 0; length < 3 * 64 + 8; ++length) {
      SCOPED_TRACE(::testing::Message() << length << " bits to bit " << position);
      const size_t total = position + length + 3;
      const Bytes source((length + 7) / 8, 0xA7);
      const Bytes target((total + 7) / 8, 0x5C);
      ASSERT_EQ(copied(source, length, target, position, total),
                CopyBitmapModel(source, length, target, position, total));
    }
  }
}

TEST(CopyBitmap, ReturnsHowManyBitsItCopied) {
  struct Case {
    size_t source;
    size_t target;
    std::int64_t length;
    std::int64_t copied;
  };
  for (const Case& one : {Case{2, 2, 12, 12}, Case{1, 2, 12, 8}, Case{0, 2, 12, 0},
                          Case{3, 2, 12, 12}, Case{2, 0, 12, 0}}) {
    const Bytes source(one.source);
    Bytes target(one.target);
    EXPECT_EQ(copy_bitmap(source, one.length, {target, 0, 12}), one.copied);
  }
}

TEST(BitmapWriter, FillsWhatAChunkHasNoBitsFor) {
  ExactBlock target({0x55, 0xAA});
  BitmapWriter writer(target.span(), 12, 0xFF);
  const Bytes none{0x00};
  writer.append({}, 3);
  writer.append(none, 5);
  writer.append({}, 4);
  EXPECT_EQ(target.bytes(), (Bytes{0x07, 0xFF}));
}

TEST(BitmapWriter, FillsBytesThatNobodyHasWritten) {
  for (const std::uint8_t fill : Bytes{0x00, 0xFF}) {
    ExactBlock target(Bytes{0x55, 0x55, 0x55, 0x55, 0x55});
    BitmapWriter writer(target.span(), 35, fill);
    const Bytes source{0x0C};
    writer.append(source, 4);
    writer.append({}, 27);
    writer.append(source, 4);
    const Bytes zeros{0x0C, 0x00, 0x00, 0x00, 0x06};
    const Bytes ones{0xFC, 0xFF, 0xFF, 0x7F, 0xFE};
    EXPECT_EQ(target.bytes(), fill == 0 ? zeros : ones);
  }
}

TEST(BitmapWriter, WritesNothingToNoBytes) {
  BitmapWriter writer({}, 12, 0xFF);
  const Bytes source{0x00, 0x00};
  writer.append(source, 12);
  writer.append(source, 4);
  EXPECT_EQ(source, (Bytes{0x00, 0x00}));
}

}  // namespace
}  // namespace numera::format
