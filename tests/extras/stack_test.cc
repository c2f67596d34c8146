#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "numera/core/limits.h"
#include "numera/extras/convert.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/own/own.h"
#include "tests/support/arrow_values.h"
#include "tests/support/large_stack.h"
#include "tests/support/nested_values.h"
#include "tests/support/results.h"

/// Like tests/core/stack_test.cc, for the rest of the library and the in-memory host.

namespace numera::testing {
namespace {

using namespace io::arrow::core;
using ::arrow::Array;
using ::arrow::Status;

constexpr size_t kDeepest = kMaxNestingLevels;

ArrowData ArrowFixedSizeList(ArrowData inner) {
  const auto type = ::arrow::fixed_size_list(inner->type, 1);
  return NestedData(type, {nullptr}, std::move(inner));
}

ArrowData ArrowListView(ArrowData inner) {
  const auto type = ::arrow::list_view(inner->type);
  return NestedData(type, {nullptr, ArrowBuffer({0, 0, 0, 0}), ArrowBuffer({1, 0, 0, 0})},
                    std::move(inner));
}

ArrowData ArrowDictionary(ArrowData inner) {
  auto codes = ::arrow::ArrayData::Make(::arrow::dictionary(::arrow::int8(), inner->type), 1,
                                        {nullptr, ArrowBuffer({0})}, 0);
  codes->dictionary = std::move(inner);
  return codes;
}

ArrowData ArrowRuns(ArrowData inner) {
  const auto type = ::arrow::run_end_encoded(::arrow::int32(), inner->type);
  const auto ends = ArrowArray(::arrow::int32(), "[1]")->data();
  return ::arrow::ArrayData::Make(type, 1, {nullptr}, {ends, std::move(inner)}, 0);
}

constexpr Container kFixedSizeList = {"fixed size list", ArrowFixedSizeList, nullptr, nullptr};
constexpr Container kListView = {"list view", ArrowListView, nullptr, nullptr};
constexpr Container kDictionary = {"dictionary", ArrowDictionary, nullptr, nullptr};
constexpr Container kRuns = {"run-end encoded", ArrowRuns, nullptr, nullptr};

const std::vector<Containers> kCastContainers = {
    {kFixedSizeList}, {kListView}, {kDictionary, kStruct}, {kRuns, kMap}};

/// The largest number of nested containers that can be encoded. A map counts as two levels.
size_t deepest_encoded(const Containers& containers) {
  size_t count = 0;
  for (size_t levels = 0; levels <= kDeepest; ++count) {
    levels += containers[count % containers.size()].arrow == ArrowMap ? 2U : 1U;
  }
  return count - 1;
}

TEST(StackOfOwnToArrow, HoldsTheDeepestValuesAndTheirDestruction) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    hxArrayPtr encoded = NestedEncoded(containers, kDeepest);
    std::int64_t length = 0;
    OnStatedStack(kStackBytes, [&] {
      length = ValueOf(extras::own_to_arrow<Array>(std::move(encoded)))->length();
    });
    EXPECT_EQ(length, 1);
  }
}

TEST(StackOfOwnToArrowTable, HoldsTheDeepestColumnsAndTheirDestruction) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    hxArrayPtr encoded = TableEnvelope(Names({"deep"}), NestedEncoded(containers, kDeepest));
    std::int64_t rows = 0;
    OnStatedStack(kStackBytes, [&] {
      rows = ValueOf(extras::own_to_arrow_table(std::move(encoded)))->num_rows();
    });
    EXPECT_EQ(rows, 1);
  }
}

TEST(StackOfPrint, HoldsTheDeepestValues) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr value = NestedWritten(containers, kDeepest);
    const extras::PrintOptions all = {.max_depth = 10'000, .max_lines = 100'000};
    std::string text;
    OnStatedStack(kStackBytes, [&] { text = extras::print(value.get(), all); });
    EXPECT_TRUE(text.starts_with("struct 1x1\n  ArrowType: char"));
    EXPECT_NE(text.find("Data: double 1x1 [1.5]"), std::string::npos);
  }
}

