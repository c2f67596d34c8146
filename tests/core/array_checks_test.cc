#include "numera/core/array_checks.h"

#include <arrow/extension/opaque.h>
#include <arrow/extension/uuid.h>
#include <arrow/extension_type.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "numera/core/to_numera.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::arrow::field;
using ::arrow::Status;

using DataPtr = std::shared_ptr<ArrayData>;
using DataTypePtr = std::shared_ptr<::arrow::DataType>;

/// A struct with one child. Arrow reads the child only on demand.
std::shared_ptr<::arrow::Array> Around(const std::shared_ptr<::arrow::DataType>& declared,
                                       const DataPtr& child) {
  return ::arrow::MakeArray(
      ArrayData::Make(::arrow::struct_({field("f", declared)}), 1, {nullptr}, {child}, 0));
}

DataPtr Copy(const std::shared_ptr<::arrow::DataType>& type, const char* json) {
  return ArrowArray(type, json)->data()->Copy();
}

template <class Change>
Status StatusOf(const std::shared_ptr<::arrow::DataType>& type, const char* json, Change change) {
  const DataPtr child = Copy(type, json);
  change(*child);
  return ToNumeraOnlyReads(Around(type, child)).status();
}

Status Refused(const char* type, const char* message) {
  return Status::Invalid("Array of type ", type, ": found ", message);
}

TEST(ArrayLayout, RefusesBuffersThatTheTypeDoesNotHave) {
  const auto drop_one = [](ArrayData& data) { data.buffers.pop_back(); };
  const auto add_one = [](ArrayData& data) { data.buffers.push_back(nullptr); };
  EXPECT_EQ(StatusOf(::arrow::int32(), "[1]", drop_one),
            Refused("int32", "1 buffers, expected 2."));
  EXPECT_EQ(StatusOf(::arrow::int32(), "[1]", add_one), Refused("int32", "3 buffers, expected 2."));
  EXPECT_EQ(StatusOf(::arrow::utf8(), R"(["a"])", drop_one),
            Refused("utf8", "2 buffers, expected 3."));
  EXPECT_EQ(StatusOf(::arrow::list(::arrow::int8()), "[[1]]", drop_one),
            Refused("list", "1 buffers, expected 2."));
  EXPECT_EQ(StatusOf(::arrow::struct_({field("a", ::arrow::int8())}), "[[1]]", drop_one),
            Refused("struct", "0 buffers, expected 1."));
}

