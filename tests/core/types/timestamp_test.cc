#include "numera/core/types/datetime.h"

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

Status StatusOfReadingTimestamp(const hxArrayPtr& timestamp) {
  const hxArrayPtr encoded = Envelope("datetime", hxSharedCopy(timestamp.get()));
  return StatusOfReading(encoded);
}

TEST(TimestampToArrow, TakesUnitAndTimeZoneFromItsTexts) {
  struct Case {
    const char* units;
    const char* time_zone;
    std::shared_ptr<::arrow::DataType> type;
  };
  const Case cases[] = {
      {"seconds", "UTC", ::arrow::timestamp(TimeUnit::SECOND, "UTC")},
      {"milliseconds", "", ::arrow::timestamp(TimeUnit::MILLI)},
      {"microseconds", "+05:30", ::arrow::timestamp(TimeUnit::MICRO, "+05:30")},
      {"nanoseconds", "Europe/Paris", ::arrow::timestamp(TimeUnit::NANO, "Europe/Paris")},
      {"ms", "no such zone", ::arrow::timestamp(TimeUnit::MILLI, "no such zone")},
      {"", "Z\xC3\xBCrich", ::arrow::timestamp(TimeUnit::MILLI, "Z\xC3\xBCrich")}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.units);
    const hxArrayPtr encoded =
        Envelope("datetime",
                 TimestampData(Column<std::int64_t>({0, 86400}), Char(c.units), Char(c.time_zone)));
    const auto timestamps = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
    const std::vector<std::int64_t> values = {0, 86400};
    const auto expected = std::make_shared<::arrow::TimestampArray>(
        c.type, 2, ::arrow::Buffer::Wrap(values), nullptr, 0);
    EXPECT_TRUE(SameArray(*timestamps, *expected));
  }
}

TEST(TimestampToArrow, BorrowsItsValues) {
  const hxArrayPtr encoded =
      Envelope("datetime", TimestampData(Row<std::int64_t>({1, 2, 3}), Char("seconds"), Char("")));
  const auto timestamps = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  const hxArray* data = hxGetField(encoded.get(), 0, "Data");
  EXPECT_EQ(timestamps->length(), 3);
  EXPECT_EQ(timestamps->data()->buffers[1]->data(), hxGetData(hxGetField(data, 0, "Values")));
}

TEST(TimestampToArrow, TakesItsNullsFromValid) {
  const hxArrayPtr encoded = Envelope(
      "datetime", TimestampData(Column<std::int64_t>({1, 2}), Char("seconds"), Char("")), {0b10});
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::timestamp(TimeUnit::SECOND), "[null, 2]")));
}

TEST(TimestampToArrow, IgnoresTheDateType) {
  const hxArrayPtr date = Envelope("datetime", Struct({{"Values", Column<std::int64_t>({5})},
                                                       {"Units", Char("seconds")},
                                                       {"TimeZone", Char("")},
                                                       {"DateType", Char("Date")}}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(date.get())),
                        *ArrowArray(::arrow::timestamp(TimeUnit::SECOND), "[5]")));
}

TEST(TimestampToArrow, ReportsWhatIsMissingOrOfAnotherClassInOrder) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {TimestampData(Empty(), Empty(), Empty()), "Missing field 'Values' in input struct array"},
      {TimestampData(Column<std::int32_t>({1}), Empty(), Empty()),
       "Incorrect type 'int32' for struct array field 'Values'"},
      {TimestampData(Column<std::int64_t>({1}), Empty(), Scalar(1.0)),
       "Missing field 'Units' in input struct array"},
      {TimestampData(Column<std::int64_t>({1}), Scalar(1.0), Empty()),
       "Incorrect type 'double' for struct array field 'Units'"},
      {TimestampData(Column<std::int64_t>({1}), Char("seconds"), Empty()),
       "Missing field 'TimeZone' in input struct array"},
      {TimestampData(Column<std::int64_t>({1}), Char("seconds"), Strings({u"UTC"})),
       "Incorrect type 'string' for struct array field 'TimeZone'"},
      {TimestampData(Complex<std::int64_t>({1, 1}, {{1, 2}}), Char("seconds"), Char("")),
       "Field 'Values': found a complex 1-by-1 int64 array, expected a real array that is not "
       "sparse."},
      {TimestampData(host::memory::CreateSparseArray(Dims{1, 1}, hxClassID::Int64), Char("seconds"),
                     Char("")),
       "Field 'Values': found a sparse 1-by-1 int64 array, expected a real array that is not "
       "sparse."}};
  for (const auto& [timestamp, message] : cases) {
    EXPECT_EQ(StatusOfReadingTimestamp(timestamp), Status::TypeError(message));
  }
}

