#include "numera/core/types/categorical.h"

#include <arrow/array/array_dict.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/core/fail_conversions.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

/// The categories "a" and "bc".
hxArrayPtr TwoCategories() { return TextData("abc", {0, 1, 3}); }

/// Reads data that outlives the result.
ArrayResult read_categories(const hxArrayPtr& data) {
  const hxArrayPtr encoded = Envelope("categorical", hxSharedCopy(data.get()));
  return to_arrow<::arrow::Array>(encoded.get());
}

TEST(CategoricalToArrow, BecomesADictionaryOfLargeText) {
  const hxArrayPtr encoded = Envelope(
      "categorical",
      CategoricalData(TwoCategories(), Column<std::int8_t>({1, 0, 1, 1}), Logical({false})),
      {0b1011});

  const auto array = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::large_utf8());
  EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[1, 0, null, 1]", R"(["a", "bc"])")));
}

TEST(CategoricalToArrow, TakesTheIndexTypeFromTheValues) {
  const std::pair<hxArrayPtr, std::shared_ptr<::arrow::DataType>> cases[] = {
      {Column<std::int8_t>({1, 0}), ::arrow::int8()},
      {Column<std::uint8_t>({1, 0}), ::arrow::uint8()},
      {Column<std::int16_t>({1, 0}), ::arrow::int16()},
      {Column<std::uint16_t>({1, 0}), ::arrow::uint16()},
      {Column<std::int32_t>({1, 0}), ::arrow::int32()},
      {Column<std::uint32_t>({1, 0}), ::arrow::uint32()},
      {Column<std::int64_t>({1, 0}), ::arrow::int64()},
      {Column<std::uint64_t>({1, 0}), ::arrow::uint64()}};
  for (const auto& [codes, index_type] : cases) {
    SCOPED_TRACE(index_type->ToString());
    const hxArrayPtr data =
        CategoricalData(TwoCategories(), hxSharedCopy(codes.get()), Logical({true}));

    const auto array = ValueOf(read_categories(data));

    const auto type = ::arrow::dictionary(index_type, ::arrow::large_utf8(), /*ordered=*/true);
    EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[1, 0]", R"(["a", "bc"])")));
  }
}

TEST(CategoricalToArrow, HasNarrowTextWhereThatIsAsked) {
  const hxArrayPtr data =
      CategoricalData(TwoCategories(), Column<std::int8_t>({1, 0}), Logical({false}));

  const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, false));

  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[1, 0]", R"(["a", "bc"])")));
}

TEST(CategoricalToArrow, BorrowsCodesCategoriesAndValidity) {
  const hxArrayPtr encoded = Envelope(
      "categorical",
      CategoricalData(TwoCategories(), Column<std::int16_t>({1, 0}), Logical({false})), {0b01});

  const auto array = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

  const hxArray* const data = hxGetField(encoded.get(), 0, "Data");
  const hxArray* const valid = hxGetField(encoded.get(), 0, "Valid");
  const hxArray* const categories = hxGetField(data, 0, "Categories");
  EXPECT_EQ(array->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_EQ(array->data()->buffers[1]->data(), hxGetData(hxGetField(data, 0, "Values")));
  EXPECT_EQ(array->data()->null_count, ::arrow::kUnknownNullCount);
  const ::arrow::ArrayData& dictionary = *array->data()->dictionary;
  EXPECT_EQ(dictionary.buffers[0], nullptr);
  EXPECT_EQ(dictionary.buffers[1]->data(), hxGetData(hxGetField(categories, 0, "StartOffsets")));
  EXPECT_EQ(dictionary.buffers[2]->data(), hxGetData(hxGetField(categories, 0, "Values")));
}

TEST(CategoricalToArrow, KeepsCategoriesOfNoElements) {
  const hxArrayPtr data =
      CategoricalData(TwoCategories(), Column<std::int8_t>({}), Logical({false}));

  const auto array = ValueOf(read_categories(data));

  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::large_utf8());
  EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[]", R"(["a", "bc"])")));
}

TEST(CategoricalToArrow, DoesNotCompareCodesWithTheCategories) {
  const hxArrayPtr data =
      CategoricalData(TwoCategories(), Column<std::int8_t>({7, -1}), Logical({false}));

  const auto array = ValueOf(read_categories(data));

  const auto& indices = *static_cast<const ::arrow::DictionaryArray&>(*array).indices();
  EXPECT_TRUE(SameArray(indices, *ArrowArray(::arrow::int8(), "[7, -1]")));
}

TEST(CategoricalToArrow, PassesOnCategoriesOfLengthMinusOne) {
  const hxArrayPtr data =
      CategoricalData(TextData("abc", {}), Column<std::int8_t>({}), Logical({false}));

  const auto array = ValueOf(read_categories(data));

  EXPECT_EQ(array->data()->dictionary->length, -1);
}

TEST(CategoricalToArrow, TakesAnyNonZeroOrdinalForTrue) {
  hxArrayPtr ordinal = Logical({true});
  *static_cast<std::uint8_t*>(hxGetData(ordinal.get())) = 2;
  const hxArrayPtr data =
      CategoricalData(TwoCategories(), Column<std::int8_t>({0}), std::move(ordinal));

  const auto array = ValueOf(read_categories(data));

  EXPECT_TRUE(static_cast<const ::arrow::DictionaryType&>(*array->type()).ordered());
}

