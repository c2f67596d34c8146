// The path "-": a table written to standard output.

#include <arrow/array/util.h>
#include <arrow/scalar.h>
#include <arrow/util/io_util.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <thread>

#include "tests/files/written.h"

namespace numera::testing {
namespace {

using ::arrow::Status;
using files::Format;

constexpr Format kFormats[] = {Format::kParquet, Format::kIpcFile, Format::kIpcStream, Format::kCsv,
                               Format::kJsonLines};

std::shared_ptr<::arrow::RecordBatch> three_rows() {
  return batch_of({{"n", ::arrow::int64(), "[1, null, 3]"}});
}

/// Eight bytes per row, more than a pipe holds.
std::shared_ptr<::arrow::RecordBatch> many_rows() {
  return batch_of("z", ::arrow::MakeArrayFromScalar(::arrow::Int64Scalar(0), 100000).ValueOrDie());
}

TEST(StandardOutput, GetsTheBytesOfTheFile) {
  const TemporaryFolder folder;
  for (const Format format : kFormats) {
    SCOPED_TRACE(static_cast<int>(format));
    EXPECT_EQ(write_batches(folder.path("file"), {three_rows(), three_rows()}, {.format = format}),
              Status::OK());
    Status status;
    const std::string found = standard_output_of(
        [&] { status = write_batches("-", {three_rows(), three_rows()}, {.format = format}); });
    EXPECT_EQ(status, Status::OK());
    EXPECT_TRUE(found == read_text(folder.path("file")));
  }
}

TEST(StandardOutput, StaysOpenAndKeepsItsOrder) {
  const std::string stream = standard_output_of([] {
    EXPECT_EQ(write_batches("-", {three_rows()}, {.format = Format::kIpcStream}), Status::OK());
  });
  const std::string found = standard_output_of([] {
    std::printf("before");
    EXPECT_EQ(write_batches("-", {three_rows()}, {.format = Format::kIpcStream}), Status::OK());
    std::printf("after");
  });
  EXPECT_EQ(found, "before" + stream + "after");
}

/// Runs the function while standard output is the device.
Status on_device(const char* path, const std::function<Status()>& run) {
  const int device = ::open(path, O_WRONLY | O_CLOEXEC);
  Status status;
  with_standard_output(device, [&] { status = run(); });
  ::close(device);
  return status;
}

TEST(StandardOutput, SaysThatTheDiskIsFull) {
  for (const Format format : kFormats) {
    EXPECT_EQ(
        on_device("/dev/full",
                  [format] { return write_batches("-", {three_rows()}, {.format = format}); }),
        ::arrow::internal::IOErrorFromErrno(
            ENOSPC, "cannot write standard output: No space left on device"));
  }
}

TEST(StandardOutput, SaysThatThePipeIsClosed) {
  const auto before = std::signal(SIGPIPE, SIG_DFL);  // a signal would end the tests
  for (const Format format : kFormats) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    Status status;
    with_standard_output(ends[1],
                         [&] { status = write_batches("-", {three_rows()}, {.format = format}); });
    ::close(ends[1]);
    EXPECT_EQ(status, ::arrow::internal::IOErrorFromErrno(
                          EPIPE, "cannot write standard output: Broken pipe"));
  }
  sigset_t pending;
  ::sigpending(&pending);
  EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
  std::signal(SIGPIPE, before);
}

/// What a reader gets from the pipe that standard output is meanwhile.
std::string through_pipe(int flags, const std::function<void()>& run) {
  int ends[2];
  EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  EXPECT_EQ(::fcntl(ends[1], F_SETFL, flags), 0);
  std::string found;
  std::thread reader([&] {
    char buffer[4096];
    for (ssize_t size = 1; size > 0;) {
      size = ::read(ends[0], buffer, sizeof buffer);
      if (size > 0) found.append(buffer, static_cast<size_t>(size));
    }
  });
  with_standard_output(ends[1], run);
  ::close(ends[1]);
  reader.join();
  ::close(ends[0]);
  return found;
}

TEST(StandardOutput, MayBeAPipeThatDoesNotBlock) {
  for (const Format format : kFormats) {
    const auto write = [format] {
      EXPECT_EQ(write_batches("-", {many_rows()}, {.format = format, .compression = "none"}),
                Status::OK());
    };
    const std::string expected = standard_output_of(write);
    EXPECT_TRUE(through_pipe(0, write) == expected);
    EXPECT_TRUE(through_pipe(O_NONBLOCK, write) == expected);
  }
}

TEST(StandardOutput, GetsNoEndIfTheSinkIsNotFinished) {
  const auto write = [](bool finish) {
    return standard_output_of([finish] {
      const auto sink = files::open_sink("-", {.format = Format::kParquet}).ValueOrDie();
      for (int i = 0; i < 4; ++i) EXPECT_EQ(sink->write(many_rows()), Status::OK());
      if (finish) {
        EXPECT_EQ(sink->finish(), Status::OK());
      }
    });
  };
  EXPECT_TRUE(write(true).ends_with("PAR1"));
  EXPECT_EQ(write(true).find(write(false)), 0U);
  EXPECT_FALSE(write(false).substr(4).ends_with("PAR1"));
}

TEST(StandardOutput, IsNoInput) {
  const TemporaryFolder folder;
  const std::string path = folder.path("input");
  write_text(path, "a\n");
  const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  with_standard_output(file, [&path] {
    EXPECT_EQ(files::open_sink("-", {.inputs = {path}, .format = Format::kIpcFile}).status(),
              Status::Invalid("cannot write standard output: it is the input file"));
  });
  ::close(file);
  EXPECT_EQ(read_text(path), "a\n");
}

}  // namespace
}  // namespace numera::testing
