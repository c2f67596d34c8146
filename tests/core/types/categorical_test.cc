#include "numera/core/types/categorical.h"

#include <arrow/array/array_dict.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/encoded_texts.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

hxArrayPtr Categorical(hxArrayPtr codes, hxArrayPtr categories, hxArrayPtr ordinal) {
  return Struct({{"Values", std::move(codes)},
                 {"Categories", std::move(categories)},
                 {"Ordinal", std::move(ordinal)}});
}

/// The categories "a" and "bc".
hxArrayPtr TwoCategories() { return EncodedTexts("abc", {0, 1, 3}); }

Status StatusOfReading(const hxArrayPtr& categorical) {
  return CategoricalToArrow(categorical.get(), nullptr, true).status();
}

TEST(CategoricalToArrow, BecomesADictionaryOfLargeText) {
  const hxArrayPtr encoded = Envelope(
      "categorical",
      Categorical(Column<std::int8_t>({1, 0, 1, 1}), TwoCategories(), Logical({false})), {0b1011});

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
        Categorical(hxSharedCopy(codes.get()), TwoCategories(), Logical({true}));

    const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, true));

    const auto type = ::arrow::dictionary(index_type, ::arrow::large_utf8(), /*ordered=*/true);
    EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[1, 0]", R"(["a", "bc"])")));
  }
}

TEST(CategoricalToArrow, HasNarrowTextWhereThatIsAsked) {
  const hxArrayPtr data =
      Categorical(Column<std::int8_t>({1, 0}), TwoCategories(), Logical({false}));

  const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, false));

  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[1, 0]", R"(["a", "bc"])")));
}

TEST(CategoricalToArrow, BorrowsCodesCategoriesAndValidity) {
  const hxArrayPtr data =
      Categorical(Column<std::int16_t>({1, 0}), TwoCategories(), Logical({false}));
  const auto validity = ArrowBuffer({0b01});

  const auto array = ValueOf(CategoricalToArrow(data.get(), validity, true));

  const hxArray* const categories = hxGetField(data.get(), 0, "Categories");
  EXPECT_EQ(array->data()->buffers[0], validity);
  EXPECT_EQ(array->data()->buffers[1]->data(), hxGetData(hxGetField(data.get(), 0, "Values")));
  EXPECT_EQ(array->data()->null_count, ::arrow::kUnknownNullCount);
  const ::arrow::ArrayData& dictionary = *array->data()->dictionary;
  EXPECT_EQ(dictionary.buffers[0], nullptr);
  EXPECT_EQ(dictionary.buffers[1]->data(), hxGetData(hxGetField(categories, 0, "StartOffsets")));
  EXPECT_EQ(dictionary.buffers[2]->data(), hxGetData(hxGetField(categories, 0, "Values")));
}

TEST(CategoricalToArrow, KeepsCategoriesOfNoElements) {
  const hxArrayPtr data = Categorical(Column<std::int8_t>({}), TwoCategories(), Logical({false}));

  const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, true));

  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::large_utf8());
  EXPECT_TRUE(SameArray(*array, *Dictionary(type, "[]", R"(["a", "bc"])")));
}

TEST(CategoricalToArrow, DoesNotCompareCodesWithTheCategories) {
  const hxArrayPtr data =
      Categorical(Column<std::int8_t>({7, -1}), TwoCategories(), Logical({false}));

  const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, true));

  const auto& indices = *static_cast<const ::arrow::DictionaryArray&>(*array).indices();
  EXPECT_TRUE(SameArray(indices, *ArrowArray(::arrow::int8(), "[7, -1]")));
}

TEST(CategoricalToArrow, PassesOnCategoriesOfLengthMinusOne) {
  const hxArrayPtr data =
      Categorical(Column<std::int8_t>({}), EncodedTexts("abc", {}), Logical({false}));

  const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, true));

  EXPECT_EQ(array->data()->dictionary->length, -1);
}

TEST(CategoricalToArrow, TakesAnyNonZeroOrdinalForTrue) {
  hxArrayPtr ordinal = Logical({true});
  *static_cast<std::uint8_t*>(hxGetData(ordinal.get())) = 2;
  const hxArrayPtr data =
      Categorical(Column<std::int8_t>({0}), TwoCategories(), std::move(ordinal));

  const auto array = ValueOf(CategoricalToArrow(data.get(), nullptr, true));

  EXPECT_TRUE(static_cast<const ::arrow::DictionaryType&>(*array->type()).ordered());
}