TEST(CategoricalToArrow, RefusesFieldsThatAreEmptyOrOfAnotherClass) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {CategoricalData(TwoCategories(), Empty(), Logical({false})),
       "Missing field 'Values' in input struct array"},
      {CategoricalData(Empty(), Column<std::int8_t>({0}), Logical({false})),
       "Missing field 'Categories' in input struct array"},
      {CategoricalData(Strings({u"a"}), Column<std::int8_t>({0}), Logical({false})),
       "Incorrect type 'string' for struct array field 'Categories'"},
      {CategoricalData(TwoCategories(), Column<std::int8_t>({0}), Empty()),
       "Missing field 'Ordinal' in input struct array"},
      {CategoricalData(TwoCategories(), Column<std::int8_t>({0}), Scalar(1.0)),
       "Incorrect type 'double' for struct array field 'Ordinal'"},
      {CategoricalData(Empty(), Empty(), Empty()), "Missing field 'Values' in input struct array"},
      {CategoricalData(Empty(), Char("x"), Empty()),
       "Missing field 'Categories' in input struct array"}};
  for (const auto& [data, message] : cases) {
    EXPECT_EQ(read_categories(data).status(), Status::TypeError(message));
  }
}

TEST(CategoricalToArrow, RefusesWhatIsNoStruct) {
  EXPECT_EQ(CategoricalToArrow(Column<double>({}).get(), nullptr, true).status(),
            Status::TypeError("Struct array required for input"));
}

TEST(CategoricalToArrow, RefusesAnOrdinalOfOtherThanOneElement) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {Logical({0, 0}, {}),
       "Field 'Ordinal': found a 0-by-0 logical array, expected a logical array of one element."},
      {Logical({true, false}),
       "Field 'Ordinal': found a 2-by-1 logical array, expected a logical array of one element."}};
  for (const auto& [ordinal, message] : cases) {
    const hxArrayPtr data =
        CategoricalData(TwoCategories(), Column<std::int8_t>({0}), hxSharedCopy(ordinal.get()));
    EXPECT_EQ(read_categories(data).status(), Status::TypeError(message));
  }
}

TEST(CategoricalToArrow, RefusesASparseOrdinal) {
  const hxArrayPtr data =
      CategoricalData(TwoCategories(), Column<std::int8_t>({0}),
                      host::memory::CreateSparseArray(Dims{1, 1}, hxClassID::Logical));
  EXPECT_EQ(read_categories(data).status(),
            Status::TypeError("Field 'Ordinal': found a sparse 1-by-1 logical array, expected a "
                              "real array that is not sparse."));
}

TEST(CategoricalToArrow, RefusesValuesThatAreNoNumbers) {
  const hxArrayPtr data = CategoricalData(TwoCategories(), Char("ab"), Logical({false}));
  EXPECT_EQ(read_categories(data).status(),
            Status::Invalid("Invalid type for numeric NUMERA to Arrow conversion."));
}

TEST(CategoricalToArrow, RefusesValuesThatAreNoIntegers) {
  EXPECT_EQ(
      read_categories(CategoricalData(TwoCategories(), Column<double>({0, 1}), Logical({false})))
          .status(),
      Status::TypeError("Field 'Values': found a 2-by-1 double array, expected an array of "
                        "an integer class."));
  EXPECT_EQ(
      read_categories(CategoricalData(TwoCategories(), Row<float>({0}), Logical({false}))).status(),
      Status::TypeError("Field 'Values': found a 1-by-1 single array, expected an array of an "
                        "integer class."));
}

TEST(CategoricalToArrow, RefusesComplexValues) {
  EXPECT_EQ(read_categories(CategoricalData(TwoCategories(), Complex<std::int8_t>({1, 1}, {{0, 0}}),
                                            Logical({false})))
                .status(),
            Status::TypeError("Field 'Values': found a complex 1-by-1 int8 array, expected a real "
                              "array that is not sparse."));
}

TEST(CategoricalToArrow, ReportsWhatTheReaderOfTextsSaysOfTheCategories) {
  const hxArrayPtr data = CategoricalData(ListData(Column<std::uint8_t>({}), Column<double>({0})),
                                          Column<std::int8_t>({0}), Logical({false}));
  EXPECT_EQ(read_categories(data).status(),
            Status::TypeError("Incorrect type 'double' for struct array field 'StartOffsets'"));
  const hxArrayPtr too_long =
      CategoricalData(TextData("", {0, 2147483647}), Column<std::int8_t>({0}), Logical({false}));
  EXPECT_EQ(CategoricalToArrow(too_long.get(), nullptr, false).status(),
            Status::Invalid("Cannot construct arrow::StringArray or arrow::BinaryArray with "
                            "2147483647 offset."));
}

TEST(CategoricalToArrow, LeavesAFieldThatTheStructLacksToTheHost) {
  const hxArrayPtr data = Struct({{"Values", Column<std::int8_t>({0})}});
  EXPECT_THAT([&] { return read_categories(data).ok(); },
              ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
}

TEST(CategoricalToArrow, NeitherFailsNorLeaksHalfWay) {
  const hxArrayPtr encoded = Envelope(
      "categorical", CategoricalData(TwoCategories(), Column<std::int8_t>({0}), Logical({true})));
  FailReading(encoded);
}

}  // namespace
}  // namespace numera::io::arrow::core
