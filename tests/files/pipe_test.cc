// Tables that come through a pipe or standard input.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "tests/files/tables.h"
#include "tests/files/written.h"

namespace numera::testing {
namespace {

/// A pipe into which another thread writes bytes.
class FilledPipe {
 public:
  explicit FilledPipe(std::string bytes) {
    EXPECT_EQ(::pipe2(ends_, O_CLOEXEC), 0);
    writer_ = std::thread([end = ends_[1], bytes = std::move(bytes)] {
      sigset_t closed_pipe;  // is an error of the write then
      ::sigemptyset(&closed_pipe);
      ::sigaddset(&closed_pipe, SIGPIPE);
      ::pthread_sigmask(SIG_BLOCK, &closed_pipe, nullptr);
      for (std::string_view rest = bytes; !rest.empty();) {
        const ssize_t written = ::write(end, rest.data(), rest.size());
        if (written < 0) break;
        rest.remove_prefix(static_cast<size_t>(written));
      }
      ::close(end);
    });
  }

  ~FilledPipe() {
    ::close(ends_[0]);
    writer_.join();
  }

  FilledPipe(const FilledPipe&) = delete;
  FilledPipe& operator=(const FilledPipe&) = delete;

  int descriptor() const { return ends_[0]; }
  std::string path() const { return "/dev/fd/" + std::to_string(ends_[0]); }

