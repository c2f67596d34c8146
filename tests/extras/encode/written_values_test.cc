#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/extras/encode/encode.h"
#include "tests/extras/encode/expect_encoded.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"

namespace numera::testing {
namespace {

using namespace std::string_literals;
using extras::make_readable;
using io::arrow::core::to_arrow;

hxArrayPtr Datetime(const std::vector<std::int64_t>& values, std::string_view units,
                    hxArrayPtr time_zone) {
  return WrittenTimestampData(Column<std::int64_t>(values), Char(units), std::move(time_zone));
}

void expect_unchanged(std::string_view type, double length, hxArrayPtr (*data)()) {
  SCOPED_TRACE(std::string(type));
  expect_encoded(WrittenArray(type, length, data()), WrittenArray(type, length, data()));
}

TEST(EncodeWrittenValues, NumbersKeepTheirValidity) {
  expect_encoded(WrittenNumbers<double>({1, 2, 3}, {5}), WrittenNumbers<double>({1, 2, 3}, {5}));
}

TEST(EncodeWrittenValues, TimesOfDayAndLogicalValuesStayAsTheyAre) {
  expect_unchanged("duration", 1,
                   [] { return TimeData(Column<std::int32_t>({7}), Char("seconds")); });
  expect_unchanged("logical", 3, [] { return WrittenBitmap(3, {5}); });
  expect_unchanged("int64", 1, [] { return Column<std::int64_t>({7}); });
}

TEST(EncodeWrittenValues, TimestampsStayAsTheyAre) {
  expect_unchanged("datetime", 2,
                   [] { return Datetime({1, 2}, "microseconds", Char("Europe/Paris")); });
}

TEST(EncodeWrittenValues, ATimeZoneOfBytesBecomesTheirText) {
  const std::string zone = "São";
  expect_encoded(
      WrittenArray("datetime", 1,
                   Datetime({1}, "seconds", hxCreateCharArray(zone.data(), zone.size()))),
      WrittenArray("datetime", 1, Datetime({1}, "seconds", Char("São"))));
}

TEST(EncodeWrittenValues, ATimeZoneThatIsTextAlreadyStays) {
  for (const char* zone : {"São", "日本", "\u00FF"}) {
    expect_encoded(WrittenArray("datetime", 1, Datetime({1}, "seconds", Char(zone))),
                   WrittenArray("datetime", 1, Datetime({1}, "seconds", Char(zone))));
  }
}

TEST(EncodeWrittenValues, DaysBecomeSecondsAndMillisecondsStay) {
  expect_encoded(
      WrittenArray("datetime", 3, DateData(Column<std::int32_t>({-1, 0, 2147483647})), {5}),
      WrittenArray("datetime", 3, Datetime({-86400, 0, 185542587100800}, "seconds", Char("")),
                   {5}));
  expect_encoded(WrittenArray("datetime", 2, DateData(Column<std::int64_t>({-86400000, 1}))),
                 WrittenArray("datetime", 2, Datetime({-86400000, 1}, "milliseconds", Char(""))));
}

TEST(EncodeWrittenValues, TextIsPackedAndKeepsItsValidity) {
  expect_encoded(WrittenArray("string", 3, Strings({u"a", u"", u"b"}), {5}),
                 WrittenArray("string", 3, TextData("ab\0"s, {0, 1, 1, 2}), {5}));
}

TEST(EncodeWrittenValues, MissingTextsAreNullsBesideThoseOfTheValidity) {
  expect_encoded(WrittenArray("string", 3, Strings({std::nullopt, u"", u"b"}), {5}),
                 WrittenArray("string", 3, TextData("b\0"s, {0, 0, 0, 1}), {4}));
  expect_encoded(WrittenArray("string", 3, Strings({std::nullopt, u"", u"b"})),
                 WrittenArray("string", 3, TextData("b\0"s, {0, 0, 0, 1}), {0xFE}));
}

TEST(EncodeWrittenValues, OrdinaryValuesAsDataAreTakenAsSuch) {
  expect_encoded(WrittenArray("logical", 2, Logical({true, false}), {2}),
                 WrittenArray("logical", 2, WrittenBitmap(2, {1}), {2}));
  expect_encoded(WrittenArray("char", 1, Char("a")),
                 WrittenArray("string", 1, TextData("a\0"s, {0, 1})));
  expect_encoded(WrittenArray("string", 1, Cell({Char("a")})),
                 WrittenArray("string", 1, TextData("a\0"s, {0, 1})));
}

TEST(EncodeWrittenValues, CellsOfBytesArePackedUnderBothTheirNames) {
  for (const char* type : {"binary_array", "fixed_binary_array"}) {
    SCOPED_TRACE(type);
    expect_encoded(
        WrittenArray(type, 2, Cell({Column<std::uint8_t>({1, 2}), Column<std::uint8_t>({3})}), {2}),
        WrittenArray("binary_array", 2, TextData("\1\2\3", {0, 2, 3}), {2}));
    expect_encoded(WrittenArray(type, 0, Cell({})),
                   WrittenArray("binary_array", 0, TextData("", {0})));
  }
}

TEST(EncodeWrittenValues, CategoriesArePackedAndCodesAndOrderStay) {
  const auto categorical = [](hxArrayPtr categories) {
    return CategoricalData(std::move(categories), Column<std::int8_t>({1, 0, 1}), Logical({true}));
  };
  const auto expected = [&] {
    return WrittenArray("categorical", 3, categorical(TextData("ab\0"s, {0, 1, 2})), {3});
  };
  expect_encoded(WrittenArray("categorical", 3, categorical(Strings({u"a", u"b"})), {3}),
                 expected());
  expect_encoded(WrittenArray("categorical", 3, categorical(Cell({Char("a"), Char("b")})), {3}),
                 expected());
  expect_encoded(expected(), expected());
}

TEST(EncodeWrittenValues, CodesOfNullsMayBeAnything) {
  const hxArrayPtr readable =
      make_readable(WrittenArray("categorical", 2,
                                 CategoricalData(Strings({u"a"}), Column<std::int32_t>({0, -7}),
                                                 Logical({false})),
                                 {1})
                        .get())
          .ValueOrDie();
  const auto array = to_arrow<::arrow::Array>(readable.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(
      *array,
      *ArrowArray(::arrow::dictionary(::arrow::int32(), ::arrow::large_utf8()), R"(["a", null])")));
}

TEST(EncodeWrittenValues, ANullColumnBecomesDoublesThatAreAllNull) {
  expect_encoded(WrittenArray("null", 9, Scalar<std::int64_t>(9), {0, 0xFE}),
                 WrittenNumbers<double>({0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0}));
  expect_encoded(WrittenArray("null", 0, Scalar<std::int64_t>(0)), WrittenNumbers<double>({}));
}

TEST(EncodeWrittenValues, PackedValuesStayAsTheyAre) {
  expect_unchanged("string", 1, [] { return TextData("a", {0, 1}); });
  expect_unchanged("binary_array", 2, [] { return TextData("\1\2\3", {1, 2, 3}); });
}

TEST(EncodeWrittenValues, BuffersStayAsTheyAre) {
  expect_encoded(BufferEnvelope({1, 2}), BufferEnvelope({1, 2}));
}

TEST(EncodeWrittenValues, NumbersTextAndCodesThatAreReadableAreNotCopied) {
  const hxArrayPtr written = WrittenNumbers<double>({1, 2}, {1});
  const hxArrayPtr readable = make_readable(written.get()).ValueOrDie();
  for (const char* path : {"Data", "Valid"}) {
    const hxArray* from = hxGetField(written.get(), 0, path);
    const hxArray* to = hxGetField(readable.get(), 0, path);
    if (std::string(path) == "Valid") {
      from = hxGetField(from, 0, "Values");
      to = hxGetField(to, 0, "Values");
    }
    EXPECT_EQ(hxGetData(from), hxGetData(to)) << path;
  }
}

TEST(EncodeWrittenValues, AnEnvelopeMayBeAnObject) {
  const hxArrayPtr object =
      ObjectArray("column", {1, 1}, kEnvelopeFields,
                  {{Char("array"), Char("double"), WrittenValidity(1), Scalar(2.0)}});
  expect_encoded(object, WrittenNumbers<double>({2}));
}

}  // namespace
}  // namespace numera::testing
