// JSON lines become tables whose types fit all their lines, or are refused with the line.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/files/tables.h"

namespace numera::testing {
namespace {

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

class JsonFiles : public ::testing::Test {
 protected:
  void expect_rows(const std::string& text, const std::vector<NamedColumn>& columns) {
    SCOPED_TRACE(text.substr(0, 200));
    write_text(file_, text);
    expect_table(file_, *table_of(columns));
  }

  void expect_invalid(const std::string& text, const std::string& reason) {
    SCOPED_TRACE(text.substr(0, 200));
    write_text(file_, text);
    expect_refused(file_, "Invalid: " + reason);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("rows");
};

const auto kTime = ::arrow::timestamp(::arrow::TimeUnit::SECOND);

TEST_F(JsonFiles, EachValueHasTheTypeOfItsColumn) {
  expect_rows(R"({"n": 1, "d": 1.5, "b": true, "t": "x", "m": "2020-01-02T03:04:05", "z": null})"
              "\n"
              R"({"n": -2, "d": -0.0, "b": false, "t": "", "m": "1969-12-31", "z": null})"
              "\n",
              {{"n", ::arrow::int64(), "[1, -2]"},
               {"d", ::arrow::float64(), "[1.5, -0.0]"},
               {"b", ::arrow::boolean(), "[true, false]"},
               {"t", ::arrow::utf8(), R"(["x", ""])"},
               {"m", kTime, R"(["2020-01-02 03:04:05", "1969-12-31"])"},
               {"z", ::arrow::null(), "[null, null]"}});
}

TEST_F(JsonFiles, NestedValuesAreStructsAndLists) {
  expect_rows("{\"l\": [1, null], \"s\": {\"a\": [{\"b\": \"x\"}]}}\n{\"l\": [], \"s\": null}\n",
              {{"l", ::arrow::list(::arrow::int64()), "[[1, null], []]"},
               {"s",
                ::arrow::struct_({::arrow::field(
                    "a", ::arrow::list(::arrow::struct_({::arrow::field("b", ::arrow::utf8())})))}),
                R"([{"a": [{"b": "x"}]}, null])"}});
}

TEST_F(JsonFiles, LinesEndInAnyWayAndEmptyLinesAreNoRows) {
  for (const char* text :
       {"{\"n\":1}\n{\"n\":2}\n", "{\"n\":1}\n{\"n\":2}", "{\"n\":1}\r\n{\"n\":2}\r\n",
        "{\"n\":1}\r{\"n\":2}\r", "\n \n{\"n\":1}\n\n\t\n{\"n\":2}\n\n",
        "\xEF\xBB\xBF{\"n\":1}\n{\"n\":2}\n", " {\"n\":1} \n  {\"n\":2}"}) {
    expect_rows(text, {{"n", ::arrow::int64(), "[1, 2]"}});
  }
}

TEST_F(JsonFiles, FieldsAreNullWhereALineHasThemNot) {
  expect_rows("{\"a\":1}\n{\"b\":\"x\"}\n{}\n", {{"a", ::arrow::int64(), "[1, null, null]"},
                                                 {"b", ::arrow::utf8(), R"([null, "x", null])"}});
}

TEST_F(JsonFiles, ObjectsWithoutFieldsAreRows) {
  write_text(file_, "{}\n{}\n{}\n");
  const auto source = files::open_source(file_).ValueOrDie();
  EXPECT_EQ(source->schema()->num_fields(), 0);
  EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), 3);
  EXPECT_EQ(source->Next().ValueOrDie(), nullptr);
}

TEST_F(JsonFiles, TypesAreWidenedWhereverTheirLinesAre) {
  const auto structs = ::arrow::struct_(
      {::arrow::field("a", ::arrow::float64()), ::arrow::field("b", ::arrow::utf8())});
  const std::tuple<const char*, const char*, std::shared_ptr<::arrow::DataType>, const char*>
      cases[] = {
          {"1", "2.5", ::arrow::float64(), "[1, 2.5]"},
          {"2.5", "1", ::arrow::float64(), "[2.5, 1]"},
          {"null", "true", ::arrow::boolean(), "[null, true]"},
          {"\"x\"", "null", ::arrow::utf8(), R"(["x", null])"},
          {"\"2020-01-02\"", "\"x\"", ::arrow::utf8(), R"(["2020-01-02", "x"])"},
          {"\"x\"", "\"2020-01-02\"", ::arrow::utf8(), R"(["x", "2020-01-02"])"},
          {"[]", "[1]", ::arrow::list(::arrow::int64()), "[[], [1]]"},
          {"[1]", "[null, 2.5]", ::arrow::list(::arrow::float64()), "[[1], [null, 2.5]]"},
          {"{\"a\": 1}", "{\"b\": \"x\", \"a\": 2.5}", structs,
           R"([{"a": 1, "b": null}, {"a": 2.5, "b": "x"}])"},
          {"{}", "{\"a\": 1}", ::arrow::struct_({::arrow::field("a", ::arrow::int64())}),
           R"([{"a": null}, {"a": 1}])"},
      };
  const std::string far_apart = repeated(std::string(1023, ' ') + "\n", 2048);
  for (const auto& [first, second, type, values] : cases) {
    for (const std::string& between : {std::string(), far_apart}) {
      SCOPED_TRACE(between.size());
      expect_rows(std::string("{\"c\":") + first + "}\n" + between + "{\"c\":" + second + "}\n",
                  {{"c", type, values}});
    }
  }
}

TEST_F(JsonFiles, TypesThatDoNotFitAreNamedWithTheirLine) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"1", "\"x\"", "column 'c': found string, expected int64 as before"},
      {"\"x\"", "1", "column 'c': found int64, expected string as before"},
      {"true", "1", "column 'c': found int64, expected bool as before"},
      {"1", "\"2020-01-02\"", "column 'c': found timestamp[s], expected int64 as before"},
      {"[1]", "1", "column 'c': found int64, expected list<item: int64> as before"},
      {"[1]", "[true]", "column 'c[]': found bool, expected int64 as before"},
      {"{\"a\":1}", "[]",
       "column 'c': found list<item: null>, expected struct<a: int64> as before"},
      {"{\"a\":{\"b\":1}}", "{\"a\":{\"b\":\"x\"}}",
       "column 'c.a.b': found string, expected int64 as before"},
  };
  const std::string far_apart = repeated(std::string(1023, ' ') + "\n", 2048);
  for (const auto& [first, second, reason] : cases) {
    const std::string before = std::string("{\"c\":") + first + "}\n{}\n";
    const std::string after = std::string("{\"c\":") + second + "}\n{}\n";
    expect_invalid(before + after, std::string("line 3: ") + reason);
    expect_invalid(before + far_apart + after, std::string("line 2051: ") + reason);
  }
}