 private:
  int ends_[2] = {-1, -1};
  std::thread writer_;
};

/// The rows 0 to 299,999, in several batches and blocks.
std::shared_ptr<::arrow::Table> numbers() {
  std::string json = "[0";
  for (int i = 1; i < 300'000; ++i) json += "," + std::to_string(i);
  return table_of({{"n", ::arrow::int64(), json + "]"}});
}

class Pipes : public ::testing::Test {
 protected:
  std::string file(const std::string& name, const ::arrow::Table& table) {
    const std::string path = folder_.path(name);
    EXPECT_TRUE(write_batches(path, {batch_of(table)}).ok());
    return path;
  }

  TemporaryFolder folder_;
};

TEST_F(Pipes, AreReadInEveryFormat) {
  const auto expected = numbers();
  for (const char* name : {"t.parquet", "t.arrow", "t.arrows", "t.csv", "t.csv.gz", "t.csv.zst",
                           "t.jsonl", "t.jsonl.bz2"}) {
    SCOPED_TRACE(name);
    const std::string bytes = read_text(file(name, *expected));
    const FilledPipe pipe(bytes);
    const auto table = read_table(pipe.path());
    ASSERT_TRUE(table.ok()) << table.status();
    EXPECT_TRUE((*table)->Equals(*expected));
  }
}

TEST_F(Pipes, GiveTheirFirstRowsBeforeTheyEnd) {
  for (const char* name : {"t.csv", "t.arrows"}) {
    SCOPED_TRACE(name);
    const std::string bytes = read_text(file(name, *numbers()));
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    std::thread writer([&] {
      // Nothing closes this end before a batch was read.
      [[maybe_unused]] ssize_t written = 0;
      std::string_view rest = bytes;
      rest.remove_suffix(2);
      while (!rest.empty() && (written = ::write(ends[1], rest.data(), rest.size())) > 0) {
        rest.remove_prefix(static_cast<size_t>(written));
      }
    });
    {
      const auto source =
          files::open_source("/dev/fd/" + std::to_string(ends[0]), {.batch_rows = 10}).ValueOrDie();
      EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), 10);
      std::thread reader([end = ends[0]] {
        char rest[4096];
        while (::read(end, rest, sizeof rest) > 0) {
        }
      });
      writer.join();
      ::close(ends[1]);
      reader.join();
    }
    ::close(ends[0]);
  }
}

TEST_F(Pipes, AreWaitedForUntilTheCallerHasAnError) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  int calls = 0;
  const auto stop_third_time = [&calls] {
    return ++calls < 3 ? ::arrow::Status::OK() : ::arrow::Status::Cancelled("enough");
  };
  const auto source =
      files::open_source("/dev/fd/" + std::to_string(ends[0]), {.while_waiting = stop_third_time});
  EXPECT_EQ(source.status().ToString(), "Cancelled: enough");
  EXPECT_EQ(calls, 3);
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST_F(Pipes, HoldNoMoreThanTheirFormatNeeds) {
  const std::string line = std::string(999, 'x') + "\n";
  std::string text = "t\n";
  for (int i = 0; i < 40'000; ++i) text += line;  // 40 MB
  const FilledPipe pipe(text);
  const auto source = files::open_source(pipe.path(), {.memory_limit = 16'000'000}).ValueOrDie();
  std::int64_t rows = 0;
  for (const auto& batch : *source) {
    ASSERT_TRUE(batch.ok()) << batch.status();
    rows += (*batch)->num_rows();
  }
  EXPECT_EQ(rows, 40'000);
}

TEST_F(Pipes, LeaveNoFileWhereTheyAreCopied) {
  const TemporaryFolder copies;
  ASSERT_EQ(::setenv("TMPDIR", copies.path("").c_str(), 1), 0);
  const FilledPipe pipe(read_text(file("t.parquet", *numbers())));
  const auto source = files::open_source(pipe.path());
  ASSERT_EQ(::unsetenv("TMPDIR"), 0);
  ASSERT_TRUE(source.ok()) << source.status();
  EXPECT_EQ(copies.names(), std::vector<std::string>());
  EXPECT_EQ((*source)->ToTable().ValueOrDie()->num_rows(), 300'000);
}

TEST_F(Pipes, AreRefusedIfTheyCannotBeCopied) {
  ASSERT_EQ(::setenv("TMPDIR", "/nowhere", 1), 0);
  const FilledPipe pipe(read_text(file("t.parquet", *numbers())));
  const auto source = files::open_source(pipe.path());
  ASSERT_EQ(::unsetenv("TMPDIR"), 0);
  EXPECT_EQ(source.status().ToString(),
            "IOError: a copy of it cannot be written in /nowhere: No such file or directory. "
            "Detail: [errno 2] No such file or directory");
}

TEST_F(Pipes, AreRefusedLikeFiles) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "Invalid: it is empty"},
      {"PK\x03\x04", "Invalid: it is a ZIP archive, as Excel workbooks are, which is not read"},
      {"a,b\n1\n", "Invalid: CSV parse error: Row #2: Expected 2 columns, got 1: 1"},
  };
  for (const auto& [bytes, status] : cases) {
    SCOPED_TRACE(status);
    const FilledPipe pipe(bytes);
    EXPECT_EQ(read_table(pipe.path()).status().ToString(), status);
  }
}

TEST_F(Pipes, OfAStreamNeedItsEndMarker) {
  const std::string bytes = read_text(file("t.arrows", *table_of({{"n", ::arrow::int8(), "[1]"}})));
  const FilledPipe pipe(bytes.substr(0, bytes.size() - 8));
  EXPECT_EQ(read_table(pipe.path()).status().ToString(),
            "Invalid: the stream is truncated: the marker of its end is missing");
}

TEST_F(Pipes, MayBeJoinedWithFiles) {
  const std::string path = folder_.path("1.csv");
  write_text(path, "n\n1\n");
  const FilledPipe pipe("n,t\n2,x\n");
  const auto source = files::open_source(std::vector<std::string>{path, pipe.path()}).ValueOrDie();
  EXPECT_TRUE(source->ToTable().ValueOrDie()->Equals(
      *table_of({{"n", ::arrow::int64(), "[1, 2]"}, {"t", ::arrow::utf8(), R"([null, "x"])"}})));
}

TEST_F(Pipes, AreStandardInputIfTheyAreNamedSo) {
  const auto expected = table_of({{"n", ::arrow::int64(), "[1]"}});
  const std::string path = folder_.path("1.csv");
  write_text(path, "n\n1\n");
  const FilledPipe pipe("n\n1\n");
  const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  for (const int descriptor : {pipe.descriptor(), opened}) {
    with_standard_input(descriptor, [&] { expect_table("-", *expected); });
  }
  ::close(opened);
}

TEST_F(Pipes, AreFilesThatAnotherProgramHasReadInPart) {
  const std::string path = folder_.path("1.csv");
  write_text(path, "a comment\nn\n1\n");
  const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::lseek(opened, 10, SEEK_SET), 10);
  with_standard_input(opened,
                      [] { expect_table("-", *table_of({{"n", ::arrow::int64(), "[1]"}})); });
  ::close(opened);
}

TEST_F(Pipes, OfStandardInputStayOpen) {
  const FilledPipe pipe("n\n1\n");
  with_standard_input(pipe.descriptor(), [] {
    ASSERT_TRUE(read_table("-").ok());
    EXPECT_GE(::fcntl(STDIN_FILENO, F_GETFD), 0);
  });
}

}  // namespace
}  // namespace numera::testing
