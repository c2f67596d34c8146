// Signals during a conversion: no partial output is left.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "tests/tools/damage.h"
#include "tests/tools/program.h"
#include "tests/tools/waiting.h"

namespace numera::testing {
namespace {

namespace fs = std::filesystem;

/// A slow conversion of many small batches to an output file that already exists.
class Interruption : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string text = "a,b,c,d\n";
    for (int i = 0; i < 300000; ++i) text += "1,2,3,4\n";
    write_text(file_, text);
    write_text(output_, "older");
  }

  std::vector<std::string> convert(const std::string& batch_rows = "10") const {
    return {"convert", file_, "--batch-rows", batch_rows, "--output", output_};
  }

  std::string part() const {
    for (const std::string& name : folder_.names()) {
      if (name.ends_with(".part")) return name;
    }
    return "";
  }

  /// Waits until `bytes` bytes have been written to the part file.
  void wait_for_part(std::uintmax_t bytes = 100000) const {
    wait_until([&] {
      const std::string name = part();
      return !name.empty() && fs::file_size(folder_.path(name)) >= bytes;
    });
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("numbers.csv");
  std::string output_ = folder_.path("back.arrow");
};

TEST_F(Interruption, EndsBetweenTwoColumnsWithOneLineAndTheOutputIntact) {
  const std::pair<int, int> cases[] = {{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}};
  for (const auto& [signal, exit_status] : cases) {
    SCOPED_TRACE(signal);
    RunningProgram program(convert());
    wait_for_part();
    program.send(signal);
    const Outcome expected{exit_status, "", "numera-arrow: " + file_ + ": interrupted\n"};
    EXPECT_EQ(program.wait(), expected);
    EXPECT_EQ(read_text(output_), "older");
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "numbers.csv"}));
  }
}

TEST_F(Interruption, IsIgnoredWhereTheProgramWasStartedToIgnoreIt) {
  RunningProgram program(convert("500"), {.ignored = {SIGHUP}});
  wait_for_part(10000);
  program.send(SIGHUP);
  const Outcome run = program.wait();
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(read_ipc(output_)->num_rows(), 300000);
}

TEST_F(Interruption, EndsWhereEveryColumnIsRefused) {
  const std::string file = folder_.path("half.arrow");
  const auto half = table_of({{"h", ::arrow::float16(), "[1, 2]"}});
  std::vector<std::shared_ptr<::arrow::Table>> tables(50000, half);
  write_ipc(file, *::arrow::ConcatenateTables(tables).ValueOrDie());
  RunningProgram program({"convert", file, "--output", output_});
  wait_for_part(0);
  program.send(SIGINT);
  const Outcome expected{130, "", "numera-arrow: " + file + ": interrupted\n"};
  EXPECT_EQ(program.wait(), expected);
}

TEST_F(Interruption, ByForceLeavesTheOutputIntactAndAPartBeside) {
  RunningProgram program(convert());
  wait_for_part();
  program.send(SIGKILL);
  EXPECT_EQ(program.wait().exit_status, 128 + SIGKILL);
  EXPECT_EQ(read_text(output_), "older");
  EXPECT_THAT(part(), ::testing::MatchesRegex("[.]back[.]arrow[.]......[.]part"));
}

TEST_F(Interruption, ByForceLeavesAPartThatIsNoDataOfItsFolder) {
  const TemporaryFolder rows;
  rows.write("1.csv", "n\n7\n");
  const auto has_part = [&] { return rows.names().size() > 1; };
  RunningProgram program({"convert", file_, "--batch-rows", "10", "-o", rows.path("2.csv")});
  wait_until(has_part);
  program.send(SIGKILL);
  EXPECT_EQ(program.wait().exit_status, 128 + SIGKILL);
  EXPECT_TRUE(has_part());
  EXPECT_EQ(printed("show", rows.path("")), "    n\nint64\n    7\n\n1 row\n");
}

/// A change of the input while the program reads it.
struct Change {
  const char* name;
  void (*apply)(const std::string& file);
};

void cut_rows(const std::string& file) {
  constexpr std::uintmax_t kWholeLines = std::uintmax_t{8} * 100000;
  fs::resize_file(file, fs::file_size(file) - kWholeLines);
}

