// --cast: types without a host form, and the types that they become. --strict: no change of type.

#include <arrow/api.h>
#include <arrow/extension/uuid.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/arrow_values.h"
#include "tests/tools/program.h"

namespace numera::testing {
namespace {

struct CastOptions {
  std::string type;  ///< as printed
  std::shared_ptr<::arrow::Array> values;
  std::string encoded_type;
  std::string host_class;
  std::string path;  ///< the path to the value that is cast
  std::string cast;
  std::string returned;
};

std::shared_ptr<::arrow::Array> numbered_categories() {
  return ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), "[1, 0]"),
                                              ArrowArray(::arrow::int64(), "[10, 20]"))
      .ValueOrDie();
}

std::shared_ptr<::arrow::Array> runs() {
  return ::arrow::RunEndEncodedArray::Make(2, ArrowArray(::arrow::int32(), "[2]"),
                                           ArrowArray(::arrow::utf8(), R"(["r"])"))
      .ValueOrDie();
}

std::shared_ptr<::arrow::Array> identifiers() {
  return ::arrow::ExtensionType::WrapArray(
      ::arrow::extension::uuid(),
      ArrowArray(::arrow::fixed_size_binary(16), R"(["0123456789abcdef", null])"));
}

std::vector<CastOptions> cast_options() {
  using namespace ::arrow;  // NOLINT: names of types
  return {
      {"decimal128(9, 2)", ArrowArray(decimal128(9, 2), R"(["1.25", null])"), "double", "-",
       "decimal128(9, 2)", "double", "double"},
      {"decimal256(40, 0)", ArrowArray(decimal256(40, 0), R"(["-7", "3"])"), "double", "-",
       "decimal256(40, 0)", "double", "double"},
      {"halffloat", ArrowArray(float16(), "[1.5, null]"), "double", "-", "halffloat", "double",
       "double"},
      {"string_view", ArrowArray(utf8_view(), R"(["longer than twelve bytes", null])"), "string",
       "-", "string_view", "string", "large_string"},
      {"binary_view", ArrowArray(binary_view(), R"(["x", ""])"), "binary_array", "-", "binary_view",
       "binary", "large_binary"},
      {"fixed_size_list<item: int8>[2]", ArrowArray(fixed_size_list(int8(), 2), "[[1, 2], null]"),
       "list_array", "-", "fixed_size_list<item: int8>[2]", "list<item: int8>",
       "large_list<item: int8>"},
      {"list_view<item: int8>", ArrowArray(list_view(int8()), "[[1], [2, 3]]"), "list_array", "-",
       "list_view<item: int8>", "list<item: int8>", "large_list<item: int8>"},
      {"list<item: decimal128(5, 1)>", ArrowArray(list(decimal128(5, 1)), R"([["1.5"], []])"),
       "list_array", "-", "[]: decimal128(5, 1)", "double", "large_list<item: double>"},
      {"dictionary<values=int64, indices=int8, ordered=0>", numbered_categories(), "int64",
       "categorical", "dictionary<values=int64, indices=int8, ordered=0>", "int64", "int64"},
      {"run_end_encoded<run_ends: int32, values: string>", runs(), "string", "-",
       "run_end_encoded<run_ends: int32, values: string>", "string", "large_string"},
      {"extension<arrow.uuid>", identifiers(), "fixed_binary_array", "-", "extension<arrow.uuid>",
       "fixed_size_binary[16]", "large_binary"},
      {"month_interval", ArrowArray(month_interval(), "[14, null]"), "string", "-",
       "month_interval", "string", "large_string"},
  };
}

