#include "numera/core/types/values_and_offsets.h"

#include <arrow/memory_pool.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "numera/core/types/binary.h"
#include "numera/core/types/string.h"
#include "numera/host/memory.h"
#include "tests/support/envelopes.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

/// All readers of "Values" and "StartOffsets". Each must pass the same checks.
struct NamedFieldReader {
  const char* name;
  Reader reader;
};
const NamedFieldReader kFieldReaders[] = {{"MakeLargeStringArray", MakeLargeStringArray},
                                          {"MakeStringArray", MakeStringArray},
                                          {"MakeLargeBinaryArray", MakeLargeBinaryArray},
                                          {"MakeBinaryArray", MakeBinaryArray}};

void ExpectRefused(const hxArrayPtr& s, const Status& expected) {
  for (const auto& [name, reader] : kFieldReaders) {
    SCOPED_TRACE(name);
    EXPECT_EQ(reader(s.get(), nullptr).status(), expected);
  }
}

TEST(ValuesAndStartOffsets, AreBothTakenFromTheStruct) {
  const hxArrayPtr texts = TextData("ab", {0, 2});

  const ValuesAndStartOffsets fields = ValueOf(ReadValuesAndStartOffsets(texts.get()));

  EXPECT_EQ(fields.values, hxGetField(texts.get(), 0, "Values"));
  EXPECT_EQ(fields.offsets, hxGetField(texts.get(), 0, "StartOffsets"));
}

TEST(ValuesAndStartOffsets, RefuseWhatIsNoStruct) {
  ExpectRefused(Column<double>({1}), Status::TypeError("Struct array required for input"));
}

TEST(ValuesAndStartOffsets, RefuseEmptyFields) {
  ExpectRefused(ListData(Empty(), Column<std::uint64_t>({0})),
                Status::TypeError("Missing field 'Values' in input struct array"));
  ExpectRefused(ListData(Column<std::uint8_t>({}), Empty()),
                Status::TypeError("Missing field 'StartOffsets' in input struct array"));
}

TEST(ValuesAndStartOffsets, RefuseFieldsOfAnotherClass) {
  ExpectRefused(ListData(Char("ab"), Column<std::uint64_t>({0})),
                Status::TypeError("Incorrect type 'char' for struct array field 'Values'"));
  ExpectRefused(ListData(Column<std::uint8_t>({}), Column<double>({0})),
                Status::TypeError("Incorrect type 'double' for struct array field 'StartOffsets'"));
}

TEST(ValuesAndStartOffsets, LookAtValuesFirst) {
  ExpectRefused(Struct({{"StartOffsets", Empty()}, {"Values", Empty()}}),
                Status::TypeError("Missing field 'Values' in input struct array"));
}

TEST(ValuesAndStartOffsets, LookAtClassesBeforeComplexity) {
  ExpectRefused(ListData(Complex<std::uint8_t>({1, 1}, {{1, 0}}), Char("")),
                Status::TypeError("Incorrect type 'char' for struct array field 'StartOffsets'"));
}

TEST(ValuesAndStartOffsets, RefuseComplexNumbers) {
  ExpectRefused(
      ListData(Complex<std::uint8_t>({2, 1}, {{1, 0}, {2, 0}}), Column<std::uint64_t>({0})),
      Status::TypeError("Field 'Values': found a complex 2-by-1 uint8 array, expected a "
                        "real array that is not sparse."));
  ExpectRefused(
      ListData(Column<std::uint8_t>({}), Complex<std::uint64_t>({1, 1}, {{0, 0}})),
      Status::TypeError("Field 'StartOffsets': found a complex 1-by-1 uint64 array, expected a "
                        "real array that is not sparse."));
}

TEST(ValuesAndStartOffsets, RefuseSparseNumbers) {
  const Dims dims{2, 1};
  ExpectRefused(
      ListData(host::memory::CreateSparseArray(dims, hxClassID::UInt8), Column<std::uint64_t>({0})),
      Status::TypeError("Field 'Values': found a sparse 2-by-1 uint8 array, expected a "
                        "real array that is not sparse."));
  ExpectRefused(
      ListData(Column<std::uint8_t>({}), host::memory::CreateSparseArray(dims, hxClassID::UInt64)),
      Status::TypeError("Field 'StartOffsets': found a sparse 2-by-1 uint64 array, expected a "
                        "real array that is not sparse."));
}

