// What a sink writes in each format and compression, and what it refuses.

#include "numera/files/write.h"

#include <arrow/array/util.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/scalar.h>
#include <arrow/util/compression.h>
#include <arrow/util/io_util.h>
#include <gtest/gtest.h>
#include <parquet/file_reader.h>
#include <parquet/metadata.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>

#include "tests/files/written.h"

namespace numera::testing {
namespace {

using ::arrow::Compression;
using ::arrow::Status;
using files::Format;

std::shared_ptr<::arrow::RecordBatch> rows() {
  return batch_of({{"n", ::arrow::int64(), "[1, null, 3]"},
                   {"t", ::arrow::utf8(), R"(["a", "", null])"},
                   {"l", ::arrow::list(::arrow::int8()), "[[1], [], null]"}});
}

class FileSink : public ::testing::Test {
 protected:
  /// Expects that the sink is refused, and that the folder stays empty.
  void expect_refusal(const std::string& name, const files::WriteOptions& options,
                      const std::string& reason) {
    SCOPED_TRACE(name + " " + options.compression);
    const std::string path = name == "-" ? name : folder_.path(name);
    const auto sink = files::open_sink(path, options);
    EXPECT_EQ(sink.status(), Status::Invalid("cannot write ",
                                             name == "-" ? "standard output" : path, ": ", reason));
    EXPECT_EQ(folder_.names(), std::vector<std::string>());
  }

