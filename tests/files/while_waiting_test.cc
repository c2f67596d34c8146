// `ReadOptions::while_waiting` ends what may take long: reading a text for the types of its
// columns, reading its rows, and copying a pipe.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/files/tables.h"
#include "tests/files/written.h"

namespace numera::testing {
namespace {

/// A callback, and how often it was called.
struct Waiting {
  int calls = 0;
  int fails_at = 0;  ///< this call and all that follow; 0: none

  files::ReadOptions options(bool csv_types_of_all_rows = false) {
    return {.csv_types_of_all_rows = csv_types_of_all_rows, .while_waiting = [this] {
              ++calls;
              return fails_at == 0 || calls < fails_at ? ::arrow::Status::OK()
                                                       : ::arrow::Status::Cancelled("enough");
            }};
  }
};

class WhileWaiting : public ::testing::Test {
 protected:
  /// Writes several MiB of rows in the format that the name says.
  std::string file(const std::string& name) const {
    const std::string path = folder_.path(name);
    const auto batch = batch_of(*many_numbers());
    EXPECT_TRUE(write_batches(path, {batch, batch, batch, batch}).ok());
    return path;
  }

  TemporaryFolder folder_;
};

TEST_F(WhileWaiting, AnErrorEndsTheReadingOfATextForItsTypes) {
  for (const char* name : {"t.jsonl", "t.jsonl.gz", "t.csv", "t.csv.zst"}) {
    SCOPED_TRACE(name);
    const std::string path = file(name);
    Waiting waiting{.fails_at = 3};
    EXPECT_EQ(files::open_source(path, waiting.options(true)).status().ToString(),
              "Cancelled: enough");
    EXPECT_EQ(waiting.calls, 3);
  }
}

TEST_F(WhileWaiting, AnErrorNamesTheOneOfSeveralFilesThatIsRead) {
  const std::string path = file("t.jsonl");
  Waiting waiting{.fails_at = 3};
  const std::vector<std::string> paths = {path, path};
  EXPECT_EQ(files::open_source(paths, waiting.options()).status().ToString(),
            "Cancelled: " + path + ": enough");
  EXPECT_EQ(waiting.calls, 3);
}

TEST_F(WhileWaiting, AnErrorEndsTheReadingOfRows) {
  for (const char* name : {"t.jsonl", "t.csv"}) {
    SCOPED_TRACE(name);
    Waiting waiting;
    const auto source = files::open_source(file(name), waiting.options()).ValueOrDie();
    waiting.fails_at = waiting.calls + 3;
    EXPECT_EQ(source->ToTable().status().ToString(), "Cancelled: enough");
    EXPECT_EQ(waiting.calls, waiting.fails_at);
  }
}

TEST_F(WhileWaiting, NothingIsCalledForFilesThatAreNoText) {
  for (const char* name : {"t.parquet", "t.arrow", "t.arrows"}) {
    SCOPED_TRACE(name);
    Waiting waiting{.fails_at = 1};
    const auto table = read_table(file(name), waiting.options());
    ASSERT_TRUE(table.ok()) << table.status();
    EXPECT_EQ((*table)->num_rows(), 400'000);
  }
}

/// Bytes of a file are always there, so nobody ever waits for them.
TEST_F(WhileWaiting, AnErrorEndsTheCopyOfAPipeThatNeverWaits) {
  const std::string path = folder_.path("t");
  write_text(path,
             "x"
             "ARROW1" +
                 std::string(std::size_t{4} << 20U, '\0'));
  const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::lseek(opened, 1, SEEK_SET), 1);  // which makes it a pipe
  Waiting waiting{.fails_at = 3};
  with_standard_input(opened, [&] {
    EXPECT_EQ(files::open_source("-", waiting.options()).status().ToString(), "Cancelled: enough");
  });
  EXPECT_EQ(waiting.calls, 3);
  ::close(opened);
}

}  // namespace
}  // namespace numera::testing