TEST_F(JsonFiles, NumbersAreReadAsFarAsDoubleGoes) {
  expect_rows("{\"n\":9223372036854775807}\n{\"n\":-9223372036854775808}\n",
              {{"n", ::arrow::int64(), "[9223372036854775807, -9223372036854775808]"}});
  expect_rows("{\"n\":9223372036854775808}\n",
              {{"n", ::arrow::float64(), "[9.223372036854776e18]"}});
  expect_rows("{\"n\":1e-400}\n", {{"n", ::arrow::float64(), "[0]"}});
  expect_invalid("{}\n{\"n\":1e400}\n", "line 2: Number too big to be stored in double");
  expect_invalid("{\"n\":01}\n", "line 1: Missing a comma or '}' after an object member");
}

TEST_F(JsonFiles, MomentsWithAnOffsetAreInUtc) {
  expect_rows("{\"m\":\"2020-01-02T03:04:05Z\"}\n{\"m\":\"2020-01-02T03:04:05+02:00\"}\n",
              {{"m", kTime, R"(["2020-01-02 03:04:05", "2020-01-02 01:04:05"])"}});
  expect_rows("{\"m\":\"2020-01-02T03:04:05.5\"}\n",
              {{"m", ::arrow::utf8(), R"(["2020-01-02T03:04:05.5"])"}});
}

