#include "numera/core/types/duration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;
using ::arrow::TimeUnit;

hxArrayPtr TimeOfDay(hxArrayPtr values, std::string_view units) {
  return TimeData(std::move(values), Char(units));
}

Status StatusOfReadingTime(const hxArrayPtr& time) {
  const hxArrayPtr encoded = Envelope("duration", hxSharedCopy(time.get()));
  return StatusOfReading(encoded);
}

TEST(TimeUnit, IsMillisecondsUnlessSpeltExactly) {
  const std::pair<std::string, TimeUnit::type> cases[] = {
      {"seconds", TimeUnit::SECOND},
      {"milliseconds", TimeUnit::MILLI},
      {"microseconds", TimeUnit::MICRO},
      {"nanoseconds", TimeUnit::NANO},
      {"SECONDS", TimeUnit::MILLI},
      {"Microseconds", TimeUnit::MILLI},
      {"sec", TimeUnit::MILLI},
      {"ms", TimeUnit::MILLI},
      {"seconds ", TimeUnit::MILLI},
      {" nanoseconds", TimeUnit::MILLI},
      {"", TimeUnit::MILLI},
      {std::string("seconds\0", 8), TimeUnit::MILLI}};
  for (const auto& [text, unit] : cases) EXPECT_EQ(parse_time_unit(text), unit) << text;
}

TEST(TimeUnit, IsWrittenByItsWholeName) {
  const std::pair<TimeUnit::type, std::string_view> cases[] = {{TimeUnit::SECOND, "seconds"},
                                                               {TimeUnit::MILLI, "milliseconds"},
                                                               {TimeUnit::MICRO, "microseconds"},
                                                               {TimeUnit::NANO, "nanoseconds"}};
  for (const auto& [unit, name] : cases) {
    EXPECT_TRUE(SameHostValue(time_unit_name(unit).get(), Char(name).get()));
  }
}

TEST(TimeOfDayToArrow, TakesItsWidthFromTheValuesAndItsUnitFromTheUnits) {
  struct Case {
    const char* units;
    hxArrayPtr values;
    std::shared_ptr<::arrow::DataType> type;
  };
  const Case cases[] = {
      {"seconds", Column<std::int32_t>({0, 86399}), ::arrow::time32(TimeUnit::SECOND)},
      {"milliseconds", Column<std::int32_t>({0, 86399}), ::arrow::time32(TimeUnit::MILLI)},
      {"SECONDS", Column<std::int32_t>({0, 86399}), ::arrow::time32(TimeUnit::MILLI)},
      {"sec", Column<std::int32_t>({0, 86399}), ::arrow::time32(TimeUnit::MILLI)},
      {"", Column<std::int32_t>({0, 86399}), ::arrow::time32(TimeUnit::MILLI)},
      {"microseconds", Column<std::int64_t>({0, 86399}), ::arrow::time64(TimeUnit::MICRO)},
      {"nanoseconds", Column<std::int64_t>({0, 86399}), ::arrow::time64(TimeUnit::NANO)}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.units);
    const hxArrayPtr encoded =
        Envelope("duration", TimeOfDay(hxSharedCopy(c.values.get()), c.units));
    const auto times = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
    EXPECT_TRUE(SameArray(*times, *ArrowArray(c.type, "[0, 86399]")));
  }
}

TEST(TimeOfDayToArrow, BorrowsItsValues) {
  const hxArrayPtr encoded =
      Envelope("duration", TimeOfDay(Column<std::int32_t>({1, 2, 3}), "seconds"));
  const auto times = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  const hxArray* data = hxGetField(encoded.get(), 0, "Data");
  EXPECT_EQ(times->data()->buffers[1]->data(), hxGetData(hxGetField(data, 0, "Values")));
}

TEST(TimeOfDayToArrow, ReadsValuesOfAnyShapeInStorageOrder) {
  const hxArrayPtr encoded =
      Envelope("duration", TimeOfDay(Matrix<std::int64_t>({2, 2}, {1, 2, 3, 4}), "nanoseconds"));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::time64(TimeUnit::NANO), "[1, 2, 3, 4]")));
}

