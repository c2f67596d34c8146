// --output: the returned data in a file of its own.

#include <arrow/array/array_dict.h>
#include <arrow/scalar.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class Output : public ::testing::Test {
 protected:
  void convert(const std::string& output, const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {"--output", folder_.path(output)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    converted(file_, arguments);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

/// Expects equal tables. The chunks may differ.
void expect_equal(const ::arrow::Table& actual, const ::arrow::Table& expected) {
  EXPECT_TRUE(actual.ValidateFull().ok());
  EXPECT_TRUE(actual.Equals(expected)) << actual.ToString() << "\n" << expected.ToString();
}

std::shared_ptr<::arrow::Table> what_goes() {
  return table_of({{"n", ::arrow::int16(), "[1, null, 3, 4, 5]"},
                   {"b", ::arrow::boolean(), "[true, false, null, true, true]"},
                   {"t", ::arrow::utf8(), R"(["a", "", null, "ä", "b"])"},
                   {"d", ::arrow::date32(), "[0, 1, null, -1, 20000]"},
                   {"l", ::arrow::list(::arrow::int8()), "[[1], [], null, [2, 3], [null]]"}});
}

std::shared_ptr<::arrow::Table> what_comes(::arrow::TimeUnit::type unit, const std::string& day) {
  return table_of({{"n", ::arrow::int16(), "[1, null, 3, 4, 5]"},
                   {"b", ::arrow::boolean(), "[true, false, null, true, true]"},
                   {"t", ::arrow::large_utf8(), R"(["a", "", null, "ä", "b"])"},
                   {"d", ::arrow::timestamp(unit),
                    "[0, 86400" + day + ", null, -86400" + day + ", 1728000000" + day + "]"},
                   {"l", ::arrow::large_list(::arrow::int8()), "[[1], [], null, [2, 3], [null]]"}});
}

TEST_F(Output, IsAnArrowIpcFileByThreeSuffixes) {
  write_parquet(file_, *what_goes(), 2);
  for (const char* output : {"back.arrow", "back.feather", "back.ipc"}) {
    SCOPED_TRACE(output);
    convert(output);
    expect_equal(*read_ipc(folder_.path(output)), *what_comes(::arrow::TimeUnit::SECOND, ""));
  }
}

TEST_F(Output, IsParquetWhichHasNoSeconds) {
  write_ipc(file_, *what_goes());
  convert("back.parquet", {"--batch-rows", "2"});
  expect_equal(*read_parquet(folder_.path("back.parquet")),
               *what_comes(::arrow::TimeUnit::MILLI, "000"));
}

TEST_F(Output, IsWrittenToWhatALinkLeadsTo) {
  write_ipc(file_, *what_goes());
  std::filesystem::create_directory(folder_.path("there"));
  std::filesystem::create_symlink("there/old.arrow", folder_.path("old.arrow"));
  std::filesystem::create_symlink("there/new.arrow", folder_.path("new.arrow"));
  write_text(folder_.path("there/old.arrow"), "older");
  for (const char* name : {"old.arrow", "new.arrow"}) {
    SCOPED_TRACE(name);
    convert(name);
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.path(name)));
    expect_equal(*read_ipc(folder_.path(std::string("there/") + name)),
                 *what_comes(::arrow::TimeUnit::SECOND, ""));
  }
}

TEST_F(Output, HasANameOfAnyBytes) {
  write_ipc(file_, *what_goes());
  const std::string name = "a\nb \x1b[1m\xFF'\".arrow";
  convert(name);
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{name, "a_file"}));
}

TEST_F(Output, HasANameAsLongAsTheSystemAllows) {
  write_ipc(file_, *what_goes());
  const std::string name = std::string(249, 'x') + ".arrow";
  convert(name);
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"a_file", name}));
}

/// The first file that is opened gets the descriptor of a closed stream. Output printed to that
/// stream must not end up in the file.
TEST_F(Output, IsWholeWhateverStandardStreamsAreClosed) {
  write_ipc(file_, *what_goes());
  const std::string output = folder_.path("back.arrow");
  const std::vector<std::string> arguments = {"convert", file_, "--output", output};
  for (const std::vector<int>& closed : {std::vector{0}, {2}, {0, 2}}) {
    const Outcome run = run_program(arguments, {.closed = closed});
    EXPECT_EQ(run.exit_status, 0);
    EXPECT_NE(run.out, "");
    expect_equal(*read_ipc(output), *what_comes(::arrow::TimeUnit::SECOND, ""));
    std::filesystem::remove(output);
  }
  for (const std::vector<int>& closed : {std::vector{1}, {0, 1}, {1, 2}, {0, 1, 2}}) {
    EXPECT_EQ(run_program(arguments, {.closed = closed}).exit_status, 1);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"a_file"});
  }
}

