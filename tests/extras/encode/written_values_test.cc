#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/extras/encode/encode.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using extras::make_readable;
using io::arrow::core::to_arrow;

hxArrayPtr Written(std::string_view type, double length, hxArrayPtr data,
                   const std::vector<std::uint8_t>& valid = {}) {
  return WrittenEnvelope("array", type, WrittenValidity(length, valid), std::move(data));
}

hxArrayPtr Packed(const std::vector<std::uint8_t>& bytes,
                  const std::vector<std::uint64_t>& offsets) {
  return Struct(
      {{"Values", Column<std::uint8_t>(bytes)}, {"StartOffsets", Column<std::uint64_t>(offsets)}});
}

hxArrayPtr Datetime(const std::vector<std::int64_t>& values, std::string_view units,
                    hxArrayPtr time_zone) {
  return Struct({{"Values", Column<std::int64_t>(values)},
                 {"Units", Char(units)},
                 {"TimeZone", std::move(time_zone)},
                 {"DateType", Char("Timestamp")}});
}

void expect_encoded(const hxArrayPtr& value, const hxArrayPtr& expected) {
  const auto readable = make_readable(value.get());
  ASSERT_TRUE(readable.ok()) << readable.status();
  EXPECT_TRUE(SameHostValue(readable->get(), expected.get()));
}

void expect_unchanged(std::string_view type, double length, hxArrayPtr (*data)()) {
  SCOPED_TRACE(std::string(type));
  expect_encoded(Written(type, length, data()), Written(type, length, data()));
}

TEST(EncodeWrittenValues, NumbersKeepTheirValidity) {
  expect_encoded(Written("double", 3, Column<double>({1, 2, 3}), {5}),
                 Written("double", 3, Column<double>({1, 2, 3}), {5}));
}

TEST(EncodeWrittenValues, TimesOfDayAndLogicalValuesStayAsTheyAre) {
  expect_unchanged("duration", 1, [] {
    return Struct({{"Values", Column<std::int32_t>({7})}, {"Units", Char("seconds")}});
  });
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
      Written("datetime", 1, Datetime({1}, "seconds", hxCreateCharArray(zone.data(), zone.size()))),
      Written("datetime", 1, Datetime({1}, "seconds", Char("São"))));
}

TEST(EncodeWrittenValues, ATimeZoneThatIsTextAlreadyStays) {
  for (const char* zone : {"São", "日本", "\u00FF"}) {
    expect_encoded(Written("datetime", 1, Datetime({1}, "seconds", Char(zone))),
                   Written("datetime", 1, Datetime({1}, "seconds", Char(zone))));
  }
}

TEST(EncodeWrittenValues, DaysBecomeSecondsAndMillisecondsStay) {
  const auto dates = [](hxArrayPtr values) {
    return Struct({{"Values", std::move(values)}, {"DateType", Char("Date")}});
  };
  expect_encoded(
      Written("datetime", 3, dates(Column<std::int32_t>({-1, 0, 2147483647})), {5}),
      Written("datetime", 3, Datetime({-86400, 0, 185542587100800}, "seconds", Char("")), {5}));
  expect_encoded(Written("datetime", 2, dates(Column<std::int64_t>({-86400000, 1}))),
                 Written("datetime", 2, Datetime({-86400000, 1}, "milliseconds", Char(""))));
}

TEST(EncodeWrittenValues, TextIsPackedAndKeepsItsValidity) {
  expect_encoded(Written("string", 3, Strings({u"a", u"", u"b"}), {5}),
                 Written("string", 3, Packed({'a', 'b', 0}, {0, 1, 1, 2}), {5}));
}

TEST(EncodeWrittenValues, MissingTextsAreNullsBesideThoseOfTheValidity) {
  expect_encoded(Written("string", 3, Strings({std::nullopt, u"", u"b"}), {5}),
                 Written("string", 3, Packed({'b', 0}, {0, 0, 0, 1}), {4}));
  expect_encoded(Written("string", 3, Strings({std::nullopt, u"", u"b"})),
                 Written("string", 3, Packed({'b', 0}, {0, 0, 0, 1}), {0xFE}));
}