TEST(TimestampToArrow, LetsTheHostReportFieldsThatAStructLacks) {
  const hxArrayPtr lacking[] = {
      Struct({{"Units", Char("seconds")}, {"TimeZone", Char("")}}),
      Struct({{"Values", Column<std::int64_t>({1})}, {"TimeZone", Char("")}}),
      Struct({{"Values", Column<std::int64_t>({1})}, {"Units", Char("seconds")}})};
  for (const hxArrayPtr& timestamp : lacking) {
    EXPECT_THAT([&] { return StatusOfReadingTimestamp(timestamp); },
                ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
  }
  const hxArrayPtr no_element = StructArray({0, 1}, {"Values", "Units", "TimeZone"}, {});
  EXPECT_THAT([&] { return StatusOfReadingTimestamp(no_element); },
              ::testing::ThrowsMessage<std::out_of_range>("Struct index is out of range."));
}

TEST(TimestampToArrow, LetsTheHostReportATimeZoneThatIsNoText) {
  const hxArrayPtr timestamp = TimestampData(Column<std::int64_t>({1}), Char("seconds"),
                                             Char(std::u16string_view(u"\xD800", 1)));
  EXPECT_THROW(static_cast<void>(StatusOfReadingTimestamp(timestamp)), hxCodecError);
}

TEST(TimestampToNumera, WritesUnitTimeZoneAndValues) {
  const auto zoned = ArrowArray(::arrow::timestamp(TimeUnit::NANO, "Europe/Paris"), "[1, -2]");
  EXPECT_TRUE(
      SameHostValue(ValueOf(to_numera(zoned)).get(),
                    WrittenArray("datetime", 2,
                                 WrittenTimestampData(Column<std::int64_t>({1, -2}),
                                                      Char("nanoseconds"), Char("Europe/Paris")))
                        .get()));
  const auto local = ArrowArray(::arrow::timestamp(TimeUnit::SECOND), "[null, 3]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(local)).get(),
      WrittenArray("datetime", 2,
                   WrittenTimestampData(Column<std::int64_t>({0, 3}), Char("seconds"), Char("")),
                   {0b11111110})
          .get()));
}

TEST(TimestampToNumera, WritesTheTimeZoneOneCharacterAByte) {
  const auto type = ::arrow::timestamp(TimeUnit::SECOND, "Z\xC3\xBCrich");
  EXPECT_TRUE(SameHostValue(
      DataOf(ArrowChunks(type, {})).get(),
      WrittenTimestampData(Column<std::int64_t>({}), Char("seconds"), Char(u"Z\u00C3\u00BCrich"))
          .get()));
}

TEST(TimestampToNumera, JoinsChunksAndHonoursOffsets) {
  const auto seconds = ArrowArray(::arrow::timestamp(TimeUnit::SECOND), "[1, 2, 3, 4]");
  const auto chunks = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{seconds->Slice(2), seconds->Slice(0, 0), seconds});
  EXPECT_TRUE(SameHostValue(
      DataOf(chunks).get(),
      WrittenTimestampData(Column<std::int64_t>({3, 4, 1, 2, 3, 4}), Char("seconds"), Char(""))
          .get()));
}

TEST(TimestampToNumera, RefusesAChunkWhoseBufferEndsEarly) {
  const auto short_array = ::arrow::MakeArray(::arrow::ArrayData::Make(
      ::arrow::timestamp(TimeUnit::SECOND), 2, {nullptr, ArrowBuffer({1, 2, 3})}, 0));
  EXPECT_EQ(to_numera(short_array).status(),
            Status::Invalid("Values buffer: found 3 bytes, expected enough for 2 elements."));
}

TEST(TimestampToNumera, ReturnsToTheSameTimestamps) {
  for (const char* time_zone : {"", "UTC", "America/New_York"}) {
    const auto type = ::arrow::timestamp(TimeUnit::MICRO, time_zone);
    const auto timestamps = ArrowArray(type, "[1, null, -3]");
    const hxArrayPtr written = ValueOf(to_numera(timestamps));
    EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(written.get())), *timestamps));
  }
}

TEST(DurationToNumera, IsABareColumnWithoutItsUnit) {
  const auto durations = ArrowArray(::arrow::duration(TimeUnit::MILLI), "[5, -6]");
  EXPECT_TRUE(SameHostValue(ValueOf(to_numera(durations)).get(),
                            WrittenNumbers<std::int64_t>({5, -6}).get()));
}

TEST(Timestamp, LeavesNothingBehindWhereverItFails) {
  const hxArrayPtr encoded = Envelope(
      "datetime", TimestampData(Column<std::int64_t>({1}), Char("seconds"), Char("UTC")), {1});
  FailReading(encoded);
  const auto timestamps = ArrowArray(::arrow::timestamp(TimeUnit::SECOND, "UTC"), "[1, null]");
  FailWriting(timestamps);
}

}  // namespace
}  // namespace numera::io::arrow::core