void add_bytes(const std::string& file) {
  std::ofstream(file, std::ios::app | std::ios::binary) << "5,6,7,8\n";
}

void write_a_byte(const std::string& file) {
  std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).put(read_text(file)[0]);
}

constexpr Change kChanges[] = {
    {"cut", cut_rows}, {"longer", add_bytes}, {"written to", write_a_byte}};

TEST_F(Interruption, ByAChangeOfTheInputLeavesTheOutputIntact) {
  for (const Change& change : kChanges) {
    SCOPED_TRACE(change.name);
    SetUp();
    RunningProgram program(convert("100"));  // larger batches, because it reads to the end
    wait_for_part();
    change.apply(file_);
    const Outcome expected{1, "", "numera-arrow: " + file_ + ": it changed while it was read\n"};
    EXPECT_EQ(program.wait(), expected);
    EXPECT_EQ(read_text(output_), "older");
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "numbers.csv"}));
  }
}

TEST_F(Interruption, ByAChangeOfOneOfSeveralInputsLeavesTheOutputIntact) {
  const std::string other = folder_.write("other.csv", "a,b,c,d\n5,6,7,8\n");
  RunningProgram program({"convert", other, file_, other, "--batch-rows", "100", "-o", output_});
  wait_for_part();
  cut_rows(file_);
  const Outcome expected{1, "", "numera-arrow: " + file_ + ": it changed while it was read\n"};
  EXPECT_EQ(program.wait(), expected);
  EXPECT_EQ(read_text(output_), "older");
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "numbers.csv", "other.csv"}));
}

/// The reader of the format notices the missing bytes, or the check at the end does.
TEST_F(Interruption, ByACutOfABinaryInputLeavesTheOutputIntact) {
  const auto few = table_of({{"a", ::arrow::int64(), "[1, 2, 3, 4, 5, 6, 7, 8, 9, 10]"}});
  const std::vector<std::shared_ptr<::arrow::Table>> tables(20000, few);
  const auto many = ::arrow::ConcatenateTables(tables).ValueOrDie();
  void (*const writers[])(const std::string&, const ::arrow::Table&) = {
      write_ipc, write_ipc_stream, [](const std::string& path, const ::arrow::Table& table) {
        write_parquet(path, table, 2000);
      }};
  for (const auto write : writers) {
    write(file_, *many);
    write_text(output_, "older");
    RunningProgram program(convert());
    wait_for_part(50000);
    fs::resize_file(file_, fs::file_size(file_) / 2);
    const Outcome run = program.wait();
    EXPECT_EQ(run.exit_status, 1);
    EXPECT_THAT(run.errors, ::testing::StartsWith("numera-arrow: " + file_ + ": "));
    EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
    EXPECT_EQ(read_text(output_), "older");
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "numbers.csv"}));
  }
}

/// Kills the program at any moment, from its start to after its end. The output is then the whole
/// old file or the whole new file.
TEST_F(Interruption, ByForceAtAnyMomentLeavesOneOfTwoWholeOutputs) {
  const std::string file = folder_.path("few.csv");
  write_text(file, "a,b\n1,2\n3,4\n");
  const auto expected =
      table_of({{"a", ::arrow::int64(), "[1, 3]"}, {"b", ::arrow::int64(), "[2, 4]"}});
  const std::vector<std::string> arguments = {"convert", file, "--output", output_};
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(run_program(arguments).exit_status, 0);
  const auto whole = std::chrono::steady_clock::now() - start;
  std::mt19937 dice(1);
  const std::uint64_t kills = rounds(15, 300);
  for (std::uint64_t round = 0; round < kills; ++round) {
    SCOPED_TRACE(round);
    write_text(output_, "older");
    RunningProgram program(arguments);
    std::this_thread::sleep_for(whole * static_cast<int>(dice() % 110) / 100);
    program.send(SIGKILL);
    program.wait();
    if (read_text(output_) != "older") {
      EXPECT_TRUE(read_ipc(output_)->Equals(*expected));
    }
  }
}

}  // namespace
}  // namespace numera::testing
