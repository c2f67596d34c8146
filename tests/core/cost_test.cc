#include <arrow/array/array_primitive.h>
#include <arrow/memory_pool.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/support/allocation_meter.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/nested_values.h"
#include "tests/support/recording_host.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;

constexpr std::int64_t kFew = 10;
constexpr std::int64_t kMany = 1'000'000;

/// The heap use of `work`. A first run creates what is made on first use.
template <class Work>
HeapUse heap_use_of(Work work) {
  work();
  StartMeter();
  work();
  return StopMeter();
}

/// The same, but memory kept from the first run is released, so that all memory of the result
/// counts.
template <class Work>
HeapUse fresh_heap_use_of(Work work) {
  work();
  host::memory::ReleaseUnused();
  StartMeter();
  work();
  return StopMeter();
}

/// A column of doubles in chunks of equal length. Every second value is null.
std::shared_ptr<::arrow::ChunkedArray> doubles(std::int64_t length, int chunks) {
  const auto count = static_cast<size_t>(length);
  const auto chunk = std::make_shared<::arrow::DoubleArray>(
      length, ::arrow::Buffer::FromVector(std::vector<double>(count, 1.5)),
      ::arrow::Buffer::FromVector(std::vector<std::uint8_t>((count + 7) / 8, 0x55)));
  return std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector(static_cast<size_t>(chunks), chunk));
}

std::shared_ptr<::arrow::ChunkedArray> booleans(std::int64_t length) {
  const auto bits = ::arrow::Buffer::FromVector(
      std::vector<std::uint8_t>((static_cast<size_t>(length) + 7) / 8, 0x55));
  return std::make_shared<::arrow::ChunkedArray>(
      std::make_shared<::arrow::BooleanArray>(length, bits));
}

hxArrayPtr encoded_doubles(size_t length) {
  return Numbers<double>(std::vector<double>(length), Bits((length + 7) / 8, 0x55));
}

hxArrayPtr encoded_logicals(size_t length) {
  const Bits bits((length + 7) / 8, 0x55);
  return Envelope("logical", WrittenBitmap(static_cast<double>(length), bits), bits);
}

std::vector<size_t> counts_of_calls() {
  std::vector<size_t> counts;
  for (const char* operation : {"hxCreateNumericArray",
                                "hxCreateUninitNumericArray",
                                "hxCreateStructArray",
                                "hxCreateCharArray",
                                "hxSharedCopy",
                                "hxDestroyArray",
                                "hxGetClassID",
                                "hxGetClassName",
                                "hxIsEmpty",
                                "hxIsNumeric",
                                "hxIsComplex",
                                "hxIsSparse",
                                "hxGetElementSize",
                                "hxGetNumberOfElements",
                                "hxGetDimensions",
                                "hxGetData const",
                                "hxGetData",
                                "hxGetString",
                                "hxGetField",
                                "hxGetFieldChecked",
                                "hxSetCell",
                                "hxReplaceCell",
                                "hxSetField"}) {
    counts.push_back(Calls(operation));
  }
  return counts;
}

template <class Convert>
std::vector<size_t> host_calls_of(Convert convert) {
  Reset();
  EXPECT_TRUE(convert().ok());
  EXPECT_GT(TotalThrowingCalls(), 0U);
  return counts_of_calls();
}

TEST(CostTowardsArrow, IsTheSameNumberOfHostCallsForEveryLength) {
  for (const auto encoded : {encoded_doubles, encoded_logicals}) {
    const auto calls = [encoded](std::int64_t length) {
      const hxArrayPtr value = encoded(static_cast<size_t>(length));
      return host_calls_of([&value] { return to_arrow<::arrow::Array>(value.get()); });
    };
    EXPECT_EQ(calls(kFew), calls(kMany));
  }
}

TEST(CostTowardsArrow, IsTheSameNumberOfSmallAllocationsForEveryLength) {
  for (const auto encoded : {encoded_doubles, encoded_logicals}) {
    const auto use = [encoded](std::int64_t length) {
      const hxArrayPtr value = encoded(static_cast<size_t>(length));
      return heap_use_of([&value] { ASSERT_TRUE(to_arrow<::arrow::Array>(value.get()).ok()); });
    };
    const HeapUse few = use(kFew);
    const HeapUse many = use(kMany);
    EXPECT_EQ(few.allocations, many.allocations);
    EXPECT_EQ(few.peak_bytes, many.peak_bytes);
    EXPECT_GT(few.allocations, 0U);
    EXPECT_LE(few.allocations, 8U);
  }
}

