// Files with random damage. Each is converted and shown, or refused by one line. None ends the
// program by a signal.

#include <arrow/io/compressed.h>
#include <arrow/io/file.h>
#include <arrow/ipc/writer.h>
#include <arrow/util/compression.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>

#include "tests/tools/damage.h"
#include "tests/tools/program.h"

namespace numera::testing {
namespace {

using ::testing::AnyOf;
using ::testing::StartsWith;

/// A damaged number can demand more work than time allows. A signal then ends the program and the
/// test fails.
constexpr std::uint64_t kMostSeconds = 60;

/// A column of every layout, in two chunks.
std::shared_ptr<::arrow::Table> many_layouts() {
  const auto table = table_of(
      {{"i", ::arrow::int64(), "[1, null, 3]"},
       {"b", ::arrow::boolean(), "[true, null, false]"},
       {"t", ::arrow::utf8(), R"(["text", null, "täxt"])"},
       {"y", ::arrow::large_binary(), R"(["bytes", null, ""])"},
       {"x", ::arrow::fixed_size_binary(2), R"(["ab", null, "cd"])"},
       {"s", ::arrow::timestamp(::arrow::TimeUnit::MILLI, "UTC"), "[1, null, 3]"},
       {"d", ::arrow::dictionary(::arrow::int32(), ::arrow::utf8()), R"(["a", null, "b"])"},
       {"l", ::arrow::list(::arrow::int8()), "[[1, 2], null, [3]]"},
       {"m", ::arrow::map(::arrow::utf8(), ::arrow::int32()), R"([[["k", 1]], null, []])"},
       {"r", ::arrow::struct_({::arrow::field("f", ::arrow::float32())}),
        R"([{"f": 1.5}, null, {"f": null}])"},
       {"n", ::arrow::null(), "[null, null, null]"}});
  return ::arrow::ConcatenateTables({table, table}).ValueOrDie();
}

/// Writes no checksums. So only reading the data can reveal the damage.
void write_plain_parquet(const std::string& path, const ::arrow::Table& table) {
  const auto file = ::arrow::io::FileOutputStream::Open(path).ValueOrDie();
  const auto properties =
      parquet::WriterProperties::Builder().compression(::arrow::Compression::SNAPPY)->build();
  ASSERT_TRUE(
      parquet::arrow::WriteTable(table, ::arrow::default_memory_pool(), file, 3, properties).ok());
  ASSERT_TRUE(file->Close().ok());
}

void write_checked_parquet(const std::string& path, const ::arrow::Table& table) {
  write_parquet(path, table, 3);
}

/// Neither CSV nor JSON has every layout.
constexpr const char* kFewLayouts = "i,t,x\n1,text,1.5\n2,\"t\"\"x\",\n,täxt,1e3\n";

void write_few_layouts_as_csv(const std::string& path, const ::arrow::Table& /*table*/) {
  write_text(path, kFewLayouts);
}

void write_few_layouts_gzipped(const std::string& path, const ::arrow::Table& /*table*/) {
  const auto file = ::arrow::io::FileOutputStream::Open(path).ValueOrDie();
  const auto codec = ::arrow::util::Codec::Create(::arrow::Compression::GZIP).ValueOrDie();
  const auto packed = ::arrow::io::CompressedOutputStream::Make(codec.get(), file).ValueOrDie();
  ASSERT_TRUE(packed->Write(kFewLayouts).ok());
  ASSERT_TRUE(packed->Close().ok());
}

void write_few_layouts_as_json(const std::string& path, const ::arrow::Table& /*table*/) {
  write_text(path, R"({"i": 1, "t": "text", "l": [1, 2], "r": {"f": 1.5, "b": true}}
{"i": null, "t": "täxt", "l": [], "r": {"f": null, "b": false}}
{"i": 3, "t": "a\u0041\n", "r": {}}
)");
}

void write_compressed_ipc(const std::string& path, const ::arrow::Table& table) {
  const auto file = ::arrow::io::FileOutputStream::Open(path).ValueOrDie();
  auto options = ::arrow::ipc::IpcWriteOptions::Defaults();
  options.codec = ::arrow::util::Codec::Create(::arrow::Compression::ZSTD).ValueOrDie();
  const auto writer = ::arrow::ipc::MakeFileWriter(file, table.schema(), options).ValueOrDie();
  ASSERT_TRUE(writer->WriteTable(table).ok());
  ASSERT_TRUE(writer->Close().ok());
  ASSERT_TRUE(file->Close().ok());
}

struct Kind {
  const char* name;
  void (*write)(const std::string&, const ::arrow::Table&);
};

void PrintTo(const Kind& kind, std::ostream* stream) { *stream << kind.name; }

class DamagedFile : public ::testing::TestWithParam<Kind> {
 protected:
  /// So many damages, or 1000 where the whole torture is asked for.
  template <class Expect>
  void for_each_damage(std::uint64_t sample, const Expect& expect) {
    GetParam().write(file_, *many_layouts());
    const std::string whole = read_text(file_);
    const std::uint64_t damages = rounds(sample, 1000);
    for (std::uint64_t seed = 0; seed < damages; ++seed) {
      SCOPED_TRACE(seed);
      write_text(file_, damaged(whole, seed));
      expect();
    }
  }