class Casts : public ::testing::Test {
 protected:
  void write(const std::shared_ptr<::arrow::Array>& values) {
    const auto schema = ::arrow::schema({::arrow::field("c", values->type())});
    write_ipc(file_, *::arrow::Table::Make(schema, {values}));
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("casts.arrow");
};

TEST_F(Casts, AreNamedWithWhatTheColumnReturnsAs) {
  for (const CastOptions& test : cast_options()) {
    SCOPED_TRACE(test.type);
    write(test.values);
    const std::string nulls = std::to_string(test.values->null_count());
    EXPECT_EQ(table_rows(converted(file_, {"--cast"})),
              "c | " + test.type + " | " + test.encoded_type + " | " + test.host_class +
                  " | 2 | 1 | " + nulls + " | cast " + test.path + " to " + test.cast +
                  ", equal as " + test.returned + "\n");
  }
}

TEST_F(Casts, AreRefusedWhereTheyAreNotAskedFor) {
  for (const CastOptions& test : cast_options()) {
    SCOPED_TRACE(test.type);
    write(test.values);
    const Outcome run = run_program({"convert", file_});
    EXPECT_EQ(run.exit_status, 1);
    EXPECT_THAT(table_rows(run.out), ::testing::StartsWith("c | " + test.type + " | - | "));
    EXPECT_THAT(table_rows(run.out), ::testing::HasSubstr("casts were not asked for"));
    EXPECT_EQ(run.errors,
              "numera-arrow: " + file_ + ": 1 of 1 columns were refused or came back different\n");
  }
}

TEST_F(Casts, LeaveOtherColumnsOnTheirWay) {
  write_ipc(file_, *table_of({{"n", ::arrow::int8(), "[1]"},
                              {"h", ::arrow::float16(), "[1.5]"},
                              {"t", ::arrow::utf8(), R"(["x"])"}}));
  const Outcome run = run_program({"convert", file_});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(
      table_rows(run.out),
      "n | int8 | int8 | int8 | 1 | 1 | 0 | equal\n"
      "h | halffloat | - | - | 1 | 1 | 0 | found type halffloat, expected one that has a host "
      "form; casts were not asked for.\n"
      "t | string | string | string | 1 | 1 | 0 | equal as large_string\n");
  EXPECT_EQ(run.errors,
            "numera-arrow: " + file_ + ": 1 of 3 columns were refused or came back different\n");
}

TEST_F(Casts, HaveNoRuleForUnions) {
  write(ArrowArray(::arrow::dense_union({::arrow::field("i", ::arrow::int8())}), "[[0, 1]]"));
  EXPECT_EQ(run_program({"convert", file_, "--cast"}).exit_status, 1);
}

TEST_F(Casts, OfAFileWithoutRowsAreNamedToo) {
  const auto schema = ::arrow::schema({::arrow::field("d", ::arrow::decimal128(5, 2))});
  write_ipc(file_, *::arrow::Table::Make(
                       schema, ::arrow::ChunkedArrayVector{std::make_shared<::arrow::ChunkedArray>(
                                   ::arrow::ArrayVector{}, schema->field(0)->type())}));
  EXPECT_EQ(
      table_rows(converted(file_, {"--cast"})),
      "d | decimal128(5, 2) | double | - | 0 | 0 | 0 | cast decimal128(5, 2) to double, equal "
      "as double\n");
}

TEST_F(Casts, AndEveryOtherChangeOfTypeFailWithStrict) {
  write(ArrowArray(::arrow::float16(), "[1.5]"));
  const std::string name = "numera-arrow: " + file_ + ": ";
  EXPECT_EQ(run_program({"convert", file_, "--cast", "--strict"}).errors,
            name + "column 'c' returns as double\n");
  write(ArrowArray(::arrow::date32(), "[1]"));
  const Outcome run = run_program({"convert", file_, "--strict"});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(table_rows(run.out),
            "c | date32[day] | datetime | datetime | 1 | 1 | 0 | equal as timestamp[s]\n");
  EXPECT_EQ(run.errors, name + "column 'c' returns as timestamp[s]\n");
}

TEST_F(Casts, AndNoChangeOfTypePassWithStrict) {
  const auto item = ::arrow::field("element", ::arrow::int8(), false);
  write(ArrowArray(::arrow::struct_({::arrow::field("l", ::arrow::large_list(item), false)}),
                   R"([{"l": [1, 2]}])"));
  EXPECT_EQ(table_rows(converted(file_, {"--strict"})),
            "c | struct<l: large_list<element: int8 not null> not null> | struct | table | 1 | 1 | "
            "0 | equal\n");
}

}  // namespace
}  // namespace numera::testing
