// Signals while a text is read for the types of its columns, before there is an output.

#include <arrow/util/compression.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

std::string compressed_by_zstd(const std::string& text) {
  const auto codec = ::arrow::util::Codec::Create(::arrow::Compression::ZSTD).ValueOrDie();
  const auto size = static_cast<std::int64_t>(text.size());
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::string packed(static_cast<std::size_t>(codec->MaxCompressedLen(size, bytes)), '\0');
  const auto length = codec->Compress(size, bytes, std::ssize(packed),
                                      reinterpret_cast<std::uint8_t*>(packed.data()));
  packed.resize(static_cast<std::size_t>(length.ValueOrDie()));
  return packed;
}

/// A text of 256 MiB that is small on disk. It takes seconds to come to its end, where it is
/// refused if no signal ends the reading before.
void write_long(const std::string& path, const std::string& heading, const std::string& row,
                const std::string& refused) {
  constexpr std::size_t kPieceBytes = std::size_t{1} << 24U;
  std::string piece;
  while (piece.size() < kPieceBytes) piece += row;
  piece = compressed_by_zstd(piece);
  std::ofstream file(path, std::ios::binary);
  file << compressed_by_zstd(heading + row);
  for (int i = 0; i < 16; ++i) file << piece;
  file << compressed_by_zstd(refused);
}

/// A conversion of a pipe and a text, one after the other. Whoever has opened the pipe for writing
/// knows that the program is running.
class InterruptedOpening : public ::testing::Test {
 protected:
  InterruptedOpening() {
    if (::mkfifo(pipe_.c_str(), 0600) != 0) throw std::runtime_error("no pipe is made");
  }

  Outcome interrupted(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"convert", pipe_, file_, "-o",
                                          folder_.path("back.arrow")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    RunningProgram program(arguments);
    write_text(pipe_, "n\n1\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // for it to come to the text
    program.send(SIGINT);
    return program.wait();
  }

  TemporaryFolder folder_;
  std::string pipe_ = folder_.path("pipe");
  std::string file_ = folder_.path("text");
};

TEST_F(InterruptedOpening, OfJsonLinesEndsWithinTheFirstReading) {
  write_long(file_, "", "{\"n\":1}\n", "x\n");
  const Outcome expected{130, "", "numera-arrow: interrupted\n"};
  EXPECT_EQ(interrupted({}), expected);
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"pipe", "text"}));
}

TEST_F(InterruptedOpening, OfCsvOfWhichAllRowsDecideTheTypesEndsWithinTheFirstReading) {
  write_long(file_, "n\n", "1\n", "\"x\n");
  const Outcome expected{130, "", "numera-arrow: interrupted\n"};
  EXPECT_EQ(interrupted({"--csv-types-of-all-rows"}), expected);
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"pipe", "text"}));
}

}  // namespace
}  // namespace numera::testing
