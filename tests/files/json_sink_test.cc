// JSON lines as a sink writes them, and what it refuses.

#include <arrow/array/array_dict.h>
#include <arrow/array/array_nested.h>
#include <arrow/array/builder_binary.h>
#include <arrow/array/concatenate.h>
#include <arrow/array/util.h>
#include <arrow/extension/bool8.h>
#include <arrow/io/compressed.h>
#include <arrow/io/file.h>
#include <arrow/scalar.h>
#include <arrow/util/compression.h>
#include <gtest/gtest.h>

#include "tests/files/written.h"
#include "tests/support/arrow_values.h"
#include "tests/support/large_stack.h"

namespace numera::testing {
namespace {

using ::arrow::Status;
using ::arrow::TimeUnit;
using files::Format;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

class JsonSink : public ::testing::Test {
 protected:
  std::string written(const ::arrow::RecordBatchVector& batches,
                      const files::WriteOptions& options = {}) {
    EXPECT_EQ(write_batches(file_, batches, options), Status::OK());
    return read_text(file_);
  }

  /// The values of a column as they are written, separated by blanks.
  std::string written_values(const ArrayPtr& column) {
    std::string text = written({batch_of("c", column)});
    std::string found;
    for (size_t start = 0; start < text.size();) {
      const size_t end = text.find('\n', start);
      EXPECT_EQ(text.substr(start, 5), "{\"c\":");
      EXPECT_EQ(text[end - 1], '}');
      found += (found.empty() ? "" : " ") + text.substr(start + 5, end - start - 6);
      start = end + 1;
    }
    return found;
  }