TEST(CostTowardsArrow, GrowsWithTheLevelsOfListsAndNotFaster) {
  const auto allocations = [](size_t levels) {
    const hxArrayPtr value = NestedEncoded({kLargeList}, levels);
    return heap_use_of([&value] { ASSERT_TRUE(to_arrow<::arrow::Array>(value.get()).ok()); })
        .allocations;
  };
  EXPECT_EQ(allocations(300) - allocations(200), allocations(200) - allocations(100));
}

TEST(CostTowardsArrow, TakesNothingFromArrowsPool) {
  const hxArrayPtr value = encoded_doubles(kFew);
  ::arrow::MemoryPool& pool = *::arrow::default_memory_pool();
  const std::int64_t before = pool.total_bytes_allocated();
  ASSERT_TRUE(to_arrow<::arrow::Array>(value.get()).ok());
  EXPECT_EQ(pool.total_bytes_allocated(), before);
}

TEST(CostTowardsTheHost, IsTheSameNumberOfHostCallsForEveryLength) {
  const auto of_doubles = [](std::int64_t length) {
    return host_calls_of([column = doubles(length, 3)] { return to_numera(column); });
  };
  EXPECT_EQ(of_doubles(kFew), of_doubles(kMany));
  const auto of_booleans = [](std::int64_t length) {
    return host_calls_of([column = booleans(length)] { return to_numera(column); });
  };
  EXPECT_EQ(of_booleans(kFew), of_booleans(kMany));
}

TEST(CostTowardsTheHost, IsTheSameNumberOfHostCallsForEveryNumberOfChunks) {
  const auto of_chunks = [](int chunks) {
    return host_calls_of([column = doubles(kFew, chunks)] { return to_numera(column); });
  };
  EXPECT_EQ(of_chunks(1), of_chunks(100));
}

TEST(CostTowardsTheHost, IsTheSameNumberOfAllocationsForEveryLength) {
  const auto use = [](std::int64_t length) {
    return heap_use_of([column = doubles(length, 3)] { ASSERT_TRUE(to_numera(column).ok()); });
  };
  const size_t few = use(100'000).allocations;
  EXPECT_EQ(few, use(kMany).allocations);
  EXPECT_GT(few, 0U);
}

TEST(CostTowardsTheHost, IsOneArrayOfTheFinalSizeForEachPartOfTheResult) {
  const auto column = doubles(1000, 3);
  Reset();
  ASSERT_TRUE(to_numera(column).ok());
  std::vector<Creation> numbers;
  for (const Creation& creation : Created()) {
    if (creation.operation.find("NumericArray") != std::string::npos) numbers.push_back(creation);
  }
  const char* const unwritten = "hxCreateUninitNumericArray";
  EXPECT_EQ(numbers, (std::vector<Creation>{{unwritten, hxClassID::Double, {3000, 1}},
                                            {unwritten, hxClassID::UInt8, {375, 1}},
                                            {unwritten, hxClassID::Double, {1, 1}}}));
}

TEST(CostTowardsTheHost, HoldsLittleMoreThanTheResult) {
  struct Case {
    const char* what;
    std::shared_ptr<::arrow::ChunkedArray> column;
    double result_bytes;
  };
  const Case cases[] = {
      {"one chunk", doubles(kMany, 1), 8e6 + 125e3},
      {"four chunks", doubles(kMany, 4), 32e6 + 500e3},
      {"booleans", booleans(8 * kMany), 1e6},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    const HeapUse use = fresh_heap_use_of([&one] { ASSERT_TRUE(to_numera(one.column).ok()); });
    EXPECT_GE(static_cast<double>(use.peak_bytes), one.result_bytes);
    EXPECT_LE(static_cast<double>(use.peak_bytes), 1.05 * one.result_bytes);
  }
}

TEST(CostTowardsTheHost, OfATableHoldsLittleMoreThanTheResult) {
  const auto column = doubles(kMany, 1);
  const auto table = ::arrow::Table::Make(
      ::arrow::schema(
          {::arrow::field("x", ::arrow::float64()), ::arrow::field("y", ::arrow::float64())}),
      std::vector<std::shared_ptr<::arrow::ChunkedArray>>{column, column}, kMany);
  const HeapUse use = fresh_heap_use_of([&table] { ASSERT_TRUE(to_numera(table).ok()); });
  constexpr double kResult = 2 * (8e6 + 125e3);
  EXPECT_GE(static_cast<double>(use.peak_bytes), kResult);
  EXPECT_LE(static_cast<double>(use.peak_bytes), 1.05 * kResult);
}

}  // namespace
}  // namespace numera::io::arrow::core
