#include "numera/core/arrow_types.h"

#include <arrow/array/util.h>
#include <arrow/extension/uuid.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "numera/core/to_numera.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;
using ::arrow::Type;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// A type of every id and the texts of its envelope; null if the type is refused.
struct TypeRow {
  TypePtr type;
  const char* kind;
  const char* encoded_name;
};

std::map<Type::type, TypeRow> rows_by_id() {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  const TypePtr item = int32();
  const FieldVector fields = {field("a", item)};
  const TypeRow rows[] = {
      {null(), "array", "null"},
      {boolean(), "array", "logical"},
      {uint8(), "array", "uint8"},
      {int8(), "array", "int8"},
      {uint16(), "array", "uint16"},
      {int16(), "array", "int16"},
      {uint32(), "array", "uint32"},
      {int32(), "array", "int32"},
      {uint64(), "array", "uint64"},
      {int64(), "array", "int64"},
      {float32(), "array", "single"},
      {float64(), "array", "double"},
      {utf8(), "array", "string"},
      {large_utf8(), "array", "string"},
      {binary(), "array", "binary_array"},
      {large_binary(), "array", "binary_array"},
      {fixed_size_binary(3), "array", "fixed_binary_array"},
      {date32(), "array", "datetime"},
      {date64(), "array", "datetime"},
      {timestamp(TimeUnit::MILLI), "array", "datetime"},
      {time32(TimeUnit::SECOND), "array", "duration"},
      {time64(TimeUnit::NANO), "array", "duration"},
      {duration(TimeUnit::MICRO), "array", "int64"},
      {list(item), "list_array", "list_array"},
      {large_list(item), "list_array", "large_list_array"},
      {struct_(fields), "struct", "struct"},
      {map(utf8(), item), "map", "map"},
      {dictionary(int8(), utf8()), "array", "categorical"},
      {float16(), nullptr, nullptr},
      {month_interval(), nullptr, nullptr},
      {day_time_interval(), nullptr, nullptr},
      {month_day_nano_interval(), nullptr, nullptr},
      {decimal32(5, 2), nullptr, nullptr},
      {decimal64(15, 2), nullptr, nullptr},
      {decimal128(25, 2), nullptr, nullptr},
      {decimal256(50, 2), nullptr, nullptr},
      {sparse_union(fields), nullptr, nullptr},
      {dense_union(fields), nullptr, nullptr},
      {extension::uuid(), nullptr, nullptr},
      {fixed_size_list(item, 2), nullptr, nullptr},
      {run_end_encoded(int32(), item), nullptr, nullptr},
      {utf8_view(), nullptr, nullptr},
      {binary_view(), nullptr, nullptr},
      {list_view(item), nullptr, nullptr},
      {large_list_view(item), nullptr, nullptr},
  };
  std::map<Type::type, TypeRow> by_id;
  for (const TypeRow& row : rows) by_id.emplace(row.type->id(), row);
  return by_id;
}

std::string text_of(const hxArrayPtr& envelope, const char* field) {
  return hxGetString(hxGetField(envelope.get(), 0, field));
}

class EveryArrowType : public ::testing::TestWithParam<int> {
 protected:
  Type::type id() const { return static_cast<Type::type>(GetParam()); }
};

TEST_P(EveryArrowType, HasARow) {
  EXPECT_EQ(rows_by_id().count(id()), 1U) << "a type of this id is missing in this test";
  EXPECT_EQ(arrow_type_row(id()).id, id());
}

TEST_P(EveryArrowType, IsConvertedOrRefusedByName) {
  const TypeRow row = rows_by_id().at(id());
  SCOPED_TRACE(row.type->ToString());
  for (const std::int64_t length : {0, 3}) {
    SCOPED_TRACE(length);
    const auto array = ::arrow::MakeArrayOfNull(row.type, length).ValueOrDie();
    ASSERT_TRUE(array->ValidateFull().ok());
    const auto envelope = to_numera(array);
    if (row.kind == nullptr) {
      EXPECT_EQ(envelope.status(),
                Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ",
                                  row.type->ToString()));
      continue;
    }
    ASSERT_TRUE(envelope.ok()) << envelope.status();
    EXPECT_EQ(text_of(*envelope, "ArrowType"), row.kind);
    EXPECT_EQ(text_of(*envelope, "Type"), row.encoded_name);
  }
}

TEST_P(EveryArrowType, IsTreatedAlikeInAColumnWithoutChunks) {
  const TypeRow row = rows_by_id().at(id());
  SCOPED_TRACE(row.type->ToString());
  const auto envelope = to_numera(ArrowChunks(row.type, {}));
  EXPECT_EQ(envelope.ok(), row.kind != nullptr);
  EXPECT_EQ(envelope.status().IsTypeError(), row.kind == nullptr);
}

