// The check that lets values be shown: nothing of them leads out of its buffers.

#include "tools/memory_check.h"

#include <arrow/api.h>
#include <arrow/extension/uuid.h>
#include <gtest/gtest.h>

#include "tests/support/arrow_values.h"
#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

using ::arrow::TimeUnit;
using tools::check_memory;
using Type = std::shared_ptr<::arrow::DataType>;

TEST(MemoryCheck, AcceptsSoundValuesOfEveryLayout) {
  const std::pair<Type, const char*> cases[] = {
      {::arrow::null(), "[null]"},
      {::arrow::boolean(), "[true, null]"},
      {::arrow::utf8(), R"(["a", null])"},
      {::arrow::large_utf8(), R"(["a", null])"},
      {::arrow::utf8_view(), R"(["a text of more than twelve bytes", null])"},
      {::arrow::fixed_size_binary(1), R"(["a", null])"},
      {::arrow::decimal128(5, 2), R"(["1.50", null])"},
      {::arrow::decimal256(50, 2), R"(["1.50", null])"},
      {::arrow::list(::arrow::utf8()), R"([["a"], null])"},
      {::arrow::large_list(::arrow::date64()), "[[0], null]"},
      {::arrow::list_view(::arrow::utf8()), R"([["a"], null])"},
      {::arrow::large_list_view(::arrow::utf8()), R"([["a"], null])"},
      {::arrow::fixed_size_list(::arrow::utf8(), 1), R"([["a"], null])"},
      {::arrow::struct_({::arrow::field("t", ::arrow::utf8())}), R"([{"t": "a"}, null])"},
      {::arrow::map(::arrow::utf8(), ::arrow::utf8()), R"([[["a", "b"]], null])"},
      {::arrow::dense_union({::arrow::field("t", ::arrow::utf8())}), R"([[0, "a"]])"},
      {::arrow::sparse_union({::arrow::field("t", ::arrow::utf8())}), R"([[0, "a"]])"},
      {::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), R"(["a", null])"}};
  for (const auto& [type, json] : cases) {
    EXPECT_EQ(check_memory(*ArrowArray(type, json)), ::arrow::Status::OK()) << type->ToString();
  }
  const auto runs = ::arrow::RunEndEncodedArray::Make(2, ArrowArray(::arrow::int32(), "[2]"),
                                                      ArrowArray(::arrow::utf8(), R"(["a"])"));
  EXPECT_EQ(check_memory(**runs), ::arrow::Status::OK());
  const auto uuids = ::arrow::ExtensionType::WrapArray(
      ::arrow::extension::uuid(), ArrowArray(::arrow::fixed_size_binary(16), "[null]"));
  EXPECT_EQ(check_memory(*uuids), ::arrow::Status::OK());
}

/// The same memory as another type.
std::shared_ptr<::arrow::Array> with_type(const std::shared_ptr<::arrow::Array>& array,
                                          const Type& type) {
  const auto data = array->data()->Copy();
  data->type = type;
  return ::arrow::MakeArray(data);
}

std::shared_ptr<::arrow::Array> invalid_text() {
  ::arrow::BinaryBuilder bytes;
  EXPECT_TRUE(bytes.Append("\xFF").ok());
  return with_type(bytes.Finish().ValueOrDie(), ::arrow::utf8());
}

TEST(MemoryCheck, AcceptsValuesThatAreNoneOfTheirType) {
  const auto text = invalid_text();
  const std::shared_ptr<::arrow::Array> cases[] = {
      text,
      ::arrow::StructArray::Make({text}, {::arrow::field("t", text->type())}).ValueOrDie(),
      ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), "[0]"), text).ValueOrDie(),
      with_type(ArrowArray(::arrow::int32(), "[-1, 86400]"), ::arrow::time32(TimeUnit::SECOND)),
      with_type(ArrowArray(::arrow::int64(), "[-1]"), ::arrow::time64(TimeUnit::NANO)),
      with_type(ArrowArray(::arrow::int64(), "[1]"), ::arrow::date64()),
      with_type(ArrowArray(::arrow::int32(), "[1000]"), ::arrow::decimal32(3, 0))};
  for (const auto& array : cases) {
    EXPECT_FALSE(array->ValidateFull().ok()) << array->type()->ToString();
    EXPECT_EQ(check_memory(*array), ::arrow::Status::OK()) << array->type()->ToString();
  }
}

std::shared_ptr<::arrow::Buffer> offsets(const std::string& json) {
  return ArrowArray(::arrow::int32(), json)->data()->buffers[1];
}

TEST(MemoryCheck, RefusesWhatLeadsOutOfTheBuffers) {
  const auto bytes = ::arrow::Buffer::FromString("abc");
  const auto code = ArrowArray(::arrow::int8(), "[1]");
  const auto text = ArrowArray(::arrow::utf8(), R"(["a"])");
  const auto outside =
      std::make_shared<::arrow::StringArray>(2, offsets("[0, 4, 3]"), bytes);  // 4 is too much
  const auto list = ::arrow::list(::arrow::utf8());
  const std::shared_ptr<::arrow::Array> cases[] = {
      outside,
      std::make_shared<::arrow::StringArray>(2, offsets("[2, 1, 3]"), bytes),
      std::make_shared<::arrow::ListArray>(list, 1, offsets("[0, 2]"), text),
      std::make_shared<::arrow::DictionaryArray>(
          ::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), code, text),
      std::make_shared<::arrow::StructArray>(
          ::arrow::struct_({::arrow::field("t", ::arrow::utf8())}), 2,
          ::arrow::ArrayVector{outside}),
      std::make_shared<::arrow::Int64Array>(2, bytes)};
  for (const auto& array : cases) {
    EXPECT_FALSE(check_memory(*array).ok()) << array->type()->ToString();
  }
}

}  // namespace
}  // namespace numera::testing