TEST(ArrayLayout, IsNotLookedAtInTypesThatAreRefused) {
  const auto add_bitmap = [](ArrayData& data) {
    data.buffers[0] = ExactBuffer(std::vector<std::uint8_t>{1});
  };
  const auto fields = {field("a", ::arrow::int8())};
  for (const auto& type : {::arrow::sparse_union(fields), ::arrow::dense_union(fields)}) {
    EXPECT_EQ(
        StatusOf(type, "[[0, 1]]", add_bitmap),
        Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ", type->ToString()));
  }
}

TEST(ArrayLayout, RefusesChildrenThatTheTypeDoesNotHave) {
  const auto list = ::arrow::list(::arrow::int8());
  EXPECT_EQ(StatusOf(list, "[[1]]", [](ArrayData& data) { data.child_data.clear(); }),
            Refused("list", "0 children, expected 1."));
  EXPECT_EQ(StatusOf(list, "[[1]]", [](ArrayData& data) { data.child_data[0] = nullptr; }),
            Refused("list", "no child 0, expected one."));
  EXPECT_EQ(StatusOf(list, "[[1]]",
                     [](ArrayData& data) { data.child_data[0] = Copy(::arrow::utf8(), "[]"); }),
            Refused("list", "child 0 of type utf8, expected int8."));
  EXPECT_EQ(ToNumeraOnlyReads(Around(::arrow::utf8(), Copy(::arrow::int8(), "[1]"))).status(),
            Refused("struct", "child 0 of type int8, expected utf8."));
  const auto no_children = ::arrow::MakeArray(
      ArrayData::Make(::arrow::struct_({field("f", ::arrow::int8())}), 1, {nullptr}, 0));
  EXPECT_EQ(ToNumeraOnlyReads(no_children).status(), Refused("struct", "0 children, expected 1."));
}

TEST(ArrayLayout, LooksAtNoChildrenOfAStructWithoutFields) {
  const auto type = ::arrow::struct_({});
  const auto with_child = ::arrow::MakeArray(ArrayData::Make(type, 1, {nullptr}, 0));
  with_child->data()->child_data = {nullptr};

  const hxArrayPtr encoded = ValueOf(to_numera(with_child));

  const hxArrayPtr expected = ValueOf(to_numera(ArrowArray(type, "[[]]")));
  EXPECT_TRUE(SameHostValue(encoded.get(), expected.get()));
}

TEST(ArrayLayout, RefusesMapsWhoseEntriesAreNoPairs) {
  const auto map = ::arrow::map(::arrow::int8(), ::arrow::int8());
  const auto one_field = ::arrow::struct_({field("key", ::arrow::int8())});
  EXPECT_EQ(
      StatusOf(map, "[[[1, 2]]]",
               [](ArrayData& data) { data.child_data[0] = Copy(::arrow::struct_({}), "[[]]"); }),
      Refused("map", "entries of 0 children, expected 2."));
  EXPECT_EQ(StatusOf(map, "[[[1, 2]]]",
                     [&](ArrayData& data) { data.child_data[0] = Copy(one_field, "[[1]]"); }),
            Refused("map", "entries of 1 children, expected 2."));
}

/// Keys and items are written whole, also beyond the entries.
TEST(ArrayLayout, RefusesKeysAndItemsWhoseBuffersEndBeforeThem) {
  const auto map = ::arrow::map(::arrow::int8(), ::arrow::int8());
  for (const size_t i : {size_t{0}, size_t{1}}) {
    const auto lengthen = [i](ArrayData& data) {
      DataPtr& entries = data.child_data[0];
      entries = entries->Copy();
      entries->child_data[i] = entries->child_data[i]->Copy();
      entries->child_data[i]->buffers[1] = ExactBuffer(std::vector<std::int8_t>{1});
      entries->child_data[i]->length = 2;
    };
    EXPECT_EQ(StatusOf(map, "[[[1, 2]]]", lengthen),
              Status::Invalid("Values buffer: found 1 bytes, expected enough for 2 elements."));
  }
}

TEST(ArrayLayout, AcceptsChildrenWhoseBuffersEndWithTheStruct) {
  const auto type = ::arrow::struct_({field("a", ::arrow::int8())});
  const DataPtr structs = Copy(type, "[[1], [2]]");
  structs->child_data[0] = structs->child_data[0]->Copy();
  structs->child_data[0]->buffers[1] = ExactBuffer(std::vector<std::int8_t>{1, 2});
  structs->child_data[0]->length = 3;

  const hxArrayPtr encoded = ValueOf(ToNumeraOnlyReads(::arrow::MakeArray(structs)));

  const hxArrayPtr expected = ValueOf(to_numera(ArrowArray(type, "[[1], [2]]")));
  EXPECT_TRUE(SameHostValue(encoded.get(), expected.get()));
}

/// The number of bits of such elements exceeds 32 bits.
TEST(ArrayLayout, RefusesAShortBufferOfVeryWideElements) {
  for (const std::int32_t width : {1 << 28, 1 << 29, (1 << 29) + 1}) {
    const auto array = ::arrow::MakeArray(
        ArrayData::Make(::arrow::fixed_size_binary(width), 1,
                        {nullptr, ExactBuffer(std::vector<std::uint8_t>{1})}, 0));
    EXPECT_EQ(ToNumeraOnlyReads(array).status(),
              Status::Invalid("Values buffer: found 1 bytes, expected enough for 1 elements."));
  }
}

TEST(ArrayLayout, RefusesMapsWhoseTypeHasNoPairs) {
  const auto int8 = field("i", ::arrow::int8());
  const std::shared_ptr<::arrow::Field> entries[] = {
      nullptr, field("e", nullptr), field("e", ::arrow::int8()), field("e", ::arrow::struct_({})),
      field("e", ::arrow::struct_({int8, int8, int8}))};
  for (const auto& entry : entries) {
    const auto map = std::make_shared<::arrow::MapType>(entry);
    const DataTypePtr within[] = {map, ::arrow::fixed_size_list(field("m", map), 2),
                                  ::arrow::extension::opaque(map, "kind", "vendor")};
    for (const DataTypePtr& type : within) {
      EXPECT_EQ(
          to_numera(std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector(), type)).status(),
          Status::Invalid("Type: found a null pointer, expected a type, with the types of "
                          "all its fields and values."));
    }
  }
}