TEST(CategoricalToArrow, RefusesFieldsThatAreEmptyOrOfAnotherClass) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {Categorical(Empty(), TwoCategories(), Logical({false})),
       "Missing field 'Values' in input struct array"},
      {Categorical(Column<std::int8_t>({0}), Empty(), Logical({false})),
       "Missing field 'Categories' in input struct array"},
      {Categorical(Column<std::int8_t>({0}), Strings({u"a"}), Logical({false})),
       "Incorrect type 'string' for struct array field 'Categories'"},
      {Categorical(Column<std::int8_t>({0}), TwoCategories(), Empty()),
       "Missing field 'Ordinal' in input struct array"},
      {Categorical(Column<std::int8_t>({0}), TwoCategories(), Scalar(1.0)),
       "Incorrect type 'double' for struct array field 'Ordinal'"},
      {Categorical(Empty(), Empty(), Empty()), "Missing field 'Values' in input struct array"},
      {Categorical(Char("x"), Empty(), Empty()),
       "Missing field 'Categories' in input struct array"},
      {Column<double>({}), "Struct array required for input"}};
  for (const auto& [data, message] : cases) {
    EXPECT_EQ(StatusOfReading(data), Status::TypeError(message));
  }
}

TEST(CategoricalToArrow, RefusesAnOrdinalOfOtherThanOneElement) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {Logical({0, 0}, {}),
       "Field 'Ordinal': found a 0-by-0 logical array, expected a logical array of one element."},
      {Logical({true, false}),
       "Field 'Ordinal': found a 2-by-1 logical array, expected a logical array of one element."}};
  for (const auto& [ordinal, message] : cases) {
    const hxArrayPtr data =
        Categorical(Column<std::int8_t>({0}), TwoCategories(), hxSharedCopy(ordinal.get()));
    EXPECT_EQ(StatusOfReading(data), Status::TypeError(message));
  }
}

TEST(CategoricalToArrow, RefusesASparseOrdinal) {
  const hxArrayPtr data =
      Categorical(Column<std::int8_t>({0}), TwoCategories(),
                  host::memory::CreateSparseArray(Dims{1, 1}, hxClassID::Logical));
  EXPECT_EQ(StatusOfReading(data),
            Status::TypeError("Field 'Ordinal': found a sparse 1-by-1 logical array, expected a "
                              "real array that is not sparse."));
}

TEST(CategoricalToArrow, RefusesValuesThatAreNoNumbers) {
  const hxArrayPtr data = Categorical(Char("ab"), TwoCategories(), Logical({false}));
  EXPECT_EQ(StatusOfReading(data),
            Status::Invalid("Invalid type for numeric NUMERA to Arrow conversion."));
}

TEST(CategoricalToArrow, RefusesValuesThatAreNoIntegers) {
  EXPECT_EQ(StatusOfReading(Categorical(Column<double>({0, 1}), TwoCategories(), Logical({false}))),
            Status::TypeError("Field 'Values': found a 2-by-1 double array, expected an array of "
                              "an integer class."));
  EXPECT_EQ(
      StatusOfReading(Categorical(Row<float>({0}), TwoCategories(), Logical({false}))),
      Status::TypeError("Field 'Values': found a 1-by-1 single array, expected an array of an "
                        "integer class."));
}

TEST(CategoricalToArrow, RefusesComplexValues) {
  EXPECT_EQ(StatusOfReading(Categorical(Complex<std::int8_t>({1, 1}, {{0, 0}}), TwoCategories(),
                                        Logical({false}))),
            Status::TypeError("Field 'Values': found a complex 1-by-1 int8 array, expected a real "
                              "array that is not sparse."));
}

TEST(CategoricalToArrow, ReportsWhatTheReaderOfTextsSaysOfTheCategories) {
  const hxArrayPtr data = Categorical(
      Column<std::int8_t>({0}),
      Struct({{"Values", Column<std::uint8_t>({})}, {"StartOffsets", Column<double>({0})}}),
      Logical({false}));
  EXPECT_EQ(StatusOfReading(data),
            Status::TypeError("Incorrect type 'double' for struct array field 'StartOffsets'"));
  const hxArrayPtr too_long =
      Categorical(Column<std::int8_t>({0}), EncodedTexts("", {0, 2147483647}), Logical({false}));
  EXPECT_EQ(CategoricalToArrow(too_long.get(), nullptr, false).status(),
            Status::Invalid("Cannot construct arrow::StringArray or arrow::BinaryArray with "
                            "2147483647 offset."));
}

TEST(CategoricalToArrow, LeavesAFieldThatTheStructLacksToTheHost) {
  const hxArrayPtr data = Struct({{"Values", Column<std::int8_t>({0})}});
  EXPECT_THAT([&] { return StatusOfReading(data).ok(); },
              ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
}

TEST(CategoricalToArrow, NeitherFailsNorLeaksHalfWay) {
  const hxArrayPtr encoded = Envelope(
      "categorical", Categorical(Column<std::int8_t>({0}), TwoCategories(), Logical({true})));
  const FaultSites sites =
      FailEverywhere([&] { return to_arrow<::arrow::Array>(encoded.get()).status(); });
  EXPECT_GE(sites.calls, 13U);
}

}  // namespace
}  // namespace numera::io::arrow::core
