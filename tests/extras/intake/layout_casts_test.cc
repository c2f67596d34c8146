// Casts of layouts: dictionaries, runs, list views, lists of fixed size and extension types.

#include <arrow/array.h>
#include <arrow/extension/bool8.h>
#include <arrow/type.h>
#include <gtest/gtest.h>

#include <memory>

#include "tests/extras/intake/casts.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using ::arrow::dictionary;
using ::arrow::field;
using ::arrow::int16;
using ::arrow::int32;
using ::arrow::int64;
using ::arrow::int8;
using ::arrow::list;
using ::arrow::utf8;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

TEST(IntakeCasts, TakeDictionariesOfOtherThanTextApart) {
  const auto of = [](const TypePtr& index, const ArrayPtr& values) {
    return ::arrow::DictionaryArray::FromArrays(ArrowArray(index, "[1, null, 0, 1, 2]"), values)
        .ValueOrDie();
  };
  const TypePtr pair = ::arrow::struct_({field("b", ::arrow::boolean()), field("t", utf8())});
  const JsonCase values[] = {
      {int64(), "[10, null, 30]", int64(), "[null, null, 10, null, 30]"},
      {::arrow::boolean(), "[true, false, null]", ::arrow::boolean(),
       "[false, null, true, false, null]"},
      {::arrow::null(), "[null, null, null]", ::arrow::null(), "[null, null, null, null, null]"},
      {::arrow::binary(), R"(["a", "bc", ""])", ::arrow::binary(),
       R"(["bc", null, "a", "bc", ""])"},
      {::arrow::large_binary(), R"(["a", "bc", null])", ::arrow::large_binary(),
       R"(["bc", null, "a", "bc", null])"},
      {::arrow::fixed_size_binary(2), R"(["ab", "cd", null])", ::arrow::fixed_size_binary(2),
       R"(["cd", null, "ab", "cd", null])"},
      {::arrow::decimal64(5, 1), R"(["1.5", "2.5", "3.5"])", ::arrow::float64(),
       "[2.5, null, 1.5, 2.5, 3.5]"},
      {list(int8()), "[[1], [2, null], null]", list(int8()),
       "[[2, null], null, [1], [2, null], null]"},
      {::arrow::large_list(utf8()), R"([["a"], [], ["b", "c"]])", ::arrow::large_list(utf8()),
       R"([[], null, ["a"], [], ["b", "c"]])"},
      {::arrow::map(int8(), ::arrow::boolean()), "[[[1, true]], [], [[2, null], [3, false]]]",
       ::arrow::map(int8(), ::arrow::boolean()),
       "[[], null, [[1, true]], [], [[2, null], [3, false]]]"},
      {pair, R"([{"b": true, "t": "x"}, {"b": null, "t": "yy"}, null])", pair,
       R"([{"b": null, "t": "yy"}, null, {"b": true, "t": "x"}, {"b": null, "t": "yy"}, null])"},
  };
  for (const JsonCase& one : values) {
    expect_cast(of(int8(), ArrowArray(one.from, one.json)), ArrowArray(one.to, one.expected));
  }
  for (const TypePtr& index : {int8(), ::arrow::uint8(), int16(), ::arrow::uint16(), int32(),
                               ::arrow::uint32(), int64(), ::arrow::uint64()}) {
    expect_cast(of(index, ArrowArray(int8(), "[7, 8, 9]")),
                ArrowArray(int8(), "[8, null, 7, 8, 9]"));
  }
}

TEST(IntakeCasts, KeepDictionariesOfDictionariesOfText) {
  const auto inner = ArrowArray(dictionary(int8(), utf8()), R"(["a", "b"])");
  const auto outer =
      ::arrow::DictionaryArray::FromArrays(ArrowArray(int8(), "[1, 0, null, 1]"), inner)
          .ValueOrDie();
  const auto expected = ::arrow::DictionaryArray::FromArrays(ArrowArray(int8(), "[1, 0, null, 1]"),
                                                             ArrowArray(utf8(), R"(["a", "b"])"))
                            .ValueOrDie();
  expect_cast(outer, expected);
}