TEST_F(Output, HoldsTheColumnsAskedForInTheirOrder) {
  write_parquet(file_, *what_goes());
  convert("back.arrow", {"--columns", "b,n"});
  expect_equal(*read_ipc(folder_.path("back.arrow")),
               *table_of({{"b", ::arrow::boolean(), "[true, false, null, true, true]"},
                          {"n", ::arrow::int16(), "[1, null, 3, 4, 5]"}}));
}

TEST_F(Output, HoldsWhatWasCast) {
  write_ipc(file_, *table_of({{"h", ::arrow::float16(), "[1.5, null]"},
                              {"v", ::arrow::utf8_view(), R"(["x", null])"}}));
  convert("back.arrow", {"--cast"});
  expect_equal(*read_ipc(folder_.path("back.arrow")),
               *table_of({{"h", ::arrow::float64(), "[1.5, null]"},
                          {"v", ::arrow::large_utf8(), R"(["x", null])"}}));
}

TEST_F(Output, OfAFileWithoutRowsHasItsColumns) {
  write_text(file_, "a,b\n");
  for (const char* output : {"back.arrow", "back.parquet"}) {
    SCOPED_TRACE(output);
    convert(output);
    const std::string path = folder_.path(output);
    expect_equal(*(path.ends_with("arrow") ? read_ipc(path) : read_parquet(path)),
                 *table_of({{"a", ::arrow::float64(), "[]"}, {"b", ::arrow::float64(), "[]"}}));
  }
}

std::shared_ptr<::arrow::Array> categories(const std::string& codes, const std::string& texts) {
  const auto table =
      table_of({{"codes", ::arrow::int8(), codes}, {"texts", ::arrow::utf8(), texts}});
  return ::arrow::DictionaryArray::FromArrays(table->column(0)->chunk(0),
                                              table->column(1)->chunk(0))
      .ValueOrDie();
}

/// The texts that a column of categories stands for.
std::string texts_of(const ::arrow::Table& table) {
  std::string texts;
  for (const auto& chunk : table.column(0)->chunks()) {
    for (std::int64_t i = 0; i < chunk->length(); ++i) {
      const auto& dictionary = static_cast<const ::arrow::DictionaryArray&>(*chunk);
      texts += chunk->IsNull(i) ? "null "
                                : dictionary.dictionary()
                                          ->GetScalar(dictionary.GetValueIndex(i))
                                          .ValueOrDie()
                                          ->ToString() +
                                      " ";
    }
  }
  return texts;
}

TEST_F(Output, MayHaveOtherCategoriesInEveryBatch) {
  const ::arrow::ArrayVector chunks = {categories("[0, 1, 0]", R"(["red", "blue"])"),
                                       categories("[1, 0, null]", R"(["blue", "green"])"),
                                       categories("[0]", R"(["white"])")};
  const auto column = std::make_shared<::arrow::ChunkedArray>(chunks);
  write_ipc_stream(file_, *::arrow::Table::Make(
                              ::arrow::schema({::arrow::field("c", column->type())}), {column}));
  for (const char* output : {"back.arrow", "back.parquet"}) {
    SCOPED_TRACE(output);
    convert(output);
    const std::string path = folder_.path(output);
    const auto back = path.ends_with("arrow") ? read_ipc(path) : read_parquet(path);
    EXPECT_TRUE(back->ValidateFull().ok());
    EXPECT_EQ(texts_of(*back), "red blue red green blue null white ");
  }
}

TEST_F(Output, ConvertsLikeItsInput) {
  write_parquet(file_, *what_goes(), 2);
  convert("back.arrow");
  EXPECT_EQ(table_rows(converted(folder_.path("back.arrow"), {"--strict"})),
            "n | int16 | int16 | int16 | 5 | 3 | 1 | equal\n"
            "b | bool | logical | logical | 5 | 3 | 1 | equal\n"
            "t | large_string | string | string | 5 | 3 | 1 | equal\n"
            "d | timestamp[s] | datetime | datetime | 5 | 3 | 1 | equal\n"
            "l | large_list<item: int8> | large_list_array | cell | 5 | 3 | 1 | equal\n");
}

TEST_F(Output, ReplacesAnExistingFileAndKeepsItsPermissions) {
  write_text(file_, "a\n1\n");
  const std::string output = folder_.path("back.arrow");
  write_text(output, "older");
  ASSERT_EQ(::chmod(output.c_str(), 0640), 0);
  convert("back.arrow");
  expect_equal(*read_ipc(output), *table_of({{"a", ::arrow::int64(), "[1]"}}));
  struct stat found = {};
  ASSERT_EQ(::stat(output.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777U, 0640U);
}

TEST_F(Output, LeavesNothingElseBeside) {
  write_text(file_, "a\n1\n");
  convert("back.arrow");
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"a_file", "back.arrow"}));
}

}  // namespace
}  // namespace numera::testing
