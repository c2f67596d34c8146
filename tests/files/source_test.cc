// What all sources have in common, shown with a CSV file.

#include <arrow/array/array_base.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/files/tables.h"
#include "tests/files/written.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

class SourceOfAFile : public ::testing::Test {
 protected:
  SourceOfAFile() { write_text(file_, "a,b\n1,x\n2,y\n3,z\n"); }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("table.csv");
};

TEST_F(SourceOfAFile, CutsBatches) {
  const auto source = files::open_source(file_, {.batch_rows = 2}).ValueOrDie();
  EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), 2);
  EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), 1);
  EXPECT_EQ(source->Next().ValueOrDie(), nullptr);
  EXPECT_EQ(source->Next().ValueOrDie(), nullptr);
}

TEST_F(SourceOfAFile, GivesTheColumnsAskedForInTheirOrder) {
  expect_table(file_,
               *table_of({{"b", ::arrow::utf8(), R"(["x", "y", "z"])"},
                          {"a", ::arrow::int64(), "[1, 2, 3]"}}),
               {.columns = {"b", "a"}});
}

TEST_F(SourceOfAFile, IsRefusedForABatchWithoutRows) {
  for (const std::int64_t rows : {0, -1}) {
    expect_refused(
        file_,
        "Invalid: batch_rows: found " + std::to_string(rows) + ", expected a positive number",
        {.batch_rows = rows});
  }
}

TEST_F(SourceOfAFile, RefusesAFileThatChangedAndGoesOnRefusing) {
  const auto source = files::open_source(file_).ValueOrDie();
  EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), 3);
  write_text(file_, "a,b\n");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(source->Next().status().ToString(), "IOError: it changed while it was read");
  }
}

TEST_F(SourceOfAFile, GivesNothingOnceItIsClosed) {
  const auto source = files::open_source(file_, {.batch_rows = 1}).ValueOrDie();
  EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), 1);
  ASSERT_TRUE(source->Close().ok());
  EXPECT_EQ(source->Next().status().ToString(), "Invalid: it was closed");
}

TEST_F(SourceOfAFile, LeavesBatchesValidWhenItIsGone) {
  std::shared_ptr<::arrow::RecordBatch> batch;
  {
    const auto source = files::open_source(file_).ValueOrDie();
    batch = source->Next().ValueOrDie();
  }
  EXPECT_EQ(batch->column(1)->ToString(), "[\n  \"x\",\n  \"y\",\n  \"z\"\n]");
}

/// 100,000 different numbers, 800,000 bytes in one batch or page.
void expect_too_large(const ::arrow::Status& status) {
  EXPECT_TRUE(status.IsOutOfMemory()) << status.ToString();
  EXPECT_TRUE(status.message().ends_with(", and the memory limit is 700000 bytes"))
      << status.ToString();
}

TEST_F(SourceOfAFile, TakesNoMoreMemoryThanItMay) {
  const std::string file = folder_.path("large.arrow");
  write_ipc(file, *many_numbers());
  EXPECT_EQ(read_table(file, {.memory_limit = 1'000'000}).ValueOrDie()->num_rows(), 100'000);
  const auto source = files::open_source(file, {.memory_limit = 700'000}).ValueOrDie();
  expect_too_large(source->Next().status());
}

/// The stream states a body of a tebibyte. What follows in the file is not written, so that it
/// takes no room on the disk.
TEST_F(SourceOfAFile, TakesNoMoreMemoryThanTwoGibibytesOrFourTimesItsSize) {
  struct Case {
    std::uintmax_t size;
    std::optional<std::int64_t> given;
    const char* limit;
  };
  constexpr Case kCases[] = {{std::uintmax_t{1} << 20U, {}, "2147483648"},
                             {std::uintmax_t{512} << 20U, {}, "2147483648"},
                             {std::uintmax_t{600} << 20U, {}, "2516582400"},
                             {std::uintmax_t{600} << 20U, 1'000'000, "1000000"}};
  const std::string file = folder_.path("large.arrows");
  write_ipc_stream(file, *table_of({{"n", ::arrow::int8(), "[1, 2, 3]"}}));
  overwrite(file, std::string("\x08\0\0\0\0\0\0\0", 8), std::string("\0\0\0\0\0\x01\0\0", 8));
  for (const Case& one : kCases) {
    SCOPED_TRACE(one.limit);
    std::filesystem::resize_file(file, one.size);
    const auto status = read_table(file, {.memory_limit = one.given}).status();
    EXPECT_TRUE(status.IsOutOfMemory()) << status.ToString();
    EXPECT_TRUE(status.message().starts_with("reading it needs 1099511627776 bytes beside "))
        << status.ToString();
    EXPECT_TRUE(status.message().ends_with(std::string(" in use, and the memory limit is ") +
                                           one.limit + " bytes"))
        << status.ToString();
  }
}

TEST_F(SourceOfAFile, CountsWhatIsDecompressedAsMemory) {
  for (const char* name : {"large.parquet", "large.arrow"}) {
    SCOPED_TRACE(name);
    const std::string file = folder_.path(name);
    const auto batch = many_numbers()->CombineChunksToBatch().ValueOrDie();
    ASSERT_TRUE(write_batches(file, {batch}, {.compression = "zstd"}).ok());
    const auto source =
        files::open_source(file, {.batch_rows = 1, .memory_limit = 700'000}).ValueOrDie();
    expect_too_large(source->Next().status());
  }
}

TEST_F(SourceOfAFile, CountsTheMemoryOfBatchesThatAreStillUsed) {
  const std::string file = folder_.path("large.arrows");
  const auto numbers = many_numbers()->Slice(0, 50'000);
  write_ipc_stream(file, *::arrow::ConcatenateTables({numbers, numbers}).ValueOrDie());
  const auto source = files::open_source(file, {.memory_limit = 700'000}).ValueOrDie();
  const auto first = source->Next().ValueOrDie();
  expect_too_large(source->Next().status());
}

TEST_F(SourceOfAFile, RefusesBuffersThatAreTooShort) {
  const auto numbers = ArrowArray(::arrow::int64(), "[1]")->data()->Copy();
  numbers->length = 100;
  const std::string file = folder_.path("short.arrow");
  write_ipc(file, *::arrow::Table::Make(::arrow::schema({::arrow::field("n", ::arrow::int64())}),
                                        {::arrow::MakeArray(numbers)}));
  const ::arrow::Status status = read_table(file).status();
  EXPECT_TRUE(status.IsInvalid()) << status.ToString();
  EXPECT_NE(status.message().find("too small"), std::string::npos) << status.ToString();
}

TEST_F(SourceOfAFile, TakesMemoryFromThePoolOfTheCaller) {
  ::arrow::ProxyMemoryPool pool(::arrow::default_memory_pool());
  const auto table = read_table(file_, {.pool = &pool}).ValueOrDie();
  EXPECT_GT(pool.bytes_allocated(), 0);
}

TEST_F(SourceOfAFile, Exists) {
  expect_refused(folder_.path("none"),
                 "IOError: No such file or directory. Detail: [errno 2] No such file or directory");
}

}  // namespace
}  // namespace numera::testing