TEST(EncodeWrittenValues, OrdinaryValuesAsDataAreTakenAsSuch) {
  expect_encoded(Written("logical", 2, Logical({true, false}), {2}),
                 Written("logical", 2, WrittenBitmap(2, {1}), {2}));
  expect_encoded(Written("char", 1, Char("a")), Written("string", 1, Packed({'a', 0}, {0, 1})));
  expect_encoded(Written("string", 1, Cell({Char("a")})),
                 Written("string", 1, Packed({'a', 0}, {0, 1})));
}

TEST(EncodeWrittenValues, CellsOfBytesArePackedUnderBothTheirNames) {
  for (const char* type : {"binary_array", "fixed_binary_array"}) {
    SCOPED_TRACE(type);
    expect_encoded(
        Written(type, 2, Cell({Column<std::uint8_t>({1, 2}), Column<std::uint8_t>({3})}), {2}),
        Written("binary_array", 2, Packed({1, 2, 3}, {0, 2, 3}), {2}));
    expect_encoded(Written(type, 0, Cell({})), Written("binary_array", 0, Packed({}, {0})));
  }
}

TEST(EncodeWrittenValues, CategoriesArePackedAndCodesAndOrderStay) {
  const auto categorical = [](hxArrayPtr categories) {
    return Struct({{"Categories", std::move(categories)},
                   {"Values", Column<std::int8_t>({1, 0, 1})},
                   {"Ordinal", Logical({true})}});
  };
  const auto expected = [&] {
    return Written("categorical", 3, categorical(Packed({'a', 'b', 0}, {0, 1, 2})), {3});
  };
  expect_encoded(Written("categorical", 3, categorical(Strings({u"a", u"b"})), {3}), expected());
  expect_encoded(Written("categorical", 3, categorical(Cell({Char("a"), Char("b")})), {3}),
                 expected());
  expect_encoded(expected(), expected());
}

TEST(EncodeWrittenValues, CodesOfNullsMayBeAnything) {
  const hxArrayPtr readable =
      make_readable(Written("categorical", 2,
                            Struct({{"Categories", Strings({u"a"})},
                                    {"Values", Column<std::int32_t>({0, -7})},
                                    {"Ordinal", Logical({false})}}),
                            {1})
                        .get())
          .ValueOrDie();
  const auto array = to_arrow<::arrow::Array>(readable.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(
      *array,
      *ArrowArray(::arrow::dictionary(::arrow::int32(), ::arrow::large_utf8()), R"(["a", null])")));
}

TEST(EncodeWrittenValues, ANullColumnBecomesDoublesThatAreAllNull) {
  expect_encoded(Written("null", 9, Scalar<std::int64_t>(9), {0, 0xFE}),
                 Written("double", 9, Column<double>({0, 0, 0, 0, 0, 0, 0, 0, 0}), {0, 0}));
  expect_encoded(Written("null", 0, Scalar<std::int64_t>(0)),
                 Written("double", 0, Column<double>({})));
}

TEST(EncodeWrittenValues, PackedValuesStayAsTheyAre) {
  expect_unchanged("string", 1, [] { return Packed({'a'}, {0, 1}); });
  expect_unchanged("binary_array", 2, [] { return Packed({1, 2, 3}, {1, 2, 3}); });
}

TEST(EncodeWrittenValues, BuffersStayAsTheyAre) {
  expect_encoded(BufferEnvelope({1, 2}), BufferEnvelope({1, 2}));
}

TEST(EncodeWrittenValues, NumbersTextAndCodesThatAreReadableAreNotCopied) {
  const hxArrayPtr written = Written("double", 2, Column<double>({1, 2}), {1});
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
      ObjectArray("column", {1, 1}, {"ArrowType", "Type", "Valid", "Data"},
                  {{Char("array"), Char("double"), WrittenValidity(1), Scalar(2.0)}});
  expect_encoded(object, Written("double", 1, Scalar(2.0)));
}

}  // namespace
}  // namespace numera::testing