  TemporaryFolder folder_;
};

std::shared_ptr<::arrow::Table> read_stream(const std::string& path) {
  const auto file = ::arrow::io::ReadableFile::Open(path).ValueOrDie();
  return ::arrow::ipc::RecordBatchStreamReader::Open(file).ValueOrDie()->ToTable().ValueOrDie();
}

void expect_rows(const ::arrow::Table& table) {
  const auto expected = ::arrow::Table::FromRecordBatches({rows(), rows()}).ValueOrDie();
  EXPECT_TRUE(table.ValidateFull().ok());
  EXPECT_TRUE(table.Equals(*expected)) << table.ToString();
}

TEST_F(FileSink, WritesTheFormatThatTheEndOfThePathNames) {
  using Read = std::shared_ptr<::arrow::Table> (*)(const std::string&);
  const std::pair<std::string, Read> cases[] = {{"a.parquet", read_parquet},
                                                {"a.arrow", read_ipc},
                                                {"a.feather", read_ipc},
                                                {"a.ipc", read_ipc},
                                                {"a.arrows", read_stream}};
  for (const auto& [name, read] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(write_batches(folder_.path(name), {rows(), rows()}), Status::OK());
    expect_rows(*read(folder_.path(name)));
  }
}

TEST_F(FileSink, WritesTheFormatAskedForWhateverThePath) {
  const std::string path = folder_.path("a.parquet");
  EXPECT_EQ(write_batches(path, {rows(), rows()}, {.format = Format::kIpcStream}), Status::OK());
  expect_rows(*read_stream(path));
}

Compression::type codec_of_parquet(const std::string& path) {
  const auto metadata = parquet::ParquetFileReader::OpenFile(path)->metadata();
  for (int i = 1; i < metadata->num_columns(); ++i) {
    EXPECT_EQ(metadata->RowGroup(0)->ColumnChunk(i)->compression(),
              metadata->RowGroup(0)->ColumnChunk(0)->compression());
  }
  return metadata->RowGroup(0)->ColumnChunk(0)->compression();
}

TEST_F(FileSink, CompressesParquetWithZstdOrAsAsked) {
  const std::pair<std::string, Compression::type> cases[] = {
      {"", Compression::ZSTD},           {"none", Compression::UNCOMPRESSED},
      {"zstd", Compression::ZSTD},       {"zstd:19", Compression::ZSTD},
      {"zstd:-5", Compression::ZSTD},    {"snappy", Compression::SNAPPY},
      {"gzip", Compression::GZIP},       {"gzip:1", Compression::GZIP},
      {"brotli:3", Compression::BROTLI}, {"lz4", Compression::LZ4}};
  const std::string path = folder_.path("a.parquet");
  for (const auto& [compression, codec] : cases) {
    SCOPED_TRACE(compression);
    EXPECT_EQ(write_batches(path, {rows(), rows()}, {.compression = compression}), Status::OK());
    EXPECT_EQ(codec_of_parquet(path), codec);
    expect_rows(*read_parquet(path));
  }
}

TEST_F(FileSink, WritesTheSameParquetOnThreads) {
  const std::string path = folder_.path("a.parquet");
  const auto empty = rows()->Slice(0, 0);
  for (const auto& batches :
       {::arrow::RecordBatchVector{empty, rows(), empty, rows()}, {rows()}, {empty, empty}}) {
    SCOPED_TRACE(batches.size());
    ASSERT_EQ(write_batches(path, batches, {}), Status::OK());
    const auto expected = read_parquet(path);
    ASSERT_EQ(write_batches(path, batches, {.use_threads = true}), Status::OK());
    EXPECT_TRUE(read_parquet(path)->Equals(*expected, /*check_metadata=*/true));
    EXPECT_EQ(parquet::ParquetFileReader::OpenFile(path)->metadata()->num_row_groups(), 1);
  }
}

/// A batch that compresses well.
std::shared_ptr<::arrow::RecordBatch> zeros() {
  return batch_of("z", ::arrow::MakeArrayFromScalar(::arrow::Int64Scalar(0), 100000).ValueOrDie());
}

TEST_F(FileSink, EndsRowGroupsAtTheSameRowsOnThreads) {
  const std::string path = folder_.path("a.parquet");
  const auto batch = zeros();
  for (const bool use_threads : {false, true}) {
    SCOPED_TRACE(use_threads);
    ASSERT_EQ(
        write_batches(path, {batch, batch, batch, batch, batch}, {.use_threads = use_threads}),
        Status::OK());
    const auto metadata = parquet::ParquetFileReader::OpenFile(path)->metadata();
    ASSERT_EQ(metadata->num_row_groups(), 2);
    EXPECT_EQ(metadata->RowGroup(0)->num_rows(), 300'000);
    EXPECT_EQ(metadata->RowGroup(1)->num_rows(), 200'000);
  }
}

/// The size of the file, whose batch is read back.
std::uintmax_t size_of_zeros(const std::string& path, const files::WriteOptions& options) {
  EXPECT_EQ(write_batches(path, {zeros()}, options), Status::OK());
  EXPECT_TRUE(read_ipc(path)->Equals(*::arrow::Table::FromRecordBatches({zeros()}).ValueOrDie()));
  return std::filesystem::file_size(path);
}

TEST_F(FileSink, CompressesArrowIpcOnRequestOnly) {
  const std::string path = folder_.path("a.arrow");
  EXPECT_GT(size_of_zeros(path, {}), 800000);
  EXPECT_GT(size_of_zeros(path, {.compression = "none"}), 800000);
  EXPECT_LT(size_of_zeros(path, {.compression = "zstd"}), 10000);
  EXPECT_LT(size_of_zeros(path, {.compression = "zstd:9"}), 10000);
  EXPECT_LT(size_of_zeros(path, {.compression = "lz4"}), 10000);
}

TEST_F(FileSink, UsesTheLevelAskedFor) {
  std::string json = "[0";
  for (int i = 1; i < 20000; ++i) json += "," + std::to_string((i * 7919L) % 65536);
  const auto batch = batch_of({{"n", ::arrow::int32(), json + "]"}});
  const auto bytes = [&](const std::string& compression) {
    const std::string path = folder_.path("a.arrow");
    EXPECT_EQ(write_batches(path, {batch}, {.compression = compression}), Status::OK());
    return std::filesystem::file_size(path);
  };
  EXPECT_EQ(bytes("zstd"), bytes("zstd:1"));
  EXPECT_GT(bytes("zstd:-100000"), bytes("zstd:1"));
}

TEST_F(FileSink, RefusesAPathWithoutAKnownEnd) {
  for (const char* name : {"back", "back.PARQUET", "back.arrow.gz", "back.txt"}) {
    expect_refusal(name, {},
                   "the name ends in none of .parquet, .arrow, .feather, .ipc, .arrows, .csv, "
                   ".tsv, .json, .jsonl, .ndjson");
  }
}

TEST_F(FileSink, RefusesACompressionThatTheFormatDoesNotHave) {
  const std::string parquet = "one of none, zstd, lz4, snappy, gzip, brotli";
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"a.parquet", "zip", parquet},
      {"a.parquet", "ZSTD", parquet},
      {"a.parquet", "bz2", parquet},
      {"a.parquet", ":1", parquet},
      {"a.arrow", "snappy", "one of none, zstd, lz4"},
      {"a.arrows", "gzip:1", "one of none, zstd, lz4"},
      {"a.parquet", "zstd:", "a level from -131072 to 22"},
      {"a.parquet", "zstd:23", "a level from -131072 to 22"},
      {"a.parquet", "zstd:9x", "a level from -131072 to 22"},
      {"a.parquet", "zstd:99999999999", "a level from -131072 to 22"},
      {"a.parquet", "gzip:0", "a level from 1 to 9"},
      {"a.parquet", "snappy:1", "snappy, which has no levels"},
      {"a.parquet", "none:1", "none, which has no levels"}};
  for (const auto& [name, compression, expected] : cases) {
    expect_refusal(name, {.compression = compression},
                   "compression: found '" + compression + "', expected " + expected);
  }
}

TEST_F(FileSink, RefusesStandardOutputWithoutAFormat) {
  expect_refusal("-", {}, "its format is not given");
}

TEST_F(FileSink, HasNothingToFinishWithoutABatch) {
  for (const char* name : {"a.parquet", "a.arrow", "a.arrows", "a.csv", "a.json"}) {
    const std::string path = folder_.path(name);
    EXPECT_EQ(write_batches(path, {}),
              Status::Invalid("cannot write ", path, ": no batch was written"));
  }
  EXPECT_EQ(folder_.names(), std::vector<std::string>());
}

TEST_F(FileSink, IsOverWhenItIsFinished) {
  const std::string path = folder_.path("a.arrow");
  const auto sink = files::open_sink(path).ValueOrDie();
  EXPECT_EQ(sink->write(rows()), Status::OK());
  EXPECT_EQ(sink->finish(), Status::OK());
  const auto over = Status::Invalid("cannot write ", path, ": it is finished");
  EXPECT_EQ(sink->write(rows()), over);
  EXPECT_EQ(sink->finish(), over);
  EXPECT_EQ(read_ipc(path)->num_rows(), 3);
}

TEST_F(FileSink, LeavesNothingIfItIsNotFinished) {
  for (const char* name : {"a.parquet", "a.arrow", "a.arrows", "a.csv", "a.json"}) {
    const auto sink = files::open_sink(folder_.path(name)).ValueOrDie();
    EXPECT_EQ(sink->write(zeros()), Status::OK());
  }
  EXPECT_EQ(folder_.names(), std::vector<std::string>());
}

/// Lets files grow to so many bytes and no further.
class SmallFiles {
 public:
  explicit SmallFiles(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~SmallFiles() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  SmallFiles(const SmallFiles&) = delete;
  SmallFiles& operator=(const SmallFiles&) = delete;

 private:
  void (*signal_)(int);
  rlimit before_;
};

TEST_F(FileSink, SaysThatTheFileCannotGrow) {
  for (const char* name : {"a.parquet", "a.arrow", "a.arrows", "a.csv", "a.json"}) {
    SCOPED_TRACE(name);
    const std::string path = folder_.path(name);
    write_text(path, "older");
    Status status;
    {
      const SmallFiles limit(100);
      status = write_batches(path, {zeros()}, {.compression = "none"});
    }
    EXPECT_EQ(status, ::arrow::internal::IOErrorFromErrno(EFBIG, "cannot write ", path,
                                                          ": File too large"));
    EXPECT_EQ(read_text(path), "older");
  }
  EXPECT_EQ(folder_.names(),
            (std::vector<std::string>{"a.arrow", "a.arrows", "a.csv", "a.json", "a.parquet"}));
}

}  // namespace
}  // namespace numera::testing