TEST(ValuesAndStartOffsets, LeaveAFieldThatTheStructLacksToTheHost) {
  const hxArrayPtr lacking_values = Struct({{"StartOffsets", Column<std::uint64_t>({0})}});
  const hxArrayPtr lacking_offsets = Struct({{"Values", Column<std::uint8_t>({})}});
  for (const NamedFieldReader& row : kFieldReaders) {
    SCOPED_TRACE(row.name);
    EXPECT_THAT([&] { return row.reader(lacking_values.get(), nullptr).ok(); },
                ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
    EXPECT_THAT([&] { return row.reader(lacking_offsets.get(), nullptr).ok(); },
                ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
  }
}

TEST(ValuesAndStartOffsets, LeaveAStructWithoutElementsToTheHost) {
  const hxArrayPtr none = StructArray({0, 0}, kListFields, {});

  EXPECT_THAT([&] { return ReadValuesAndStartOffsets(none.get()).ok(); },
              ::testing::ThrowsMessage<std::out_of_range>("Struct index is out of range."));
}

TEST(NarrowOffsets, KeepEveryOffsetBelowTheLimit) {
  const hxArrayPtr offsets = Column<std::uint64_t>({0, 1, 2147483646});

  const auto narrow = ValueOf(NarrowOffsets(offsets.get()));

  ASSERT_EQ(narrow->size(), 12);
  const auto* const values = narrow->data_as<std::int32_t>();
  EXPECT_THAT(std::vector<std::int32_t>(values, values + 3),
              ::testing::ElementsAre(0, 1, 2147483646));
}

TEST(NarrowOffsets, RefuseEveryOffsetFromTheLimitOn) {
  const std::pair<std::uint64_t, const char*> cases[] = {
      {2147483647, "2147483647"},
      {2147483648, "2147483648"},
      {4294967296, "4294967296"},
      {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"}};
  for (const auto& [offset, text] : cases) {
    const hxArrayPtr offsets = Column<std::uint64_t>({0, offset});
    EXPECT_EQ(NarrowOffsets(offsets.get()).status(),
              Status::Invalid("Cannot construct arrow::StringArray or arrow::BinaryArray with ",
                              text, " offset."));
  }
}

TEST(NarrowOffsets, NameTheFirstThatIsTooLarge) {
  const hxArrayPtr offsets = Column<std::uint64_t>({0, 3000000001, 3000000002});

  EXPECT_EQ(NarrowOffsets(offsets.get()).status(),
            Status::Invalid("Cannot construct arrow::StringArray or arrow::BinaryArray with "
                            "3000000001 offset."));
}

TEST(NarrowOffsets, TakeOneBlockOfTheirOwnSize) {
  const auto* const pool = ::arrow::default_memory_pool();
  for (const size_t count : {1U, 16U, 17U, 1000U, 1024U}) {
    SCOPED_TRACE(count);
    const hxArrayPtr offsets = Column<std::uint64_t>(std::vector<std::uint64_t>(count));
    const std::int64_t blocks = pool->num_allocations();
    const std::int64_t bytes = pool->total_bytes_allocated();

    const auto narrow = ValueOf(NarrowOffsets(offsets.get()));

    // Arrow pads every allocation to a multiple of 64 bytes.
    const auto padded = static_cast<std::int64_t>((count * sizeof(std::int32_t) + 63) / 64 * 64);
    EXPECT_EQ(narrow->size(), static_cast<std::int64_t>(count * sizeof(std::int32_t)));
    EXPECT_EQ(pool->num_allocations() - blocks, 1);
    EXPECT_EQ(pool->total_bytes_allocated() - bytes, padded);
  }
}

TEST(NarrowOffsets, AreNoneForNone) {
  EXPECT_EQ(ValueOf(NarrowOffsets(Column<std::uint64_t>({}).get()))->size(), 0);
}

TEST(NarrowReaders, ReportTheLimit) {
  const hxArrayPtr texts = TextData("", {0, 2147483647});
  const Status expected = Status::Invalid(
      "Cannot construct arrow::StringArray or arrow::BinaryArray with 2147483647 offset.");
  EXPECT_EQ(MakeStringArray(texts.get(), nullptr).status(), expected);
  EXPECT_EQ(MakeBinaryArray(texts.get(), nullptr).status(), expected);
}

TEST(LargeReaders, TakeOffsetsOfAnySize) {
  const hxArrayPtr texts = TextData("", {0, 2147483647});
  EXPECT_EQ(ValueOf(MakeLargeStringArray(texts.get(), nullptr))->length(), 1);
  EXPECT_EQ(ValueOf(MakeLargeBinaryArray(texts.get(), nullptr))->length(), 1);
}

TEST(ValuesAndStartOffsets, GiveNoElementsForOneOffset) {
  const hxArrayPtr texts = TextData("", {0});
  for (const auto& [name, reader] : kFieldReaders) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ValueOf(reader(texts.get(), nullptr))->length(), 0);
  }
}

TEST(ValuesAndStartOffsets, PassOnLengthMinusOneForNoOffsets) {
  const hxArrayPtr texts = TextData("ab", {});
  for (const auto& [name, reader] : kFieldReaders) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ValueOf(reader(texts.get(), nullptr))->length(), -1);
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