TEST(ArrayLayout, RefusesAMissingDictionary) {
  EXPECT_EQ(StatusOf(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), R"(["a"])",
                     [](ArrayData& data) { data.dictionary = nullptr; }),
            Refused("dictionary", "no dictionary, expected one."));
}

TEST(ArrayLayout, RefusesMapsWhoseEntriesOrKeysMayBeNull) {
  const auto map = ::arrow::map(::arrow::int8(), ::arrow::int8());
  EXPECT_EQ(StatusOf(map, "[[[1, 2]]]",
                     [](ArrayData& data) {
                       data.child_data[0] = data.child_data[0]->Copy();
                       data.child_data[0]->null_count = 1;
                     }),
            Refused("map", "entries that may be null, expected none."));
  EXPECT_EQ(StatusOf(map, "[[[1, 2]]]",
                     [](ArrayData& data) {
                       DataPtr& entries = data.child_data[0];
                       entries = entries->Copy();
                       entries->child_data[0] = entries->child_data[0]->Copy();
                       entries->child_data[0]->null_count = 1;
                     }),
            Refused("map", "keys that may be null, expected none."));
}

TEST(ArrayLayout, RefusesExtentsBeyond64Bits) {
  EXPECT_EQ(StatusOf(::arrow::int8(), "[1]", [](ArrayData& data) { data.offset = -1; }),
            Status::Invalid("Array: found offset -1 and length 1, expected neither negative and "
                            "their sum within 64 bits."));
  EXPECT_EQ(StatusOf(::arrow::struct_({}), "[[]]",
                     [](ArrayData& data) {
                       data.offset = std::numeric_limits<std::int64_t>::max();
                       data.null_count = 0;
                     }),
            Status::Invalid("Array: found offset 9223372036854775807 and length 1, expected "
                            "neither negative and their sum within 64 bits."));
}

TEST(ArrayLayout, BoundsArraysThatAreDeeperThanTheirTypes) {
  DataPtr child = Copy(::arrow::int8(), "[1]");
  for (int i = 0; i < 2000; ++i) {
    // Each level declares its child as an empty struct, although the child has a field.
    child = ArrayData::Make(::arrow::struct_({field("f", ::arrow::struct_({}))}), 1, {nullptr},
                            {i == 0 ? Copy(::arrow::struct_({}), "[[]]") : child}, 0);
  }
  EXPECT_EQ(ToNumeraOnlyReads(::arrow::MakeArray(child)).status(),
            Status::Invalid("Nested value: found more than 1024 levels, expected at most 1024."));
}