  void expect_refusal(const ::arrow::RecordBatchVector& batches, const std::string& reason) {
    EXPECT_EQ(write_batches(file_, batches), Status::Invalid("cannot write ", file_, ": ", reason));
    EXPECT_EQ(folder_.names(), std::vector<std::string>());
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a.jsonl");
};

TEST_F(JsonSink, WritesAnObjectPerRow) {
  EXPECT_EQ(written({batch_of({{"n", ::arrow::int64(), "[1, null]"},
                               {"a \"b\"\n", ::arrow::utf8(), R"(["", "x"])"}}),
                     batch_of({{"n", ::arrow::int64(), "[-3]"},
                               {"a \"b\"\n", ::arrow::utf8(), "[null]"}})}),
            "{\"n\":1,\"a \\\"b\\\"\\n\":\"\"}\n"
            "{\"n\":null,\"a \\\"b\\\"\\n\":\"x\"}\n"
            "{\"n\":-3,\"a \\\"b\\\"\\n\":null}\n");
}

TEST_F(JsonSink, IsChosenByThreeEndsOrAsAsked) {
  const auto batch = batch_of({{"n", ::arrow::int8(), "[1]"}});
  for (const char* name : {"a.json", "a.jsonl", "a.ndjson"}) {
    file_ = folder_.path(name);
    EXPECT_EQ(written({batch}), "{\"n\":1}\n") << name;
  }
  file_ = folder_.path("a.txt");
  EXPECT_EQ(written({batch}, {.format = Format::kJsonLines}), "{\"n\":1}\n");
}

TEST_F(JsonSink, IsCompressedByTheEndOfThePath) {
  file_ = folder_.path("a.json.gz");
  written({batch_of({{"n", ::arrow::int8(), "[1]"}})});
  const auto codec = ::arrow::util::Codec::Create(::arrow::Compression::GZIP).ValueOrDie();
  const auto file = ::arrow::io::ReadableFile::Open(file_).ValueOrDie();
  const auto text = ::arrow::io::CompressedInputStream::Make(codec.get(), file).ValueOrDie();
  EXPECT_EQ(text->Read(100).ValueOrDie()->ToString(), "{\"n\":1}\n");
}

TEST_F(JsonSink, WritesNothingForATableWithoutRows) {
  EXPECT_EQ(written({batch_of({{"n", ::arrow::int8(), "[]"}})}), "");
}

TEST_F(JsonSink, WritesRowsWithoutColumns) {
  EXPECT_EQ(written({::arrow::RecordBatch::Make(::arrow::schema(::arrow::FieldVector{}), 2,
                                                ::arrow::ArrayVector{})}),
            "{}\n{}\n");
}

TEST_F(JsonSink, WritesEveryPlainType) {
  const std::tuple<TypePtr, std::string, std::string> cases[] = {
      {::arrow::null(), "[null, null]", "null null"},
      {::arrow::boolean(), "[true, false, null]", "true false null"},
      {::arrow::int8(), "[-128, 127]", "-128 127"},
      {::arrow::int16(), "[-32768]", "-32768"},
      {::arrow::int32(), "[-2147483648]", "-2147483648"},
      {::arrow::int64(), "[-9223372036854775808, 9007199254740993]",
       "-9223372036854775808 9007199254740993"},
      {::arrow::uint8(), "[255]", "255"},
      {::arrow::uint16(), "[65535]", "65535"},
      {::arrow::uint32(), "[4294967295]", "4294967295"},
      {::arrow::uint64(), "[18446744073709551615, null]", "18446744073709551615 null"},
      {::arrow::float16(), "[1.5, 3.14159, NaN, Inf, 2]", "1.5 3.140625 null null 2.0"},
      {::arrow::float32(), "[0.1, 1e20, NaN, -Inf, -0.0]", "0.1 1e+20 null null -0.0"},
      {::arrow::float64(), "[0.1, 3, 5e-324, 1e300, 123456789012345680, NaN, Inf, null]",
       "0.1 3.0 5e-324 1e+300 123456789012345680.0 null null null"},
      {::arrow::decimal32(5, 2), R"(["1.10"])", "\"1.10\""},
      {::arrow::decimal64(5, 2), R"(["-1.10"])", "\"-1.10\""},
      {::arrow::decimal128(5, 2), R"(["0.01", null])", "\"0.01\" null"},
      {::arrow::decimal256(5, 0), R"(["7"])", "\"7\""},
      {::arrow::date32(), "[0, -1, null]", "\"1970-01-01\" \"1969-12-31\" null"},
      {::arrow::date64(), "[86400000]", "\"1970-01-02\""},
      {::arrow::time32(TimeUnit::MILLI), "[86399999]", "\"23:59:59.999\""},
      {::arrow::time64(TimeUnit::MICRO), "[1]", "\"00:00:00.000001\""},
      {::arrow::timestamp(TimeUnit::SECOND), "[-1]", "\"1969-12-31 23:59:59\""},
      {::arrow::timestamp(TimeUnit::NANO, "Asia/Kathmandu"), "[-1]",
       "\"1969-12-31 23:59:59.999999999Z\""},
      {::arrow::duration(TimeUnit::SECOND), "[-5]", "-5"},
      {::arrow::large_utf8(), R"(["a", null])", "\"a\" null"},
      {::arrow::utf8_view(), R"(["a", null, "longer than 12 bytes"])",
       "\"a\" null \"longer than 12 bytes\""}};
  for (const auto& [type, json, text] : cases) {
    EXPECT_EQ(written_values(ArrowArray(type, json)), text) << *type;
  }
}

TEST_F(JsonSink, EscapesWhatJsonDemandsAndKeepsTheRest) {
  EXPECT_EQ(
      written_values(ArrowArray(::arrow::utf8(),
                                R"(["\"\\/", "\b\f\n\r\t", "\u0000\u0001\u001f ", "äλ😀\u007f"])")),
      R"("\"\\/" "\b\f\n\r\t" "\u0000\u0001\u001f " "äλ😀)"
      "\x7f\"");
}

TEST_F(JsonSink, WritesNestedValues) {
  const auto pair = ::arrow::struct_(
      {::arrow::field("a", ::arrow::int8()), ::arrow::field("b", ::arrow::utf8())});
  const std::tuple<TypePtr, std::string, std::string> cases[] = {
      {::arrow::list(::arrow::int8()), "[[1, null], [], null]", "[1,null] [] null"},
      {::arrow::large_list(::arrow::utf8()), R"([["a", "b"]])", R"(["a","b"])"},
      {::arrow::list_view(::arrow::int8()), "[[1], null, [2, 3]]", "[1] null [2,3]"},
      {::arrow::large_list_view(::arrow::int8()), "[[1], [2, 3]]", "[1] [2,3]"},
      {::arrow::fixed_size_list(::arrow::date32(), 2), "[[0, null], null]",
       R"(["1970-01-01",null] null)"},
      {pair, R"([{"a": 1, "b": "x"}, null, {"a": null, "b": null}])",
       R"({"a":1,"b":"x"} null {"a":null,"b":null})"},
      {::arrow::struct_(::arrow::FieldVector{}), "[{}, null]", "{} null"},
      {::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["x", 1], ["y", null]], [], null])",
       R"([{"key":"x","value":1},{"key":"y","value":null}] [] null)"},
      {::arrow::list(::arrow::list(pair)), R"([[[{"a": 1, "b": "x"}], []]])",
       R"([[{"a":1,"b":"x"}],[]])"}};
  for (const auto& [type, json, text] : cases) {
    EXPECT_EQ(written_values(ArrowArray(type, json)), text) << *type;
    const ArrayPtr twice =
        ::arrow::Concatenate({ArrowArray(type, json), ArrowArray(type, json)}).ValueOrDie();
    EXPECT_EQ(written_values(twice->Slice(twice->length() / 2)), text) << "slice of " << *type;
  }
}

