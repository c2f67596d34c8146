#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "numera/core/limits.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/core/to_numera_datatype.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/only_read.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/large_stack.h"
#include "tests/support/nested_values.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::arrow::Status;

using DataPtr = std::shared_ptr<ArrayData>;

const auto kTooDeep =
    Status::Invalid("Nested value: found more than 1024 levels, expected at most 1024.");

TEST(NestingLimit, Is1024) { EXPECT_EQ(kMaxNestingLevels, 1024); }

TEST(NestingToNumera, ConvertsUpToTheLimit) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    for (const size_t levels : {1U, 2U, 1024U}) {
      EXPECT_TRUE(SameHostValue(ValueOf(to_numera(NestedArray(containers, levels))).get(),
                                NestedWritten(containers, levels).get()));
    }
  }
}

TEST(NestingToNumera, RefusesWhatIsDeeper) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    EXPECT_EQ(ToNumeraOnlyReads(NestedArray(containers, 1025)).status(), kTooDeep);
  }
}

TEST(NestingToNumera, RefusesADeeperTypeWithoutChunks) {
  const auto type = NestedArray({kStruct, kList}, 1025)->type();
  EXPECT_EQ(ToNumeraOnlyReads(ArrowChunks(type, {})).status(), kTooDeep);
}

TEST(NestingToNumera, CountsAStructWithoutFieldsAsALevel) {
  const auto nested = [](int levels) {
    DataPtr data = ArrayData::Make(::arrow::struct_({}), 1, {nullptr}, 0);
    for (int i = 1; i < levels; ++i) data = ArrowStruct(data);
    return ::arrow::MakeArray(data);
  };
  EXPECT_TRUE(to_numera(nested(1024)).ok());
  EXPECT_EQ(to_numera(nested(1025)).status(), kTooDeep);
}

TEST(NestingToNumera, SurvivesAHundredThousandLevels) {
  OnLargeStack([] {
    const auto array = NestedArray({kStruct}, 100'000);
    const auto convert = [&array] {
      EXPECT_EQ(to_numera(array).status(), kTooDeep);
      EXPECT_EQ(to_numera_datatype(array->type()), std::nullopt);
    };
    OnStatedStack(kStackBytes, convert);
  });
}

TEST(NestingToArrow, ConvertsUpToTheLimit) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    for (const size_t levels : {1U, 2U, 1024U}) {
      const hxArrayPtr encoded = NestedEncoded(containers, levels);
      auto array = ValueOf(to_arrow<::arrow::Array>(encoded.get()))->data();
      for (size_t i = levels; i-- > 0;) {
        ASSERT_EQ(array->type->name(), containers[i % containers.size()]
                                           .arrow(ArrowArray(::arrow::float64(), "[1.5]")->data())
                                           ->type->name());
        ASSERT_EQ(array->length, 1);
        array = array->child_data[0];
      }
      EXPECT_TRUE(SameArray(*::arrow::MakeArray(array), *ArrowArray(::arrow::float64(), "[1.5]")));
    }
  }
}

TEST(NestingToArrow, RefusesWhatIsDeeper) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    for (const size_t levels : {1025U, 10'000U}) {
      const hxArrayPtr encoded = NestedEncoded(containers, levels);
      EXPECT_EQ(StatusOfReading(encoded), kTooDeep);
    }
  }
}

/// Two encoded arrays, nested so many levels deep.
hxArrayPtr Pair(const Containers& containers, size_t first, size_t second) {
  return StructColumn(kColumnFields,
                      {NestedEncoded(containers, first), NestedEncoded(containers, second)});
}

TEST(NestingToArrow, CountsTheLevelsOfEveryElementAlike) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr taken = Pair(containers, 1024, 1024);
    const hxArrayPtr refused = Pair(containers, 1025, 1025);
    for (const size_t index : {0U, 1U}) {
      EXPECT_EQ(to_arrow(taken.get(), index).status(), Status::OK());
      EXPECT_EQ(to_arrow(refused.get(), index).status(), kTooDeep);
    }
  }
}

TEST(NestingToArrow, CountsTheLevelsOfEveryColumnAlike) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    const std::tuple<size_t, size_t, Status> cases[] = {
        {1024, 1024, Status::OK()}, {1025, 1024, kTooDeep}, {1024, 1025, kTooDeep}};
    for (const auto& [first, second, status] : cases) {
      const hxArrayPtr table = TableEnvelope(Names({"x", "y"}), Pair(containers, first, second));
      EXPECT_EQ(to_arrow_table(table.get()).status(), status);
    }
  }
}

TEST(Nesting, ReturnsToTheSameValues) {
  const auto type = ::arrow::struct_(
      {::arrow::field("a", ::arrow::struct_({::arrow::field("b", ::arrow::boolean())})),
       ::arrow::field("c", ::arrow::time32(::arrow::TimeUnit::SECOND))});
  const auto array = ArrowArray(type, "[[[true], 1], [null, 2], null, [[null], null]]");
  const hxArrayPtr written = ValueOf(to_numera(array));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(written.get())), *array));
}