TEST(IntakeCasts, ExpandRuns) {
  const JsonCase values[] = {
      {int32(), "[10, null, 30]", int32(), "[10, 10, null, 30, 30, 30]"},
      {utf8(), R"(["a", "bc", null])", utf8(), R"(["a", "a", "bc", null, null, null])"},
      {::arrow::utf8_view(), R"(["a", "bc", null])", utf8(),
       R"(["a", "a", "bc", null, null, null])"},
      {list(::arrow::boolean()), "[[true], null, [false, null]]", list(::arrow::boolean()),
       "[[true], [true], null, [false, null], [false, null], [false, null]]"},
  };
  for (const TypePtr& index : {int16(), int32(), int64()}) {
    for (const JsonCase& one : values) {
      const auto runs = ::arrow::RunEndEncodedArray::Make(6, ArrowArray(index, "[2, 3, 6]"),
                                                          ArrowArray(one.from, one.json))
                            .ValueOrDie();
      expect_cast(runs, ArrowArray(one.to, one.expected));
    }
  }
}

TEST(IntakeCasts, ExpandRunsWhoseChildrenAreSlices) {
  const auto runs =
      ::arrow::RunEndEncodedArray::Make(5, ArrowArray(int32(), "[99, 2, 3, 6]")->Slice(1),
                                        ArrowArray(utf8(), R"(["-", "a", null, "c"])")->Slice(1))
          .ValueOrDie();
  expect_cast(runs, ArrowArray(utf8(), R"(["a", "a", null, "c", "c"])"));
}

TEST(IntakeCasts, OfListViewsGatherWhatIsOutOfOrder) {
  const auto elements = ArrowArray(utf8(), R"(["-", "a", "b", "c", "d", "-"])");
  const auto views =
      ::arrow::ListViewArray::FromArrays(*ArrowArray(int32(), "[3, 1, 1, 5, 2]"),
                                         *ArrowArray(int32(), "[2, 2, 3, 0, 1]"), *elements)
          .ValueOrDie();
  expect_cast(views,
              ArrowArray(list(utf8()), R"([["c", "d"], ["a", "b"], ["a", "b", "c"], [], ["b"]])"));
}

TEST(IntakeCasts, OfListViewsShareElementsThatAreInOrder) {
  const auto elements = ArrowArray(int32(), "[1, 2, 3, 4, 5]");
  const auto views =
      ::arrow::ListViewArray::FromArrays(*ArrowArray(int32(), "[1, 0, 2]"),
                                         *ArrowArray(int32(), "[1, 0, 2]"), *elements)
          .ValueOrDie();
  const Taken taken = cast(views);
  EXPECT_TRUE(SameArray(*taken.array, *ArrowArray(list(int32()), "[[2], [], [3, 4]]")));
  EXPECT_EQ(taken.array->data()->child_data[0]->buffers[1]->data(),
            elements->data()->buffers[1]->data() + 4);
}

TEST(IntakeCasts, OfFixedSizeListsShareTheElements) {
  const auto lists = ArrowArray(::arrow::fixed_size_list(int32(), 2), "[[1, 2], [3, 4], [5, 6]]");
  const Taken taken = cast(lists->Slice(1));
  EXPECT_EQ(taken.array->data()->child_data[0]->buffers[1]->data(),
            lists->data()->child_data[0]->buffers[1]->data() + 8);
}

TEST(IntakeCasts, OfExtensionTypesShareTheStorage) {
  const auto storage = ArrowArray(int8(), "[1, null, 0]");
  const auto extension = ::arrow::ExtensionType::WrapArray(::arrow::extension::bool8(), storage);
  expect_cast(extension, storage);
  EXPECT_EQ(cast(extension).array->data()->buffers, storage->data()->buffers);
}

}  // namespace
}  // namespace numera::testing