ArrayPtr values_at(const std::string& indices, const ArrayPtr& dictionary) {
  return ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), indices), dictionary)
      .ValueOrDie();
}

TEST_F(JsonSink, WritesTheValuesOfADictionary) {
  const ArrayPtr texts = ArrowArray(::arrow::utf8(), R"(["a", "b", null])");
  EXPECT_EQ(written_values(values_at("[1, null, 0, 2]", texts)), R"("b" null "a" null)");
  EXPECT_EQ(written_values(values_at("[0, 1, 0]", texts)->Slice(1)), R"("b" "a")");
  const ArrayPtr lists = ArrowArray(::arrow::list(::arrow::int8()), "[[1], [2, 3]]");
  EXPECT_EQ(written_values(values_at("[1, 0]", lists)), "[2,3] [1]");
}

TEST_F(JsonSink, WritesTheStorageOfAnExtension) {
  EXPECT_EQ(written_values(::arrow::ExtensionType::WrapArray(
                ::arrow::extension::bool8(), ArrowArray(::arrow::int8(), "[1, null]"))),
            "1 null");
}

TEST_F(JsonSink, WritesMoreThanItCollects) {
  const ArrayPtr text =
      ::arrow::MakeArrayFromScalar(::arrow::StringScalar(std::string(1000, 'x')), 3000)
          .ValueOrDie();
  std::string expected;
  for (int i = 0; i < 3000; ++i) expected += "{\"c\":\"" + std::string(1000, 'x') + "\"}\n";
  EXPECT_TRUE(written({batch_of("c", text)}) == expected);
}

/// A number within so many lists, or within structs and lists in turn.
ArrayPtr nested(int levels, bool with_structs) {
  ArrayPtr array = ArrowArray(::arrow::int8(), "[7]");
  for (int i = 0; i < levels; ++i) {
    const ArrayPtr offsets = ArrowArray(::arrow::int32(), "[0, 1]");
    array = with_structs && i % 2 == 1
                ? ::arrow::StructArray::Make({array}, {std::string("s")}).ValueOrDie()
                : ArrayPtr(::arrow::ListArray::FromArrays(*offsets, *array).ValueOrDie());
  }
  return array;
}