TEST(StackOfFirstDifference, HoldsTheDeepestValues) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr value = NestedWritten(containers, kDeepest);
    const hxArrayPtr same = NestedWritten(containers, kDeepest);
    const hxArrayPtr deeper = NestedWritten(containers, kDeepest + containers.size());
    std::optional<std::string> none = "";
    std::optional<std::string> difference;
    OnStatedStack(kStackBytes, [&] {
      none = extras::first_difference(value.get(), same.get());
      difference = extras::first_difference(value.get(), deeper.get());
    });
    EXPECT_EQ(none, std::nullopt);
    ASSERT_NE(difference, std::nullopt);
    EXPECT_NE(difference->find(".ArrowType: \"array\" is not \""), std::string::npos)
        << *difference;
  }
}

TEST(StackOfHostArrays, HoldsCopiesAndTheDestructionOfTheDeepestValues) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    hxArrayPtr value = NestedWritten(containers, kDeepest);
    OnStatedStack(kStackBytes, [&value] {
      hxArrayPtr copy = hxSharedCopy(value.get());
      hxSetField(copy.get(), 0, "Type", Char("other"));
      value.reset();
      copy.reset();
    });
    EXPECT_EQ(value, nullptr);
  }
}

TEST(StackOfReturnedType, HoldsTheDeepestTypes) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto type = NestedArray(containers, deepest_encoded(containers))->type();
    bool returns = false;
    OnStatedStack(kTypeStackBytes, [&] {
      const auto returned = extras::returned_type(*type);
      returns = returned && extras::returns_as(*type, **returned);
    });
    EXPECT_TRUE(returns);
  }
}

TEST(StackOfTakeIn, HoldsTheDeepestValues) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, kDeepest);
    Status status = Status::UnknownError("");
    OnStatedStack(kIntakeStackBytes, [&] { status = extras::take_in(array).status(); });
    EXPECT_EQ(status, Status::OK());
  }
}

TEST(StackOfTakeIn, HoldsTheDeepestValuesThatAreCast) {
  for (const Containers& containers : kCastContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, kDeepest);
    Status status = Status::UnknownError("");
    OnStatedStack(kIntakeStackBytes,
                  [&] { status = extras::take_in(array, {.cast = true}).status(); });
    EXPECT_EQ(status, Status::OK());
  }
}

TEST(StackOfTakeIn, HoldsTheRefusalOfWhatIsDeeper) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, 5 * kDeepest);
    Status status;
    OnStatedStack(kIntakeStackBytes, [&] { status = extras::take_in(array).status(); });
    EXPECT_EQ(status, Status::Invalid("Types: found more than 1024 levels of nesting, expected at "
                                      "most 1024."));
  }
}

TEST(StackOfConvertToArrow, HoldsTheDeepestTypes) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, deepest_encoded(containers));
    hxArrayPtr value = NestedWritten(containers, deepest_encoded(containers));
    ::arrow::Result<std::shared_ptr<::arrow::Array>> back = Status::UnknownError("");
    OnStatedStack(kMakeReadableStackBytes,
                  [&] { back = extras::convert_to_arrow(std::move(value), array->type()); });
    ASSERT_EQ(back.status(), Status::OK());
    EXPECT_EQ((*back)->type_id(), array->type_id());
  }
}

TEST(StackOfMakeReadable, HoldsTheDeepestValues) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr value = NestedWritten(containers, deepest_encoded(containers));
    Status status = Status::UnknownError("");
    OnStatedStack(kMakeReadableStackBytes,
                  [&] { status = extras::make_readable(value.get()).status(); });
    EXPECT_EQ(status, Status::OK());
  }
}

TEST(StackOfMakeReadable, HoldsTheDeepestValuesOfSeveralChunks) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const size_t levels = deepest_encoded(containers) - 1;
    const hxArrayPtr value = WrittenTwoChunksOfLists(NestedWritten(containers, levels),
                                                     NestedWritten(containers, levels));
    Status status = Status::UnknownError("");
    OnStatedStack(kMakeReadableStackBytes,
                  [&] { status = extras::make_readable(value.get()).status(); });
    EXPECT_EQ(status, Status::OK());
  }
}

TEST(StackOfMakeReadable, HoldsTheRefusalOfWhatIsDeeper) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr value = NestedWritten(containers, 5 * kDeepest);
    Status status;
    OnStatedStack(kMakeReadableStackBytes,
                  [&] { status = extras::make_readable(value.get()).status(); });
    EXPECT_EQ(status, Status::Invalid("Nested value: found more than 1024 levels, expected at most "
                                      "1024."));
  }
}

}  // namespace
}  // namespace numera::testing
