// Compressed text is read as the text is. Where compressed data is cut, damaged or followed by
// anything else, it is refused and is never a shorter table.

#include <arrow/buffer.h>
#include <arrow/io/compressed.h>
#include <arrow/io/memory.h>
#include <arrow/util/compression.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/files/tables.h"

namespace numera::testing {
namespace {

using Codec = ::arrow::Compression::type;

constexpr std::pair<Codec, const char*> kCodecs[] = {
    {Codec::GZIP, "gzip"}, {Codec::ZSTD, "zstd"}, {Codec::BZ2, "bzip2"}, {Codec::LZ4_FRAME, "lz4"}};

std::string compressed(Codec type, const std::string& text) {
  const auto codec = ::arrow::util::Codec::Create(type).ValueOrDie();
  const auto bytes = ::arrow::io::BufferOutputStream::Create().ValueOrDie();
  const auto stream = ::arrow::io::CompressedOutputStream::Make(codec.get(), bytes).ValueOrDie();
  EXPECT_TRUE(stream->Write(text).ok());
  EXPECT_TRUE(stream->Close().ok());
  return bytes->Finish().ValueOrDie()->ToString();
}

/// Lines with numbers that hardly repeat, so that they stay large.
std::string numbers(int count) {
  std::string text = "n\n";
  unsigned value = 1;
  for (int i = 0; i < count; ++i) {
    value = value * 1664525U + 1013904223U;
    text += std::to_string(value) + "\n";
  }
  return text;
}

class CompressedFiles : public ::testing::Test {
 protected:
  ::arrow::Status read(const std::string& bytes) {
    write_text(file_, bytes);
    return read_table(file_).status();
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("rows");
  std::shared_ptr<::arrow::Table> table_ = table_of(
      {{"n", ::arrow::int64(), "[1, null, 3]"}, {"t", ::arrow::utf8(), R"(["a", "b", "c"])"}});
};

TEST_F(CompressedFiles, TextIsReadFromEveryCodec) {
  for (const auto& [codec, name] : kCodecs) {
    for (const char* text : {"n,t\n1,a\n,b\n3,c\n", "n\tt\n1\ta\n\tb\n3\tc\n",
                             "{\"n\":1,\"t\":\"a\"}\n{\"t\":\"b\"}\n{\"n\":3,\"t\":\"c\"}\n"}) {
      SCOPED_TRACE(std::string(name) + " " + text);
      write_text(file_, compressed(codec, text));
      expect_table(file_, *table_);
    }
  }
}

TEST_F(CompressedFiles, PartsThatFollowOneAnotherAreOneText) {
  for (const auto& [codec, name] : kCodecs) {
    SCOPED_TRACE(name);
    // Arrow's stream takes no empty part of bzip2 between others.
    const std::string empty = codec == Codec::BZ2 ? "" : compressed(codec, "");
    write_text(file_, compressed(codec, "n,t\n1,") + empty + compressed(codec, "a\n,b\n3") +
                          compressed(codec, ",c\n"));
    expect_table(file_, *table_);
  }
}

TEST_F(CompressedFiles, TextIsReadInBlocks) {
  const std::string text = numbers(300000);
  write_text(file_, text);
  const auto expected = read_table(file_).ValueOrDie();
  EXPECT_EQ(expected->num_rows(), 300000);
  for (const auto& [codec, name] : kCodecs) {
    SCOPED_TRACE(name);
    write_text(file_, compressed(codec, text));
    expect_table(file_, *expected);
    const auto source = files::open_source(file_).ValueOrDie();
    ASSERT_TRUE(source->ToRecordBatches().ok());
    EXPECT_EQ(source->chunks(), 4);
  }
}

TEST_F(CompressedFiles, ACutAnywhereIsRefused) {
  for (const auto& [codec, name] : kCodecs) {
    const std::string bytes = compressed(codec, "n,t\n1,a\n,b\n3,c\n");
    // A file of the first bytes alone is no longer known to be compressed.
    const size_t known = codec == Codec::BZ2 ? 10 : 4;
    for (size_t size = 1; size < bytes.size(); ++size) {
      SCOPED_TRACE(std::string(name) + " " + std::to_string(size));
      const auto status = read(bytes.substr(0, size));
      EXPECT_FALSE(status.ok());
      if (size >= known) {
        EXPECT_EQ(status.ToString(), "IOError: Truncated compressed stream");
      }
    }
  }
}

TEST_F(CompressedFiles, ACutOfALargeFileIsRefused) {
  const std::string text = numbers(100000);
  for (const auto& [codec, name] : kCodecs) {
    const std::string one = compressed(codec, text);
    const std::string two = one + compressed(codec, text.substr(2));
    std::vector<size_t> sizes = {one.size() / 3, one.size() / 2, one.size() - 9, one.size() - 1};
    for (const size_t more : {1U, 3U, 7U, 12U, 1000U}) sizes.push_back(one.size() + more);
    sizes.push_back(two.size() - 1);
    for (const size_t size : sizes) {
      SCOPED_TRACE(std::string(name) + " " + std::to_string(size));
      EXPECT_EQ(read(two.substr(0, size)).ToString(), "IOError: Truncated compressed stream");
    }
    EXPECT_EQ(read(two).ToString(), "OK");
  }
}

TEST_F(CompressedFiles, BytesBehindTheDataAreRefused) {
  for (const auto& [codec, name] : kCodecs) {
    const std::string bytes = compressed(codec, "n,t\n1,a\n,b\n3,c\n");
    for (const std::string& more :
         {std::string(1, '\0'), std::string(512, '\0'), std::string("4,d\n")}) {
      SCOPED_TRACE(std::string(name) + " " + more);
      EXPECT_EQ(read(bytes + more).code(), ::arrow::StatusCode::IOError);
    }
  }
}

TEST_F(CompressedFiles, DamagedDataIsRefused) {
  const std::string text = numbers(1000);
  for (const auto& [codec, name] : kCodecs) {
    if (codec == Codec::LZ4_FRAME) continue;  // Arrow writes its frames without a checksum
    std::string bytes = compressed(codec, text);
    if (codec == Codec::ZSTD) bytes.resize(bytes.size() / 2);  // and so these
    for (size_t at = 20; at < bytes.size(); at += 101) {
      SCOPED_TRACE(std::string(name) + " " + std::to_string(at));
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(~damaged[at]);
      EXPECT_FALSE(read(damaged).ok());
    }
  }
}

TEST_F(CompressedFiles, WhatIsNoTextInsideIsNamed) {
  const auto numbers = table_of({{"n", ::arrow::int64(), "[1, 2]"}});
  const auto inside = [&](const auto& write) {
    write(file_, *numbers);
    return read_text(file_);
  };
  const std::pair<std::string, const char*> cases[] = {
      {inside([](auto& path, auto& table) { write_parquet(path, table); }),
       "it is Parquet inside gzip; decompress it first"},
      {inside(write_ipc), "it is an Arrow IPC file inside gzip; decompress it first"},
      {inside(write_ipc_stream), "it is an Arrow IPC stream inside gzip; decompress it first"},
      {inside(write_old_ipc_stream), "it is an Arrow IPC stream inside gzip; decompress it first"},
      {compressed(Codec::ZSTD, "n\n1\n"), "it is zstd inside gzip; decompress it first"},
      {std::string("\0\1\2", 3), "it is no CSV and no JSON lines inside gzip"},
      {"gr\xF6\xDF\x65\n1\n", "it is text that is not UTF-8, and its encoding was not named"},
      {"", "it is empty inside gzip"},
      {"[1]\n", "it is JSON, but no table: of JSON, only files with one object per line are read"},
      {"n", "read as CSV, it has no heading: no line with text ends with a line break"},
  };
  for (const auto& [bytes, reason] : cases) {
    EXPECT_EQ(read(compressed(Codec::GZIP, bytes)).ToString(), std::string("Invalid: ") + reason);
  }
}

TEST_F(CompressedFiles, TextMayStartWithTheLettersOfBzip2) {
  write_text(file_, "BZhours\n1\n");
  expect_table(file_, *table_of({{"BZhours", ::arrow::int64(), "[1]"}}));
}

}  // namespace
}  // namespace numera::testing