TEST(ArrayLayout, LeavesTypesThatAreRefusedToTheirMessage) {
  const auto plain = ArrowArray(::arrow::int8(), "[1]");
  const auto bytes = ArrowArray(::arrow::fixed_size_binary(16), R"(["0123456789abcdef"])");
  const std::shared_ptr<::arrow::Array> arrays[] = {
      ArrowArray(::arrow::fixed_size_list(::arrow::int8(), 1), "[[1]]"),
      ArrowArray(::arrow::sparse_union({field("a", ::arrow::int8())}), "[[0, 1]]"),
      ArrowArray(::arrow::dense_union({field("a", ::arrow::int8())}), "[[0, 1]]"),
      ArrowArray(::arrow::list_view(::arrow::int8()), "[[1]]"),
      ArrowArray(::arrow::large_list_view(::arrow::int8()), "[[1]]"),
      ArrowArray(::arrow::utf8_view(), R"(["a text that does not fit into a view"])"),
      ArrowArray(::arrow::binary_view(), R"(["a"])"),
      ArrowArray(::arrow::decimal256(3, 1), R"(["1.5"])"),
      ArrowArray(::arrow::month_day_nano_interval(), "[[1, 2, 3]]"),
      ValueOf(::arrow::RunEndEncodedArray::Make(1, ArrowArray(::arrow::int32(), "[1]"), plain)),
      ::arrow::ExtensionType::WrapArray(::arrow::extension::uuid(), bytes),
      ::arrow::ExtensionType::WrapArray(
          ::arrow::extension::opaque(::arrow::list(::arrow::int8()), "kind", "vendor"),
          ArrowArray(::arrow::list(::arrow::int8()), "[[1]]"))};
  for (const auto& array : arrays) {
    const auto unsupported = Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ",
                                               array->type()->ToString());
    EXPECT_EQ(ToNumeraOnlyReads(array).status(), unsupported);
    EXPECT_EQ(ToNumeraOnlyReads(Around(array->type(), array->data())).status(), unsupported);
    const auto list = std::make_shared<::arrow::ListArray>(
        ::arrow::list(array->type()), 1, ArrowBuffer({0, 0, 0, 0, 1, 0, 0, 0}), array, nullptr, 0);
    EXPECT_EQ(ToNumeraOnlyReads(Around(list->type(), list->data())).status(), unsupported);
  }
}

TEST(CheckChunks, AcceptsWhatArrowMakes) {
  EXPECT_EQ(check_column(*ArrowChunks(::arrow::int8(), {"[1]", "[]", "[2, null]"})), Status::OK());
  EXPECT_EQ(check_column(*ArrowChunks(::arrow::int8(), {})), Status::OK());
}

TEST(CheckChunks, AcceptsEqualTypesThatAreNotTheSame) {
  const auto type = [] { return ::arrow::timestamp(::arrow::TimeUnit::SECOND, "UTC"); };
  EXPECT_EQ(check_column(::arrow::ChunkedArray({ArrowArray(type(), "[1]")}, type())), Status::OK());
}

TEST(CheckChunks, AcceptsFieldsOfOtherNamesNullabilityAndMetadata) {
  const auto type = [](const char* name, bool nullable) {
    const auto metadata = ::arrow::key_value_metadata({"key"}, {name});
    const auto leaf = ::arrow::field(name, ::arrow::int8(), nullable, metadata);
    return ::arrow::struct_({::arrow::field(name, ::arrow::list(leaf)),
                             ::arrow::field(name, ::arrow::map(::arrow::utf8(), leaf))});
  };
  const auto chunk = ArrowArray(type("a", true), R"([[[1], [["k", 2]]]])");
  EXPECT_EQ(check_column(::arrow::ChunkedArray({chunk}, type("b", false))), Status::OK());
}

TEST(CheckChunks, ShowsBothTypesInFullWhereTheyDiffer) {
  const auto chunk = ArrowArray(::arrow::list(::arrow::int16()), "[[1]]");
  EXPECT_EQ(check_column(::arrow::ChunkedArray({chunk}, ::arrow::list(::arrow::int8()))),
            Status::Invalid("Chunk 0: found list<item: int16>, expected list<item: int8>, the type "
                            "of the column."));
  const auto field = ::arrow::field("a", ::arrow::int8());
  EXPECT_EQ(
      check_column(::arrow::ChunkedArray({ArrowArray(::arrow::struct_({field, field}), "[]")},
                                         ::arrow::struct_({field}))),
      Status::Invalid("Chunk 0: found struct<a: int8, a: int8>, expected struct<a: int8>, the "
                      "type of the column."));
  EXPECT_EQ(check_column(
                ::arrow::ChunkedArray({ArrowArray(::arrow::utf8(), "[]")}, ::arrow::struct_({}))),
            Status::Invalid("Chunk 0: found string, expected struct<>, the type of the column."));
}

}  // namespace
}  // namespace numera::io::arrow::core