TEST_P(EveryArrowType, HasValidityOfTheFormOfItsKind) {
  const TypeRow row = rows_by_id().at(id());
  if (row.kind == nullptr) return;
  SCOPED_TRACE(row.type->ToString());
  const auto chunk = ::arrow::MakeArrayOfNull(row.type, 3).ValueOrDie();
  const auto envelope =
      to_numera(std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{chunk, chunk}))
          .ValueOrDie();
  const hxArray* valid = hxGetField(envelope.get(), 0, "Valid");
  const bool plain = std::string(row.kind) == "array";
  EXPECT_EQ(hxGetNumberOfElements(valid), plain ? 1U : 2U);
  EXPECT_STREQ(hxGetFieldName(valid, 0), plain ? "ArrowType" : "Values");
}

/// Ways in which an array may contradict its type.
void lose_all_buffers(::arrow::ArrayData& data) { data.buffers.clear(); }
void lose_the_last_buffer(::arrow::ArrayData& data) {
  if (!data.buffers.empty()) data.buffers.pop_back();
}
void empty_all_buffers(::arrow::ArrayData& data) {
  for (auto& buffer : data.buffers) buffer = ArrowBuffer({});
}
void null_all_buffers(::arrow::ArrayData& data) {
  for (auto& buffer : data.buffers) buffer = nullptr;
}
void shorten_all_buffers(::arrow::ArrayData& data) {
  for (auto& buffer : data.buffers) buffer = ArrowBuffer({0xFE});
}
void lose_the_children(::arrow::ArrayData& data) { data.child_data.clear(); }
void null_the_children(::arrow::ArrayData& data) {
  for (auto& child : data.child_data) child = nullptr;
}
void lose_the_dictionary(::arrow::ArrayData& data) { data.dictionary = nullptr; }
void lengthen(::arrow::ArrayData& data) { data.length = 1000; }
void move_on(::arrow::ArrayData& data) { data.offset = 1000; }

TEST_P(EveryArrowType, IsNeverReadPastItsMemory) {
  const TypeRow row = rows_by_id().at(id());
  if (row.kind == nullptr) return;
  SCOPED_TRACE(row.type->ToString());
  const auto whole = ::arrow::MakeArrayOfNull(row.type, 3).ValueOrDie();
  const auto ways = {lose_all_buffers,
                     lose_the_last_buffer,
                     empty_all_buffers,
                     null_all_buffers,
                     shorten_all_buffers,
                     lose_the_children,
                     null_the_children,
                     lose_the_dictionary,
                     lengthen,
                     move_on};
  int pair = 0;
  for (const auto first : ways) {
    for (const auto second : ways) {
      SCOPED_TRACE(pair++);
      for (const std::int64_t null_count : {std::int64_t{-1}, std::int64_t{3}}) {
        const auto data = whole->data()->Copy();
        const auto array = ::arrow::MakeArray(data);
        first(*data);
        second(*data);
        data->null_count = null_count;
        const auto around = ::arrow::MakeArray(::arrow::ArrayData::Make(
            ::arrow::struct_({::arrow::field("f", row.type)}), 3, {nullptr}, {data}, 0));
        for (const auto& given : {array, around}) {
          const Status status = ToNumeraOnlyReads(given).status();
          EXPECT_TRUE(status.ok() || status.IsInvalid()) << status;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Ids, EveryArrowType, ::testing::Range(0, static_cast<int>(Type::MAX_ID)));

TypePtr lists_of(TypePtr type, int levels) {
  for (int i = 0; i < levels; ++i) type = ::arrow::list(type);
  return type;
}

TEST(CheckType, DoesNotCountADictionaryOfTexts) {
  const TypePtr categories = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  EXPECT_TRUE(check_type(lists_of(categories, 1024).get()).ok());
  EXPECT_TRUE(check_type(lists_of(categories, 1025).get()).IsInvalid());
}

TEST(CheckType, LooksIntoTheValuesOfADictionary) {
  const Status too_deep =
      Status::Invalid("Nested value: found more than 1024 levels, expected at most 1024.");
  TypePtr dictionaries = ::arrow::utf8();
  for (int i = 0; i < 10'000; ++i)
    dictionaries = ::arrow::dictionary(::arrow::int8(), dictionaries);
  const TypePtr lists = ::arrow::dictionary(::arrow::int8(), lists_of(::arrow::int8(), 10'000));
  for (const TypePtr& type : {dictionaries, lists}) {
    EXPECT_EQ(check_type(type.get()), too_deep);
    EXPECT_EQ(to_numera(ArrowChunks(type, {})).status(), too_deep);
  }
}

TEST(ArrowTypeRow, OfAnIdThatNoTypeHasIsARefusal) {
  for (const int id : {static_cast<int>(Type::MAX_ID), 1000, -1}) {
    const ArrowTypeRow& row = arrow_type_row(static_cast<Type::type>(id));
    EXPECT_EQ(row.writer, nullptr);
    EXPECT_EQ(row.encoded_name, nullptr);
    EXPECT_EQ(row.class_name, nullptr);
    EXPECT_STREQ(row.kind, "array");
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
