// The names of formats and compressions.

#include <gtest/gtest.h>

#include <optional>

#include "tests/files/written.h"

namespace numera::testing {
namespace {

TEST(FormatNames, AreTheEndsOfPaths) {
  EXPECT_EQ(files::format_names(),
            (std::vector<std::string>{"parquet", "arrow", "feather", "ipc", "arrows", "csv", "tsv",
                                      "json", "jsonl", "ndjson"}));
}

TEST(FormatNames, SelectWhatTheEndOfAPathWould) {
  const TemporaryFolder folder;
  const auto batch = batch_of({{"a", ::arrow::int8(), "[1]"}, {"b", ::arrow::int8(), "[2]"}});
  for (const std::string& name : files::format_names()) {
    SCOPED_TRACE(name);
    files::WriteOptions options;
    ASSERT_TRUE(files::select_format(name, options).ok());
    ASSERT_TRUE(write_batches(folder.path("without"), {batch}, options).ok());
    ASSERT_TRUE(write_batches(folder.path("with." + name), {batch}).ok());
    EXPECT_TRUE(read_text(folder.path("without")) == read_text(folder.path("with." + name)));
  }
}

TEST(FormatNames, HaveNoOther) {
  files::WriteOptions options;
  EXPECT_EQ(files::select_format("excel", options).ToString(),
            "Invalid: there is no format 'excel'");
  EXPECT_EQ(options.format, std::nullopt);
}

TEST(CompressionNames, AreThoseOfSomeFormat) {
  EXPECT_EQ(files::compression_names(),
            (std::vector<std::string>{"none", "zstd", "lz4", "snappy", "gzip", "brotli", "bz2"}));
}

}  // namespace
}  // namespace numera::testing