TEST_F(JsonSink, WritesTheDeepestValuesOnASmallStack) {
  for (const bool with_structs : {false, true}) {
    const auto batch = batch_of("c", nested(1023, with_structs));
    std::string found;
    OnStatedStack(std::size_t{2304} << 10, [&] { found = written({batch}); });
    std::string start;
    std::string end;
    for (int i = 1022; i >= 0; --i) {
      const bool is_struct = with_structs && i % 2 == 1;
      start += is_struct ? "{\"s\":" : "[";
      end.insert(0, is_struct ? "}" : "]");
    }
    EXPECT_EQ(found, "{\"c\":" + start + "7" + end + "}\n");
  }
}

TEST_F(JsonSink, RefusesDeeperValues) {
  expect_refusal({batch_of("c", nested(1024, false))},
                 "column 'c': found more than 1024 levels, expected at most 1024");
}

TEST_F(JsonSink, RefusesATypeWithoutAFormInJson) {
  const TypePtr types[] = {::arrow::binary(),
                           ::arrow::large_binary(),
                           ::arrow::binary_view(),
                           ::arrow::fixed_size_binary(2),
                           ::arrow::sparse_union({::arrow::field("a", ::arrow::int8())}),
                           ::arrow::dense_union({::arrow::field("a", ::arrow::int8())}),
                           ::arrow::run_end_encoded(::arrow::int32(), ::arrow::int8()),
                           ::arrow::month_interval(),
                           ::arrow::day_time_interval(),
                           ::arrow::month_day_nano_interval()};
  for (const TypePtr& type : types) {
    for (const TypePtr& outer :
         {type, ::arrow::list(type), ::arrow::struct_({::arrow::field("a", type)}),
          ::arrow::map(::arrow::utf8(), type)}) {
      expect_refusal(
          {batch_of("c", ::arrow::MakeEmptyArray(outer).ValueOrDie())},
          "column 'c': found type " + type->ToString() + ", expected one that has a form in JSON");
    }
  }
  expect_refusal({batch_of("c", values_at("[0]", ArrowArray(::arrow::binary(), R"(["a"])")))},
                 "column 'c': found type binary, expected one that has a form in JSON");
}

TEST_F(JsonSink, RefusesNamesThatNoObjectCanHave) {
  const auto one = ::arrow::field("x", ::arrow::int8());
  expect_refusal({batch_of({{"x", ::arrow::int8(), "[1]"}, {"x", ::arrow::int8(), "[1]"}})},
                 "several fields of a JSON object would have the name 'x'");
  expect_refusal({batch_of({{"\xFF", ::arrow::int8(), "[1]"}})},
                 "the name of a column is not UTF-8");
  expect_refusal(
      {batch_of("c",
                ::arrow::MakeEmptyArray(::arrow::list(::arrow::struct_({one, one}))).ValueOrDie())},
      "column 'c': several fields of a JSON object would have the name 'x'");
}

template <class Builder>
ArrayPtr not_utf8() {
  Builder builder;
  EXPECT_TRUE(builder.Append("a").ok());
  EXPECT_TRUE(builder.Append("a\xFF").ok());
  return builder.Finish().ValueOrDie();
}

TEST_F(JsonSink, RefusesTextThatIsNotUtf8) {
  const ArrayPtr texts[] = {not_utf8<::arrow::StringBuilder>(),
                            not_utf8<::arrow::LargeStringBuilder>(),
                            not_utf8<::arrow::StringViewBuilder>()};
  for (const ArrayPtr& text : texts) {
    SCOPED_TRACE(*text->type());
    const std::string reason = "Invalid UTF8 sequence at string index 1";
    expect_refusal({batch_of("c", text)}, "column 'c': " + reason);
    expect_refusal({batch_of("c", values_at("[0, 1]", text))},
                   "column 'c': Dictionary array invalid: Invalid: " + reason);
  }
}

TEST_F(JsonSink, RefusesATimeThatHasNoText) {
  expect_refusal({batch_of({{"c", ::arrow::list(::arrow::date32()), "[[0, 11248738]]"}})},
                 "column 'c': found a year that is not from -32767 to 32767");
  expect_refusal({batch_of({{"c", ::arrow::time32(TimeUnit::SECOND), "[0, 86400]"}})},
                 "column 'c': found a time that is not within a day");
}

}  // namespace
}  // namespace numera::testing
