// What the names of folders add to joined files, and what these state.

#include <arrow/array/array_dict.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/files/joined_files.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

const auto kTextKeys = ::arrow::dictionary(::arrow::int32(), ::arrow::utf8());

TEST_F(JoinedFiles, HaveAColumnPerKeyInTheNamesOfFolders) {
  write("rows/year=2023/city=Oslo/1.csv", "n\n1\n");
  write("rows/year=2024/city=New%20York/1.csv", "n\n2\n3\n");
  write("rows/year=2024/city=__HIVE_DEFAULT_PARTITION__/1.csv", "n\n4\n");
  const auto column = [](const char* codes, const char* texts) {
    return ::arrow::DictionaryArray::FromArrays(kTextKeys, ArrowArray(::arrow::int32(), codes),
                                                ArrowArray(::arrow::utf8(), texts))
        .ValueOrDie();
  };
  const auto schema =
      ::arrow::schema({::arrow::field("n", kInts), ::arrow::field("year", ::arrow::int32()),
                       ::arrow::field("city", kTextKeys)});
  expect({"rows"},
         *::arrow::Table::Make(
             schema, {std::make_shared<::arrow::ChunkedArray>(ArrowArray(kInts, "[1, 2, 3, 4]")),
                      std::make_shared<::arrow::ChunkedArray>(
                          ArrowArray(::arrow::int32(), "[2023, 2024, 2024, 2024]")),
                      std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{
                          column("[0]", R"(["Oslo"])"), column("[0, 0]", R"(["New York"])"),
                          column("[null]", "[]")})}));
}

TEST_F(JoinedFiles, HaveKeysOfTheNarrowestTypeThatAllValuesFit) {
  write("a/k=1/x=1/1.csv", "n\n1\n");
  write("a/k=3000000000/x=y/1.csv", "n\n2\n");
  const auto schema = files::open_source(folder_.path("a")).ValueOrDie()->schema();
  EXPECT_EQ(schema->GetFieldByName("k")->type()->ToString(), "int64");
  EXPECT_EQ(*schema->GetFieldByName("x")->type(), *kTextKeys);
}

TEST_F(JoinedFiles, HaveKeysThatBeginWithALineAndNoneWithoutAName) {
  write("rows/_k=1/=2/1.csv", "n\n1\n");
  expect({"rows"}, *table_of({{"n", kInts, "[1]"}, {"_k", ::arrow::int32(), "[1]"}}));
}

TEST_F(JoinedFiles, HaveKeysInTheFoldersThatAPatternMatches) {
  write("rows/year=2023/1.csv", "n\n1\n");
  write("rows/year=2024/1.csv", "n\n2\n");
  expect({"rows/year=2024"}, *table_of({{"n", kInts, "[2]"}}));
  expect({"rows/year=*4"}, *table_of({{"n", kInts, "[2]"}, {"year", ::arrow::int32(), "[2024]"}}));
  expect({"rows/*/1.csv"},
         *table_of({{"n", kInts, "[1, 2]"}, {"year", ::arrow::int32(), "[2023, 2024]"}}));
}

TEST_F(JoinedFiles, GiveKeysAloneIfNoneOfTheirOwnColumnsIsAskedFor) {
  write("rows/year=2023/1.csv", "n,m\n1,1\n1,1\n");
  write("rows/year=2024/1.csv", "n,m\n2,2\n");
  expect({"rows"}, *table_of({{"year", ::arrow::int32(), "[2023, 2023, 2024]"}}),
         {.columns = {"year"}});
}

TEST_F(JoinedFiles, AreRefusedIfAKeyIsAColumnToo) {
  write("rows/n=1/1.csv", "n\n1\n");
  expect_refused({"rows"}, "Invalid: the column 'n' is in a file and in the name of a folder");
}

TEST_F(JoinedFiles, AreRefusedIfAKeyIsNotUtf8) {
  write("rows/n=%FF/1.csv", "m\n1\n");
  expect_refused({"rows"}, "Invalid: /rows/n=%FF/1.csv: the name of a folder is not UTF-8");
}

TEST_F(JoinedFiles, StateTheSumsOfWhatTheyState) {
  for (const char* folder : {"rows/k=1", "rows/k=__HIVE_DEFAULT_PARTITION__"}) {
    std::filesystem::create_directories(folder_.path(folder));
  }
  write_parquet(folder_.path("rows/k=1/1.parquet"), *table_of({{"n", kInts, "[1, null, 3]"}}), 2);
  write_parquet(folder_.path("rows/k=__HIVE_DEFAULT_PARTITION__/1.parquet"),
                *table_of({{"m", kInts, "[1, null]"}}));
  const auto stated = files::open_source(folder_.path("rows")).ValueOrDie()->stated();
  EXPECT_EQ(stated.rows, 5);
  EXPECT_EQ(stated.chunks, 3);
  EXPECT_EQ(stated.nulls, (std::vector<std::optional<std::int64_t>>{3, 4, 2}));
}

TEST_F(JoinedFiles, StateNothingThatOneOfThemDoesNotState) {
  write("1.csv", "n\n1\n");
  write_parquet(folder_.path("1.parquet"), *table_of({{"n", kInts, "[1]"}}));
  const auto source = files::open_source(paths({"1.csv", "1.parquet"})).ValueOrDie();
  const auto stated = source->stated();
  EXPECT_EQ(stated.rows, std::nullopt);
  EXPECT_EQ(stated.chunks, std::nullopt);
  EXPECT_EQ(stated.nulls, (std::vector<std::optional<std::int64_t>>{std::nullopt}));
  EXPECT_EQ(source->bytes(), std::filesystem::file_size(folder_.path("1.csv")) +
                                 std::filesystem::file_size(folder_.path("1.parquet")));
  ASSERT_TRUE(source->ToTable().ok());
  EXPECT_EQ(source->bytes_read(), source->bytes());
}

}  // namespace
}  // namespace numera::testing