TEST_F(JsonFiles, TextHasAnyCharacter) {
  expect_rows("{\"t\":\"\\u0000\\ud835\\udf06\\\"\\\\{[,𝜆\"}\n",
              {{"t", ::arrow::utf8(), R"(["\u0000𝜆\"\\{[,𝜆"])"}});
  expect_rows("{\"{\\\"[\\u0000\":1,\"\":2}\n",
              {{std::string("{\"[\0", 4), ::arrow::int64(), "[1]"}, {"", ::arrow::int64(), "[2]"}});
}

TEST_F(JsonFiles, ColumnsAreReadInTheOrderAskedFor) {
  write_text(file_, "{\"a\":1,\"b\":\"x\",\"c\":true}\n{\"c\":false,\"b\":\"y\"}\n");
  expect_table(
      file_,
      *table_of({{"c", ::arrow::boolean(), "[true, false]"}, {"a", ::arrow::int64(), "[1, null]"}}),
      {.columns = {"c", "a"}});
  expect_refused(file_, "Invalid: there is no column 'd'", {.columns = {"d"}});
}

TEST_F(JsonFiles, LinesThatAreNotOneObjectAreRefused) {
  const std::pair<std::string, const char*> cases[] = {
      {"null", "it is no JSON object"},
      {"[1]", "it is no JSON object"},
      {"1", "it is no JSON object"},
      {"a,b", "it is no JSON object"},
      {std::string(1, '\0'), "it is no JSON object"},
      {"{\"n\":1}{\"n\":2}", "text follows the JSON object"},
      {"{\"n\":1},", "text follows the JSON object"},
      {std::string("{\"n\":1}\0", 8), "text follows the JSON object"},
      {"{\"n\":1}}", "text follows the JSON object"},
      {"{\"n\":", "the JSON object does not end in it"},
      {"{\"n\":\"x", "the JSON object does not end in it"},
      {"{\"n\":\"x\\", "the JSON object does not end in it"},
      {"{", "the JSON object does not end in it"},
      {"{\"n\":\n1}", "the JSON object does not end in it"},
      {"{\"t\":\"\xF6\"}", "it is not UTF-8"},
      {"{\"\xED\xA0\x80\":1}", "it is not UTF-8"},
      {"{\"t\":\"\\ud800\"}", "The surrogate pair in string is invalid"},
      {"{\"t\":\"\\udc00\"}", "The surrogate pair in string is invalid"},
      {std::string("{\"t\":\"\0\"}", 9), "Missing a closing quotation mark in string"},
      {"{\"n\":1,\"n\":2}", "Column(/n) was specified twice"},
      {"{\"n\":1,\"\\u006e\":2}", "Column(/n) was specified twice"},
      {"{\"n\" 1}", "Missing a colon after a name of object member"},
      {"{\"n\":1]", "Missing a comma or '}' after an object member"},
      {"{\"n\":[1}}", "Missing a comma or ']' after an array element"},
      {"{\"n\":+1}", "Invalid value"},
      {"{n:1}", "Missing a name for object member"},
  };
  for (const auto& [line, reason] : cases) {
    expect_invalid("{\"n\":1}\n\n" + line + "\n{\"n\":3}\n", std::string("line 3: ") + reason);
    expect_invalid("{\"n\":1}\n\n" + line, std::string("line 3: ") + reason);
  }
}

TEST_F(JsonFiles, NestingIsRefusedBeforeItEndsTheStack) {
  const auto lists = [](int levels) {
    return "{\"a\":" + repeated("[", levels) + repeated("]", levels) + "}\n";
  };
  write_text(file_, lists(1023));
  EXPECT_EQ(read_table(file_).ValueOrDie()->num_rows(), 1);
  const std::string reason = "line 2: it has more than 1024 levels of nesting";
  expect_invalid("{}\n" + lists(1024), reason);
  expect_invalid("{}\n" + lists(100000), reason);
  expect_invalid("{}\n{\"a\":" + repeated("[", 100000), reason);
  expect_invalid("{}\n" + repeated("{\"a\":", 100000), reason);
}

TEST_F(JsonFiles, BlocksEndBetweenLines) {
  std::string text;
  std::string numbers = "[0";
  for (int i = 0; i < 100000; ++i) {
    text += "{\"n\": " + std::to_string(i) + ", \"t\": \"abcdefghij\"}\n";
    if (i > 0) numbers += "," + std::to_string(i);
  }
  write_text(file_, text);
  expect_table(file_, *table_of({{"n", ::arrow::int64(), numbers + "]"}}), {.columns = {"n"}});
  const auto source = files::open_source(file_, {.batch_rows = 1000}).ValueOrDie();
  const auto batches = source->ToRecordBatches().ValueOrDie();
  EXPECT_EQ(std::ranges::max(batches, {}, &::arrow::RecordBatch::num_rows)->num_rows(), 1000);
  EXPECT_EQ(source->chunks(), 4);
}

TEST_F(JsonFiles, ALineIsLongerThanABlock) {
  const std::string value(std::size_t{3} << 20, 'x');
  expect_rows("{\"t\":\"" + value + "\"}\n{\"t\":\"y\"}\n",
              {{"t", ::arrow::utf8(), "[\"" + value + "\", \"y\"]"}});
}

TEST_F(JsonFiles, ADifferentFieldInEachLineNeedsLittleMemory) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += "{\"field" + std::to_string(i) + "\":1}\n";
  write_text(file_, text);
  const auto source = files::open_source(file_).ValueOrDie();
  EXPECT_EQ(source->schema()->num_fields(), 3000);
  std::int64_t rows = 0;
  for (auto batch = source->Next(); *batch != nullptr; batch = source->Next()) {
    EXPECT_LE((*batch)->num_rows(), (1 << 22) / 3000);
    rows += (*batch)->num_rows();
  }
  EXPECT_EQ(rows, 3000);
}

TEST_F(JsonFiles, TooManyFieldsAreRefused) {
  const auto fields = [](int first, int count, const char* before, const char* behind) {
    std::string text = before;
    for (int i = first; i < first + count; ++i) text += "\"" + std::to_string(i) + "\":1,";
    return text + "\"last\":1" + behind;
  };
  const std::string reason = "the file has more than 65536 fields, or their names are too long";
  expect_invalid(fields(0, 65536, "{", "}\n"), "line 1: " + reason);
  expect_invalid(fields(0, 40000, "{", "}\n") + fields(40000, 40000, "{\"a\":[{", "}]}\n"),
                 "line 2: " + reason);
  expect_invalid("{\"" + std::string(std::size_t{40} << 20, 'x') + "\":1}\n{\"" +
                     std::string(std::size_t{40} << 20, 'y') + "\":1}\n",
                 "line 2: " + reason);
}

TEST_F(JsonFiles, ADifferentFieldInEachElementIsRefused) {
  std::string line = "{\"a\":[{}";
  for (int i = 0; i < 10000; ++i) line += ",{\"" + std::to_string(i) + "\":1}";
  expect_invalid(line + "]}\n", "line 1: its objects have too many different fields");
}

}  // namespace
}  // namespace numera::testing
