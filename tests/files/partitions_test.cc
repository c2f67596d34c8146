// Folders that are divided by the values of columns.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/files/tables.h"
#include "tests/files/written.h"

namespace numera::testing {
namespace {

using files::Format;

class Partitions : public ::testing::Test {
 protected:
  ::arrow::Status write(const std::vector<NamedColumn>& columns,
                        const files::WriteOptions& options) {
    return write_batches(target_, {batch_of(columns)}, options);
  }

  /// The files below the target, sorted.
  std::vector<std::string> written() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(target_)) {
      if (entry.is_regular_file()) {
        names.push_back(std::filesystem::relative(entry.path(), target_));
      }
    }
    std::ranges::sort(names);
    return names;
  }

  void expect_refused(const ::arrow::Status& found, const std::string& reason) {
    EXPECT_EQ(found.ToString(), "Invalid: cannot write " + target_ + ": " + reason);
    EXPECT_EQ(folder_.names(), std::vector<std::string>());
  }

  TemporaryFolder folder_;
  std::string target_ = folder_.path("rows");
};

TEST_F(Partitions, HaveAFolderPerValueWithoutTheColumn) {
  ASSERT_TRUE(write({{"year", kInts, "[2024, 2023, 2024]"}, {"n", kInts, "[1, 2, 3]"}},
                    {.partition_by = {"year"}})
                  .ok());
  EXPECT_EQ(written(),
            (std::vector<std::string>{"year=2023/part-0.parquet", "year=2024/part-0.parquet"}));
  expect_table(target_ + "/year=2024/part-0.parquet", *table_of({{"n", kInts, "[1, 3]"}}));
  expect_table(target_, *table_of({{"n", kInts, "[2, 1, 3]"},
                                   {"year", ::arrow::int32(), "[2023, 2024, 2024]"}}));
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"rows"});
}

TEST_F(Partitions, NestInTheOrderOfTheirColumns) {
  ASSERT_TRUE(write({{"a", kInts, "[1, 1]"}, {"b", kInts, "[2, 3]"}, {"n", kInts, "[4, 5]"}},
                    {.partition_by = {"b", "a"}})
                  .ok());
  EXPECT_EQ(written(),
            (std::vector<std::string>{"b=2/a=1/part-0.parquet", "b=3/a=1/part-0.parquet"}));
}

TEST_F(Partitions, AreNamedByTheTextsOfTheirValues) {
  struct Case {
    std::shared_ptr<::arrow::DataType> type;
    const char* value;
    const char* folder;
  };
  const Case cases[] = {
      {::arrow::uint64(), "[18446744073709551615]", "k=18446744073709551615"},
      {::arrow::int8(), "[-1]", "k=-1"},
      {::arrow::boolean(), "[true]", "k=true"},
      {::arrow::date32(), "[19782]", "k=2024-02-29"},
      {::arrow::utf8(), R"(["New York/é=%"])", "k=New%20York%2F%C3%A9%3D%25"},
      {::arrow::utf8(), R"([""])", "k="},
      {::arrow::utf8(), R"([".."])", "k=.."},
      {::arrow::large_utf8(), R"(["x"])", "k=x"},
      {::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), R"(["x"])", "k=x"},
      {::arrow::utf8(), "[null]", "k=__HIVE_DEFAULT_PARTITION__"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.folder);
    const auto status =
        write({{"k", one.type, one.value}, {"n", kInts, "[1]"}}, {.partition_by = {"k"}});
    ASSERT_TRUE(status.ok()) << status;
    EXPECT_EQ(written(), std::vector<std::string>{std::string(one.folder) + "/part-0.parquet"});
    std::filesystem::remove_all(target_);
  }
}

TEST_F(Partitions, ComeBackWithTheirTextsAndNulls) {
  ASSERT_TRUE(
      write({{"k", ::arrow::utf8(), R"(["New York/é=%", "", null])"}, {"n", kInts, "[1, 2, 3]"}},
            {.partition_by = {"k"}})
          .ok());
  const auto table = read_table(target_).ValueOrDie();
  std::vector<std::string> rows;
  for (std::int64_t i = 0; i < table->num_rows(); ++i) {
    const auto key = table->GetColumnByName("k")->GetScalar(i).ValueOrDie();
    const auto text = static_cast<const ::arrow::DictionaryScalar&>(*key).GetEncodedValue();
    rows.push_back(table->GetColumnByName("n")->GetScalar(i).ValueOrDie()->ToString() + " " +
                   text.ValueOrDie()->ToString());
  }
  std::ranges::sort(rows);
  EXPECT_EQ(rows, (std::vector<std::string>{"1 New York/é=%", "2 ", "3 null"}));
}

TEST_F(Partitions, AreWrittenInEveryFormat) {
  const std::pair<files::WriteOptions, const char*> cases[] = {
      {{.format = Format::kIpcFile}, "k=1/part-0.arrow"},
      {{.format = Format::kIpcStream}, "k=1/part-0.arrows"},
      {{.format = Format::kCsv}, "k=1/part-0.csv"},
      {{.format = Format::kCsv, .compression = "gzip"}, "k=1/part-0.csv.gz"},
      {{.format = Format::kJsonLines, .compression = "zstd"}, "k=1/part-0.json.zst"},
  };
  for (auto [options, name] : cases) {
    SCOPED_TRACE(name);
    options.partition_by = {"k"};
    const auto status = write({{"k", kInts, "[1]"}, {"n", kInts, "[2]"}}, options);
    ASSERT_TRUE(status.ok()) << status;
    EXPECT_EQ(written(), std::vector<std::string>{name});
    expect_table(target_, *table_of({{"n", kInts, "[2]"}, {"k", ::arrow::int32(), "[1]"}}));
    std::filesystem::remove_all(target_);
  }
}