  /// Expects status 0 and a new output, or status 1, one line and the old output.
  void expect_answer() {
    write_text(output_, "older");
    const auto before = folder_.names();
    const Outcome run = run_program({"convert", file_, "--cast", "--output", output_},
                                    {.cpu_seconds = kMostSeconds});
    ASSERT_THAT(run.exit_status, AnyOf(0, 1)) << ::testing::PrintToString(run);
    if (run.exit_status == 0) {
      EXPECT_EQ(run.errors, "");
      EXPECT_THAT(read_text(output_), StartsWith("ARROW1"));
    } else {
      expect_one_line(run);
      EXPECT_EQ(read_text(output_), "older");
    }
    EXPECT_EQ(folder_.names(), before);
  }

  /// Expects status 0, or status 1 and one line.
  void expect_rows(const std::vector<std::string>& arguments) {
    const Outcome run = run_program(arguments, {.cpu_seconds = kMostSeconds});
    ASSERT_THAT(run.exit_status, AnyOf(0, 1)) << ::testing::PrintToString(run);
    if (run.exit_status == 1) expect_one_line(run);
  }

  /// A sanitizer adds lines of its own about allocations that are too large.
  void expect_one_line(const Outcome& run) {
    const std::string line = line_that_starts(run.errors, "numera-arrow: " + file_ + ": ");
    EXPECT_NE(line, "") << ::testing::PrintToString(run);
    EXPECT_TRUE(run.errors == line + "\n" || run.errors.starts_with("==")) << run.errors;
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("damaged");
  std::string output_ = folder_.path("back.arrow");
};

TEST_P(DamagedFile, IsConvertedOrRefusedByOneLine) {
  for_each_damage(20, [this] { expect_answer(); });
}

TEST_P(DamagedFile, IsShownOrRefusedByOneLine) {
  for_each_damage(20, [this] {
    expect_rows({"show", file_, "-n", "2"});
    expect_rows({"tail", file_, "-n", "4", "--vertical"});
    expect_rows({"summary", file_});
  });
}

TEST_P(DamagedFile, IsDescribedOrRefusedByOneLine) {
  for_each_damage(5, [this] {
    expect_rows({"tree", file_, "--cast", "--json"});
    expect_rows({"types", file_, "--count", "--json"});
  });
}

INSTANTIATE_TEST_SUITE_P(Formats, DamagedFile,
                         ::testing::Values(Kind{"Csv", write_few_layouts_as_csv},
                                           Kind{"CompressedCsv", write_few_layouts_gzipped},
                                           Kind{"JsonLines", write_few_layouts_as_json},
                                           Kind{"IpcFile", write_ipc},
                                           Kind{"CompressedIpcFile", write_compressed_ipc},
                                           Kind{"IpcStream", write_ipc_stream},
                                           Kind{"OldIpcStream", write_old_ipc_stream},
                                           Kind{"Parquet", write_checked_parquet},
                                           Kind{"ParquetWithoutChecksums", write_plain_parquet}),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace numera::testing