TEST(TimeOfDayToArrow, ReadsNoValues) {
  const hxArrayPtr encoded = Envelope("duration", TimeOfDay(Column<std::int32_t>({}), "seconds"));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::time32(TimeUnit::SECOND), "[]")));
}

TEST(TimeOfDayToArrow, TakesItsNullsFromValid) {
  const hxArrayPtr encoded =
      Envelope("duration", TimeOfDay(Column<std::int32_t>({1, 2, 3}), "seconds"), {0b101});
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::time32(TimeUnit::SECOND), "[1, null, 3]")));
}

TEST(TimeOfDayToArrow, RefusesAUnitThatTheWidthDoesNotTake) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {TimeOfDay(Column<std::int32_t>({1}), "microseconds"),
       "Field 'Units': found 'microseconds' with 'Values' of class int32, expected 'seconds' or "
       "'milliseconds'."},
      {TimeOfDay(Column<std::int32_t>({1}), "nanoseconds"),
       "Field 'Units': found 'nanoseconds' with 'Values' of class int32, expected 'seconds' or "
       "'milliseconds'."},
      {TimeOfDay(Column<std::int64_t>({1}), "seconds"),
       "Field 'Units': found 'seconds' with 'Values' of class int64, expected 'microseconds' or "
       "'nanoseconds'."},
      {TimeOfDay(Column<std::int64_t>({1}), "milliseconds"),
       "Field 'Units': found 'milliseconds' with 'Values' of class int64, expected 'microseconds' "
       "or 'nanoseconds'."},
      {TimeOfDay(Column<std::int64_t>({1}), "nanosecond"),
       "Field 'Units': found 'milliseconds' with 'Values' of class int64, expected 'microseconds' "
       "or 'nanoseconds'."}};
  for (const auto& [time, message] : cases) {
    EXPECT_EQ(StatusOfReadingTime(time), Status::Invalid(message));
  }
}

TEST(TimeOfDayToArrow, ReportsWhatIsMissingOrOfAnotherClassInOrder) {
  const std::string not_an_integer =
      "The values field must be either an int32 array or an int64 array.";
  const std::pair<hxArrayPtr, std::string> cases[] = {
      {TimeData(Empty(), Empty()), "Missing field 'Values' in input struct array"},
      {TimeData(Column<double>({1}), Empty()), "Missing field 'Units' in input struct array"},
      {TimeData(Column<double>({1}), Scalar(1.0)),
       "Incorrect type 'double' for struct array field 'Units'"},
      {TimeOfDay(Column<double>({1}), "seconds"), not_an_integer},
      {TimeOfDay(Column<std::uint32_t>({1}), "seconds"), not_an_integer},
      {TimeOfDay(Struct({}), "nanoseconds"), not_an_integer},
      {TimeOfDay(Complex<std::int32_t>({1, 1}, {{1, 2}}), "seconds"),
       "Field 'Values': found a complex 1-by-1 int32 array, expected a real array that is not "
       "sparse."}};
  for (const auto& [time, message] : cases) {
    EXPECT_EQ(StatusOfReadingTime(time), Status::TypeError(message));
  }
}

TEST(TimeOfDayToArrow, RefusesSparseValues) {
  const hxArrayPtr time =
      TimeOfDay(host::memory::CreateSparseArray(Dims{2, 1}, hxClassID::Int64), "nanoseconds");
  EXPECT_EQ(StatusOfReadingTime(time),
            Status::TypeError("Field 'Values': found a sparse 2-by-1 int64 array, expected a real "
                              "array that is not sparse."));
}

