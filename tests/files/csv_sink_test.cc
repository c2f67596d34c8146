// CSV as a sink writes it, and what it refuses.

#include <arrow/array/array_dict.h>

#include <arrow/array/util.h>
#include <arrow/extension/bool8.h>
#include <arrow/io/compressed.h>
#include <arrow/io/file.h>
#include <arrow/util/compression.h>
#include <gtest/gtest.h>

#include "tests/files/written.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using ::arrow::Compression;
using ::arrow::Status;
using ::arrow::TimeUnit;
using files::Format;
using TypePtr = std::shared_ptr<::arrow::DataType>;

class CsvSink : public ::testing::Test {
 protected:
  std::string written(const ::arrow::RecordBatchVector& batches,
                      const files::WriteOptions& options = {}) {
    EXPECT_EQ(write_batches(file_, batches, options), Status::OK());
    return read_text(file_);
  }

  void expect_refusal(const ::arrow::RecordBatchVector& batches, const std::string& reason,
                      const files::WriteOptions& options = {}) {
    EXPECT_EQ(write_batches(file_, batches, options),
              Status::Invalid("cannot write ", file_, ": ", reason));
    EXPECT_EQ(folder_.names(), std::vector<std::string>());
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a.csv");
};

std::shared_ptr<::arrow::RecordBatch> column(const TypePtr& type, const std::string& json) {
  return batch_of("c", ArrowArray(type, json));
}

TEST_F(CsvSink, WritesAHeadingAndARowPerRow) {
  EXPECT_EQ(written({batch_of({{"n", ::arrow::int64(), "[1, null]"},
                               {"a \"b\",c", ::arrow::utf8(), R"(["", null])"}}),
                     batch_of({{"n", ::arrow::int64(), "[-3]"},
                               {"a \"b\",c", ::arrow::utf8(), R"(["x, \"y\"\nz"])"}})}),
            "\"n\",\"a \"\"b\"\",c\"\n"
            "1,\"\"\n"
            ",\n"
            "-3,\"x, \"\"y\"\"\nz\"\n");
}

TEST_F(CsvSink, WritesTheHeadingOfATableWithoutRows) {
  EXPECT_EQ(written({column(::arrow::int8(), "[]")}), "\"c\"\n");
}

TEST_F(CsvSink, WritesEveryPlainType) {
  const std::tuple<TypePtr, std::string, std::string> cases[] = {
      {::arrow::null(), "[null]", "\n"},
      {::arrow::boolean(), "[true, false, null]", "true\nfalse\n\n"},
      {::arrow::int8(), "[-128, null]", "-128\n\n"},
      {::arrow::uint64(), "[18446744073709551615]", "18446744073709551615\n"},
      {::arrow::float16(), "[1.5, 3.14159]", "1.5\n3.140625\n"},
      {::arrow::float32(), "[0.1, 1e20, NaN, Inf, -Inf, -0.0]", "0.1\n1e+20\nnan\ninf\n-inf\n-0\n"},
      {::arrow::float64(), "[0.1, 3, 5e-324, null]", "0.1\n3\n5e-324\n\n"},
      {::arrow::decimal32(5, 2), R"(["1.10"])", "1.10\n"},
      {::arrow::decimal64(5, 2), R"(["-1.10"])", "-1.10\n"},
      {::arrow::decimal128(38, 10), R"(["0.0000000001"])", "1E-10\n"},
      {::arrow::decimal256(5, 0), R"(["7", null])", "7\n\n"},
      {::arrow::date32(), "[0, -1, null, 2932897]", "1970-01-01\n1969-12-31\n\n10000-01-01\n"},
      {::arrow::date64(), "[86400000]", "1970-01-02\n"},
      {::arrow::time32(TimeUnit::SECOND), "[86399]", "23:59:59\n"},
      {::arrow::time64(TimeUnit::NANO), "[1]", "00:00:00.000000001\n"},
      {::arrow::timestamp(TimeUnit::SECOND), "[-1]", "1969-12-31 23:59:59\n"},
      {::arrow::timestamp(TimeUnit::MICRO), "[1]", "1970-01-01 00:00:00.000001\n"},
      {::arrow::timestamp(TimeUnit::MILLI, "UTC"), "[1]", "1970-01-01 00:00:00.001Z\n"},
      {::arrow::timestamp(TimeUnit::SECOND, "Europe/Berlin"), "[0]", "1970-01-01 00:00:00Z\n"},
      {::arrow::timestamp(TimeUnit::SECOND, "no/where"), "[0]", "1970-01-01 00:00:00Z\n"},
      {::arrow::duration(TimeUnit::SECOND), "[-5, null]", "-5\n\n"},
      {::arrow::utf8(), R"(["ä", "", null])", "\"ä\"\n\"\"\n\n"},
      {::arrow::large_utf8(), R"(["a"])", "\"a\"\n"},
      {::arrow::utf8_view(), R"(["a", null, "longer than 12 bytes"])",
       "\"a\"\n\n\"longer than 12 bytes\"\n"}};
  for (const auto& [type, json, text] : cases) {
    EXPECT_EQ(written({column(type, json)}), "\"c\"\n" + text) << *type;
  }
}

std::shared_ptr<::arrow::Array> values_at(const std::string& indices, const TypePtr& type,
                                          const std::string& values) {
  return ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), indices),
                                              ArrowArray(type, values))
      .ValueOrDie();
}

TEST_F(CsvSink, WritesTheValuesOfADictionary) {
  EXPECT_EQ(written({batch_of(
                "c", values_at("[1, null, 0, 2]", ::arrow::utf8(), R"(["a", "b", null])"))}),
            "\"c\"\n\"b\"\n\n\"a\"\n\n");
  EXPECT_EQ(
      written({batch_of(
          "c", values_at("[1, 1]", ::arrow::timestamp(TimeUnit::SECOND, "+05:30"), "[0, 1]"))}),
      "\"c\"\n1970-01-01 00:00:01Z\n1970-01-01 00:00:01Z\n");
  EXPECT_EQ(
      written({batch_of("c", values_at("[0, 1, 0]", ::arrow::float64(), "[0.5, 2.5]")->Slice(1))}),
      "\"c\"\n2.5\n0.5\n");
}

TEST_F(CsvSink, WritesTheStorageOfAnExtension) {
  const auto storage = ArrowArray(::arrow::int8(), "[1, null]");
  EXPECT_EQ(written({batch_of(
                "c", ::arrow::ExtensionType::WrapArray(::arrow::extension::bool8(), storage))}),
            "\"c\"\n1\n\n");
}

TEST_F(CsvSink, SeparatesFieldsAsAskedFor) {
  const auto batch = batch_of({{"a", ::arrow::int8(), "[1]"}, {"b", ::arrow::int8(), "[2]"}});
  EXPECT_EQ(written({batch}, {.csv_delimiter = ';'}), "\"a\";\"b\"\n1;2\n");
  file_ = folder_.path("a.tsv");
  EXPECT_EQ(written({batch}), "\"a\"\t\"b\"\n1\t2\n");
  EXPECT_EQ(written({batch}, {.csv_delimiter = '|'}), "\"a\"|\"b\"\n1|2\n");
  file_ = folder_.path("a.txt");
  EXPECT_EQ(written({batch}, {.format = Format::kCsv}), "\"a\",\"b\"\n1,2\n");
}

TEST_F(CsvSink, RefusesADelimiterThatCouldStandInAValue) {
  for (const char delimiter : {'"', '\n', '\r', '\0', ' ', '.', '-', '+', ':', '0', 'e', '\xE4'}) {
    const int code = static_cast<unsigned char>(delimiter);
    expect_refusal({column(::arrow::int8(), "[1]")},
                   "csv_delimiter: found character " + std::to_string(code) +
                       ", expected tab or one of !#$%&'()*,/;<=>?@[\\]^_`{|}~",
                   {.csv_delimiter = delimiter});
  }
}

std::string decompressed(const std::string& path, Compression::type type) {
  const auto codec = ::arrow::util::Codec::Create(type).ValueOrDie();
  const auto file = ::arrow::io::ReadableFile::Open(path).ValueOrDie();
  const auto text = ::arrow::io::CompressedInputStream::Make(codec.get(), file).ValueOrDie();
  return text->Read(1 << 20).ValueOrDie()->ToString();
}

TEST_F(CsvSink, IsCompressedByTheEndOfThePathOrAsAsked) {
  const std::tuple<std::string, std::string, Compression::type> cases[] = {
      {"a.csv.gz", "", Compression::GZIP},    {"a.csv.zst", "", Compression::ZSTD},
      {"a.csv.bz2", "", Compression::BZ2},    {"a.csv.lz4", "", Compression::LZ4_FRAME},
      {"a.csv", "gzip:9", Compression::GZIP}, {"a.csv.gz", "zstd:3", Compression::ZSTD}};
  for (const auto& [name, compression, codec] : cases) {
    SCOPED_TRACE(name);
    file_ = folder_.path(name);
    written({column(::arrow::int8(), "[1]"), column(::arrow::int8(), "[2]")},
            {.compression = compression});
    EXPECT_EQ(decompressed(file_, codec), "\"c\"\n1\n2\n");
  }
  file_ = folder_.path("a.csv.gz");
  EXPECT_EQ(written({column(::arrow::int8(), "[1]")}, {.compression = "none"}), "\"c\"\n1\n");
}

TEST_F(CsvSink, RefusesACompressionThatTextDoesNotHave) {
  for (const char* name : {"snappy", "brotli"}) {
    expect_refusal({column(::arrow::int8(), "[1]")},
                   std::string("compression: found '") + name +
                       "', expected one of none, zstd, lz4, gzip, bz2",
                   {.compression = name});
  }
}

TEST_F(CsvSink, LeavesNothingOfCompressedTextThatIsNotFinished) {
  for (const char* name : {"a.csv.gz", "a.csv.zst"}) {
    const auto sink = files::open_sink(folder_.path(name)).ValueOrDie();
    EXPECT_EQ(sink->write(column(::arrow::int8(), "[1]")), Status::OK());
  }
  EXPECT_EQ(folder_.names(), std::vector<std::string>());
}

TEST_F(CsvSink, RefusesATypeWithoutAFormInCsv) {
  const TypePtr types[] = {::arrow::binary(),
                           ::arrow::large_binary(),
                           ::arrow::binary_view(),
                           ::arrow::fixed_size_binary(2),
                           ::arrow::list(::arrow::int8()),
                           ::arrow::large_list(::arrow::int8()),
                           ::arrow::list_view(::arrow::int8()),
                           ::arrow::fixed_size_list(::arrow::int8(), 1),
                           ::arrow::struct_({::arrow::field("a", ::arrow::int8())}),
                           ::arrow::map(::arrow::utf8(), ::arrow::int8()),
                           ::arrow::sparse_union({::arrow::field("a", ::arrow::int8())}),
                           ::arrow::dense_union({::arrow::field("a", ::arrow::int8())}),
                           ::arrow::run_end_encoded(::arrow::int32(), ::arrow::int8()),
                           ::arrow::month_interval(),
                           ::arrow::day_time_interval(),
                           ::arrow::month_day_nano_interval(),
                           ::arrow::dictionary(::arrow::int8(), ::arrow::binary())};
  for (const TypePtr& type : types) {
    expect_refusal(
        {batch_of("c", ::arrow::MakeEmptyArray(type).ValueOrDie())},
        "column 'c': found type " + type->ToString() + ", expected one that has a form in CSV");
  }
}

TEST_F(CsvSink, RefusesATableWithoutColumns) {
  expect_refusal({::arrow::RecordBatch::Make(::arrow::schema(::arrow::FieldVector{}), 2,
                                             ::arrow::ArrayVector{})},
                 "a table without columns has no form in CSV");
}

TEST_F(CsvSink, RefusesANameThatIsNotUtf8) {
  expect_refusal({batch_of({{"\xFF", ::arrow::int8(), "[1]"}})},
                 "the name of a column is not UTF-8");
}

TEST_F(CsvSink, RefusesATimeThatArrowDoesNotPrint) {
  const std::string year = "column 'c': found a year that is not from -32767 to 32767";
  const std::string time = "column 'c': found a time that is not within a day";
  const std::tuple<TypePtr, std::string, std::string> cases[] = {
      {::arrow::date32(), "[null, 11248738]", year},
      {::arrow::date32(), "[-12687429]", year},
      {::arrow::date64(), "[971890963200000]", year},
      {::arrow::timestamp(TimeUnit::SECOND), "[971890963200]", year},
      {::arrow::timestamp(TimeUnit::SECOND, "UTC"), "[-9223372036854775808]", year},
      {::arrow::time32(TimeUnit::SECOND), "[0, 86400]", time},
      {::arrow::time64(TimeUnit::NANO), "[-1]", time}};
  for (const auto& [type, json, reason] : cases) {
    expect_refusal({column(type, "[]"), column(type, json)}, reason);
  }
}

TEST_F(CsvSink, WritesTheFirstAndTheLastYear) {
  EXPECT_EQ(written({column(::arrow::date32(), "[-12687428, 11248737]")}),
            "\"c\"\n-32767-01-01\n32767-12-31\n");
  EXPECT_EQ(written({column(::arrow::timestamp(TimeUnit::SECOND), "[971890963199]")}),
            "\"c\"\n32767-12-31 23:59:59\n");
}

}  // namespace
}  // namespace numera::testing