TEST(Nesting, LeavesNothingBehindWhereverItFails) {
  const hxArrayPtr encoded = NestedEncoded({kStruct, kLargeList}, 4);
  FailReading(encoded);
  const auto array = NestedArray({kList, kStruct, kMap, kLargeList}, 4);
  FailWriting(array);
}

TEST(LargeShapes, AStructOfFiveThousandFieldsConvertsBothWays) {
  constexpr size_t kFields = 5000;
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector children;
  const auto number = ArrowArray(::arrow::int32(), "[7]");
  std::vector<std::string> names;
  std::vector<hxArrayPtr> values;
  for (size_t i = 0; i < kFields; ++i) {
    names.push_back("f" + std::to_string(i));
    fields.push_back(::arrow::field(names[i], ::arrow::int32()));
    children.push_back(number);
    values.push_back(WrittenNumbers<std::int32_t>({7}));
  }
  const auto structs = ValueOf(::arrow::StructArray::Make(children, fields));
  const hxArrayPtr written = ValueOf(to_numera(structs));
  EXPECT_TRUE(SameHostValue(
      written.get(),
      WrittenNested("struct", "struct", 1, StructData(names, std::move(values))).get()));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(written.get())), *structs));
}

TEST(LargeShapes, TenMillionEmptyListsConvertBothWays) {
  constexpr size_t kLists = 10'000'000;
  const std::vector<std::int32_t> offsets(kLists + 1);
  const ::arrow::ListArray lists(::arrow::list(::arrow::int32()), kLists,
                                 ::arrow::Buffer::Wrap(offsets),
                                 ArrowArray(::arrow::int32(), "[]"));
  const auto slice = lists.Slice(0);
  const hxArrayPtr written = ValueOf(to_numera(slice));
  EXPECT_TRUE(SameHostValue(written.get(), WrittenNested("list_array", "list_array", kLists,
                                                         ListData(WrittenNumbers<std::int32_t>({}),
                                                                  Column<std::int32_t>(offsets)))
                                               .get()));
  const hxArrayPtr encoded = ListEnvelope(
      Numbers<std::int32_t>({}),
      hxCreateNumericArray(Dims{kLists + 1, 1}, hxClassID::UInt64, hxComplexity::Real));
  const auto read = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  EXPECT_EQ(read->length(), 10'000'000);
  EXPECT_TRUE(read->ValidateFull().ok());
}

/// Lists of one struct each. Its only field is a list of one number, the number of the row.
std::shared_ptr<::arrow::Array> ListsOfStructsOfLists(const std::vector<std::int32_t>& offsets) {
  const auto rows = static_cast<std::int64_t>(offsets.size()) - 1;
  const auto numbers = std::make_shared<::arrow::Int32Array>(
      rows, ::arrow::SliceBuffer(::arrow::Buffer::Wrap(offsets), 0, rows * 4), nullptr, 0);
  const auto inner = std::make_shared<::arrow::ListArray>(
      ::arrow::list(::arrow::int32()), rows, ::arrow::Buffer::Wrap(offsets), numbers, nullptr, 0);
  const auto structs =
      ValueOf(::arrow::StructArray::Make({inner}, std::vector<std::string>{"values"}));
  return std::make_shared<::arrow::ListArray>(::arrow::list(structs->type()), rows,
                                              ::arrow::Buffer::Wrap(offsets), structs, nullptr, 0);
}

TEST(LargeShapes, AMillionListsOfStructsOfListsConvert) {
  std::vector<std::int32_t> offsets(1'000'001);
  std::iota(offsets.begin(), offsets.end(), 0);
  const std::vector<std::int32_t> numbers(offsets.begin(), offsets.end() - 1);
  const auto list_of = [&offsets](hxArrayPtr values) {
    return WrittenNested("list_array", "list_array", 1e6,
                         ListData(std::move(values), Column<std::int32_t>(offsets)));
  };
  hxArrayPtr inner = list_of(WrittenNumbers<std::int32_t>(numbers));
  const hxArrayPtr expected =
      list_of(WrittenNested("struct", "struct", 1e6, StructData({"values"}, {std::move(inner)})));
  EXPECT_TRUE(
      SameHostValue(ValueOf(to_numera(ListsOfStructsOfLists(offsets))).get(), expected.get()));
}

TEST(NestingCost, IsAsManyHostCallsForAThousandRowsAsForOne) {
  const auto calls = [](std::int32_t rows) {
    std::vector<std::int32_t> offsets(static_cast<size_t>(rows) + 1);
    std::iota(offsets.begin(), offsets.end(), 0);
    const auto lists = ListsOfStructsOfLists(offsets);
    Reset();
    EXPECT_TRUE(to_numera(lists).ok());
    return std::array{TotalThrowingCalls(), Created().size()};
  };
  EXPECT_EQ(calls(1000), calls(1));
}

TEST(NestingCost, IsNoHostArrayTowardsArrow) {
  const hxArrayPtr encoded = NestedEncoded({kStruct, kLargeList}, 10);
  Reset();
  EXPECT_TRUE(to_arrow<::arrow::Array>(encoded.get()).ok());
  EXPECT_EQ(Created(), std::vector<Creation>());
}

}  // namespace
}  // namespace numera::io::arrow::core