TEST(TimeOfDayToArrow, LetsTheHostReportFieldsThatAStructLacks) {
  const hxArrayPtr no_values = Struct({{"Units", Char("seconds")}});
  const hxArrayPtr no_units = Struct({{"Values", Column<std::int32_t>({1})}});
  const hxArrayPtr no_element = StructArray({0, 0}, {"Values", "Units"}, {});
  EXPECT_THAT([&] { return StatusOfReadingTime(no_values); },
              ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
  EXPECT_THAT([&] { return StatusOfReadingTime(no_units); },
              ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
  EXPECT_THAT([&] { return StatusOfReadingTime(no_element); },
              ::testing::ThrowsMessage<std::out_of_range>("Struct index is out of range."));
}

TEST(TimeTypeFromStruct, IsATypeErrorWithoutElements) {
  const hxArrayPtr no_element = StructArray({0, 0}, {"Values", "Units"}, {});
  EXPECT_EQ(time_type_from_struct(no_element.get()).status(),
            Status::TypeError("The values field must be either an int32 array or an int64 array."));
}

TEST(DateToNumera, WritesDaysAndMillisecondsUnchanged) {
  const auto days = ArrowArray(::arrow::date32(), "[0, -1, 19000]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(days)).get(),
      WrittenArray("datetime", 3, DateData(Column<std::int32_t>({0, -1, 19000}))).get()));
  const auto milliseconds = ArrowArray(::arrow::date64(), "[0, 86400000]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(milliseconds)).get(),
      WrittenArray("datetime", 2, DateData(Column<std::int64_t>({0, 86400000}))).get()));
}

TEST(DateToNumera, JoinsChunksAndHonoursOffsets) {
  const auto days = ArrowArray(::arrow::date32(), "[1, 2, 3, 4]");
  const auto chunks = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{days->Slice(1, 2), days->Slice(4), days->Slice(3)});
  EXPECT_TRUE(SameHostValue(DataOf(chunks).get(), DateData(Column<std::int32_t>({2, 3, 4})).get()));
}

TEST(TimeToNumera, WritesEveryUnitByNameAndTheValuesUnchanged) {
  struct Case {
    std::shared_ptr<::arrow::DataType> type;
    const char* units;
    hxArrayPtr values;
  };
  const Case cases[] = {
      {::arrow::time32(TimeUnit::SECOND), "seconds", Column<std::int32_t>({7, 0})},
      {::arrow::time32(TimeUnit::MILLI), "milliseconds", Column<std::int32_t>({7, 0})},
      {::arrow::time64(TimeUnit::MICRO), "microseconds", Column<std::int64_t>({7, 0})},
      {::arrow::time64(TimeUnit::NANO), "nanoseconds", Column<std::int64_t>({7, 0})}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.units);
    const auto written = ValueOf(to_numera(ArrowArray(c.type, "[7, 0]")));
    EXPECT_TRUE(SameHostValue(
        written.get(),
        WrittenArray("duration", 2, TimeOfDay(hxSharedCopy(c.values.get()), c.units)).get()));
  }
}

TEST(TimeToNumera, WritesAnEmptyColumnForNoElementsAndForNoChunks) {
  const auto type = ::arrow::time32(TimeUnit::SECOND);
  const auto expected = TimeOfDay(Column<std::int32_t>({}), "seconds");
  EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(type, {"[]"})).get(), expected.get()));
  EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(type, {})).get(), expected.get()));
}

TEST(TimeToNumera, ReturnsToTheSameTimes) {
  const auto times = ArrowArray(::arrow::time64(TimeUnit::MICRO), "[1, null, 3]");
  const hxArrayPtr written = ValueOf(to_numera(times));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(written.get())), *times));
}

TEST(DateAndTimeToNumera, RefuseAChunkWhoseBufferEndsEarly) {
  const auto short_array = [](std::shared_ptr<::arrow::DataType> type) {
    return ::arrow::MakeArray(
        ::arrow::ArrayData::Make(std::move(type), 3, {nullptr, ArrowBuffer({1, 2, 3, 4})}, 0));
  };
  for (const auto& type : {::arrow::date32(), ::arrow::time32(TimeUnit::MILLI)}) {
    EXPECT_EQ(to_numera(short_array(type)).status(),
              Status::Invalid("Values buffer: found 4 bytes, expected enough for 3 elements."));
  }
}

TEST(DateAndTime, LeaveNothingBehindWhereverTheyFail) {
  const hxArrayPtr encoded =
      Envelope("duration", TimeOfDay(Column<std::int32_t>({1}), "seconds"), {1});
  FailReading(encoded);
  const auto days = ArrowArray(::arrow::date32(), "[1, null]");
  FailWriting(days);
  const auto times = ArrowArray(::arrow::time32(TimeUnit::SECOND), "[1, null]");
  FailWriting(times);
}

}  // namespace
}  // namespace numera::io::arrow::core