TEST_F(Partitions, OfMoreThan64ValuesHaveAnotherFileWhereTheLastOneWasEnded) {
  std::string keys = "[0";
  for (int i = 1; i < 65; ++i) keys += "," + std::to_string(i);
  std::string numbers = keys;
  ASSERT_TRUE(
      write({{"k", kInts, keys + ",0]"}, {"n", kInts, numbers + ",65]"}}, {.partition_by = {"k"}})
          .ok());
  EXPECT_EQ(written().size(), 65U);  // both rows of 0 are in one batch
  std::filesystem::remove_all(target_);
  ASSERT_TRUE(write_batches(target_,
                            {batch_of({{"k", kInts, keys + "]"}, {"n", kInts, numbers + "]"}}),
                             batch_of({{"k", kInts, "[0]"}, {"n", kInts, "[65]"}})},
                            {.partition_by = {"k"}})
                  .ok());
  EXPECT_EQ(written().size(), 66U);
  expect_table(target_ + "/k=0", *table_of({{"n", kInts, "[0, 65]"}}));
}

TEST_F(Partitions, ReplaceAnEmptyFolderOnly) {
  const std::vector<NamedColumn> columns = {{"k", kInts, "[1]"}, {"n", kInts, "[2]"}};
  std::filesystem::create_directory(target_);
  ASSERT_TRUE(write(columns, {.partition_by = {"k"}}).ok());
  EXPECT_EQ(write(columns, {.partition_by = {"k"}}).ToString(),
            "IOError: cannot write " + target_ + ": it exists and is no empty folder");
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"rows"});
}

TEST_F(Partitions, AreWrittenToWhereALinkLeads) {
  for (const bool is_new : {true, false}) {
    SCOPED_TRACE(is_new);
    if (!is_new) std::filesystem::create_directory(folder_.path("elsewhere"));
    std::filesystem::create_directory_symlink("elsewhere/", target_);
    const auto status = write({{"k", kInts, "[1]"}, {"n", kInts, "[2]"}}, {.partition_by = {"k"}});
    EXPECT_TRUE(status.ok()) << status;
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"elsewhere", "rows"}));
    EXPECT_TRUE(std::filesystem::is_symlink(target_));
    EXPECT_EQ(written(), std::vector<std::string>{"k=1/part-0.parquet"});
    std::filesystem::remove_all(folder_.path("elsewhere"));
    std::filesystem::remove(target_);
  }
}

TEST_F(Partitions, MayHaveTheLongestName) {
  target_ = folder_.path(std::string(255, 'x'));
  const auto status = write({{"k", kInts, "[1]"}, {"n", kInts, "[2]"}}, {.partition_by = {"k"}});
  EXPECT_TRUE(status.ok()) << status;
  EXPECT_EQ(folder_.names(), std::vector<std::string>{std::string(255, 'x')});
}

TEST_F(Partitions, HaveThePermissionsOfNewFoldersAndFiles) {
  ASSERT_TRUE(write({{"k", kInts, "[1]"}, {"n", kInts, "[2]"}}, {.partition_by = {"k"}}).ok());
  std::filesystem::create_directory(folder_.path("new"));
  const auto of = [](const std::string& path) {
    return std::filesystem::status(path).permissions();
  };
  EXPECT_EQ(of(target_), of(folder_.path("new")));
  EXPECT_EQ(of(target_ + "/k=1"), of(folder_.path("new")));
  EXPECT_EQ(of(target_ + "/k=1/part-0.parquet"), of(folder_.write("file", "")));
}

TEST_F(Partitions, ReplaceNoFile) {
  write_text(target_, "");
  EXPECT_EQ(write({{"k", kInts, "[1]"}, {"n", kInts, "[2]"}}, {.partition_by = {"k"}}).ToString(),
            "IOError: cannot write " + target_ + ": it exists and is no empty folder");
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"rows"});
}

TEST_F(Partitions, AreRefusedWithAReasonAndLeaveNothing) {
  struct Case {
    std::vector<NamedColumn> columns;
    const char* reason;
  };
  const Case cases[] = {
      {{{"n", kInts, "[1]"}}, "there is no column 'k'"},
      {{{"k", kInts, "[1]"}}, "no column is left beside the keys"},
      {{{"k", kInts, "[]"}, {"n", kInts, "[]"}}, "without rows, it has no partitions"},
      {{{"k", ::arrow::float64(), "[1]"}, {"n", kInts, "[1]"}},
       "column 'k': values of type double cannot name partitions"},
      {{{"k", ::arrow::list(kInts), "[[1]]"}, {"n", kInts, "[1]"}},
       "column 'k': values of type list<item: int64> cannot name partitions"},
      {{{"k", ::arrow::utf8(), R"(["__HIVE_DEFAULT_PARTITION__"])"}, {"n", kInts, "[1]"}},
       "column 'k': the text __HIVE_DEFAULT_PARTITION__ stands for null"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.reason);
    expect_refused(write(one.columns, {.partition_by = {"k"}}), one.reason);
  }
}

TEST_F(Partitions, AreGoneIfTheyAreNotFinished) {
  {
    const auto sink = files::open_sink(target_, {.partition_by = {"k"}}).ValueOrDie();
    ASSERT_TRUE(sink->write(batch_of({{"k", kInts, "[1]"}, {"n", kInts, "[2]"}})).ok());
  }
  EXPECT_EQ(folder_.names(), std::vector<std::string>());
}

TEST_F(Partitions, NeedAFolder) {
  EXPECT_EQ(
      files::open_sink("-", {.format = Format::kCsv, .partition_by = {"k"}}).status().ToString(),
      "Invalid: cannot write standard output: partitions need a folder");
}

}  // namespace
}  // namespace numera::testing
