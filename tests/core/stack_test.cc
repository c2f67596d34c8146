#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "numera/core/limits.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/core/to_numera_datatype.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"
#include "tests/support/large_stack.h"
#include "tests/support/nested_values.h"
#include "tests/support/results.h"

/// Each test runs the conversion on a thread that has only the documented stack size. It makes and
/// compares the values outside that thread. A stack overflow ends the program.

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Array;
using ::arrow::Status;

constexpr size_t kDeepest = kMaxNestingLevels;

const auto kTooDeep =
    Status::Invalid("Nested value: found more than 1024 levels, expected at most 1024.");

/// The innermost container is a list without offsets.
std::shared_ptr<Array> DeepestWithoutOffsets(const Containers& containers) {
  ArrowData data = ArrowLargeList(ArrowArray(::arrow::float64(), "[1.5]")->data());
  data->buffers[1] = ArrowBuffer({0});
  for (size_t i = 1; i < kDeepest; ++i) data = containers[i % containers.size()].arrow(data);
  return ::arrow::MakeArray(data);
}

std::shared_ptr<::arrow::ChunkedArray> Chunks(const ::arrow::ArrayVector& chunks) {
  return std::make_shared<::arrow::ChunkedArray>(chunks);
}

TEST(StackOfToArrow, HoldsTheDeepestValuesAndTheirDestruction) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr encoded = NestedEncoded(containers, kDeepest);
    std::shared_ptr<::arrow::DataType> type;
    OnStatedStack(kStackBytes, [&] {
      auto array = ValueOf(to_arrow<Array>(encoded.get()));
      type = array->type();
      array.reset();
    });
    EXPECT_TRUE(type->Equals(*NestedArray(containers, kDeepest)->type()));
    OnStatedStack(kStackBytes, [&type] { type.reset(); });
  }
}

TEST(StackOfToArrow, HoldsTheRefusalOfWhatIsDeeper) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr encoded = NestedEncoded(containers, kDeepest + 1);
    Status status;
    OnStatedStack(kStackBytes, [&] { status = to_arrow<Array>(encoded.get()).status(); });
    EXPECT_EQ(status, kTooDeep);
  }
}

TEST(StackOfToArrow, HoldsAFailureOfTheInnermostValue) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    hxArrayPtr value = Envelope("nothing", Struct({}));
    for (size_t i = 0; i < kDeepest; ++i) {
      value = containers[i % containers.size()].encoded(std::move(value));
    }
    Status status;
    OnStatedStack(kStackBytes, [&] { status = to_arrow<Array>(value.get()).status(); });
    EXPECT_EQ(status, Status::Invalid("Invalid type for NUMERA to Arrow conversion."));
  }
}

TEST(StackOfToArrowTable, HoldsTheDeepestColumns) {
  for (const Containers& containers : kReadContainers) {
    SCOPED_TRACE(containers.back().name);
    const hxArrayPtr encoded = TableEnvelope(Names({"deep"}), NestedEncoded(containers, kDeepest));
    std::int64_t rows = 0;
    OnStatedStack(kStackBytes, [&] { rows = ValueOf(to_arrow_table(encoded.get()))->num_rows(); });
    EXPECT_EQ(rows, 1);
  }
}

TEST(StackOfToNumera, HoldsTheDeepestValues) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, kDeepest);
    hxArrayPtr written;
    OnStatedStack(kStackBytes, [&] { written = ValueOf(to_numera(array)); });
    EXPECT_TRUE(SameHostValue(written.get(), NestedWritten(containers, kDeepest).get()));
    OnStatedStack(kStackBytes, [&written] { written.reset(); });
  }
}

TEST(StackOfToNumera, HoldsTheDeepestChunksOfOneType) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, kDeepest);
    Status status = Status::UnknownError("");
    OnStatedStack(kStackBytes, [&] { status = to_numera(Chunks({array, array})).status(); });
    EXPECT_EQ(status, Status::OK());
  }
}

TEST(StackOfToNumera, HoldsTheDeepestColumnsOfTables) {
  const auto array = NestedArray({kList, kStruct, kMap, kLargeList}, kDeepest);
  const auto table =
      ::arrow::Table::Make(::arrow::schema({::arrow::field("deep", array->type())}), {array});
  Status status = Status::UnknownError("");
  OnStatedStack(kStackBytes, [&] { status = to_numera(table).status(); });
  EXPECT_EQ(status, Status::OK());
}

TEST(StackOfToNumera, HoldsTheRefusalOfWhatIsDeeper) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = NestedArray(containers, kDeepest + 1);
    Status status;
    OnStatedStack(kStackBytes, [&] { status = to_numera(array).status(); });
    EXPECT_EQ(status, kTooDeep);
  }
}

TEST(StackOfToNumera, HoldsAFailureOfTheInnermostValue) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto array = DeepestWithoutOffsets(containers);
    Status status;
    OnStatedStack(kStackBytes, [&] { status = to_numera(array).status(); });
    EXPECT_EQ(status, Status::Invalid("Offsets buffer: found 1 bytes, expected enough for 1 "
                                      "elements."));
  }
}

TEST(StackOfToNumera, HoldsTheDeepestChunksWithTypesOfTheirOwn) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto column =
        Chunks({NestedArray(containers, kDeepest), NestedArray(containers, kDeepest)});
    Status status = Status::UnknownError("");
    OnStatedStack(kStackBytes, [&] { status = to_numera(column).status(); });
    EXPECT_EQ(status, Status::OK());
  }
}

TEST(StackOfToNumera, IsStatedApartForRefusedTypesThatArrowSpellsOut) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    const auto type = ::arrow::fixed_size_list(NestedArray(containers, kDeepest - 1)->type(), 1);
    std::string message;
    OnStatedStack(kTypeStackBytes,
                  [&] { message = to_numera(ArrowChunks(type, {})).status().message(); });
    EXPECT_EQ(message, "Unsupported type for Arrrow-NUMERA conversion: " + type->ToString());
  }
}

TEST(StackOfToNumeraDatatype, HoldsTheDeepestTypes) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    for (const size_t levels : {kDeepest, kDeepest + 1}) {
      const auto type = NestedArray(containers, levels)->type();
      std::optional<std::string> name;
      OnStatedStack(kStackBytes, [&] { name = to_numera_datatype(type); });
      EXPECT_EQ(name.has_value(), levels == kDeepest);
    }
  }
}

TEST(StackOfDestruction, HoldsTheDeepestArrowArrays) {
  for (const Containers& containers : kWrittenContainers) {
    SCOPED_TRACE(containers.back().name);
    auto array = NestedArray(containers, kDeepest);
    const std::weak_ptr<::arrow::DataType> type = array->type();
    OnStatedStack(kStackBytes, [&array] { array.reset(); });
    EXPECT_TRUE(type.expired());
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
