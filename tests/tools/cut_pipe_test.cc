// Pipes that end too early: what was read is printed if that was enough, and else refused.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

struct CutPipeFormat {
  const char* name;
  void (*write)(const std::string&, const ::arrow::Table&);
  std::size_t missing;  ///< so many bytes at the end do not come
  const char* reason;   ///< why that is refused
};

void write_whole_csv_gzipped(const std::string& path, const ::arrow::Table& table) {
  const TemporaryFolder folder;
  const std::string file = folder.path("rows.arrow");
  write_ipc(file, table);
  converted(file, {"--to", "csv", "--compression", "gzip", "--output", path});
}

void write_whole_json(const std::string& path, const ::arrow::Table& table) {
  const TemporaryFolder folder;
  const std::string file = folder.path("rows.arrow");
  write_ipc(file, table);
  converted(file, {"--to", "json", "--output", path});
}

void write_whole_parquet(const std::string& path, const ::arrow::Table& table) {
  write_parquet(path, table);
}

constexpr CutPipeFormat kCutPipeFormats[] = {
    {"stream", write_ipc_stream, 4, "Corrupted metadata length, only 0 bytes available"},
    {"stream without its end", write_ipc_stream, 8,
     "the stream is truncated: the marker of its end is missing"},
    {"Arrow file", write_ipc, 4, "Not an Arrow file"},
    {"Parquet file", write_whole_parquet, 4,
     "Parquet magic bytes not found in footer. Either the file is corrupted or this is not a "
     "parquet file."},
    {"compressed CSV", write_whole_csv_gzipped, 4, "Truncated compressed stream"},
    {"JSON lines", write_whole_json, 4, "line 4: the JSON object does not end in it"},
};

class CutPipe : public ::testing::Test {
 protected:
  CutPipe() {
    if (::mkfifo(pipe_.c_str(), 0600) != 0) throw std::runtime_error("no pipe is made");
  }

  Outcome run(const CutPipeFormat& format, std::vector<std::string> command) const {
    format.write(file_, *::arrow::ConcatenateTables({rows_, rows_}).ValueOrDie());
    const std::string whole = read_text(file_);
    command.push_back(pipe_);
    RunningProgram program(command);
    write_text(pipe_, whole.substr(0, whole.size() - format.missing));
    return program.wait();
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("whole");
  std::string pipe_ = folder_.path("pipe");
  std::shared_ptr<::arrow::Table> rows_ = table_of({{"n", ::arrow::int64(), "[1, 2]"}});
};

TEST_F(CutPipe, IsRefusedWhereAllRowsAreRead) {
  for (const CutPipeFormat& format : kCutPipeFormats) {
    for (const char* command : {"summary", "tail", "convert"}) {
      SCOPED_TRACE(std::string(format.name) + " " + command);
      const Outcome expected{1, "", "numera-arrow: " + pipe_ + ": " + format.reason + "\n"};
      EXPECT_EQ(run(format, {command}), expected);
    }
  }
}

TEST_F(CutPipe, IsRefusedBeforeItsFirstRowsUnlessItIsAStream) {
  for (const CutPipeFormat& format : kCutPipeFormats) {
    SCOPED_TRACE(format.name);
    const bool is_stream = format.write == write_ipc_stream;
    const Outcome refused{1, "", "numera-arrow: " + pipe_ + ": " + format.reason + "\n"};
    const Outcome shown{0, "    n\nint64\n    1\n    2\n", ""};
    EXPECT_EQ(run(format, {"head", "-n", "2"}), is_stream ? shown : refused);
  }
}

}  // namespace
}  // namespace numera::testing
