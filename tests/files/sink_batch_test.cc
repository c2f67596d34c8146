// Batches that a sink refuses, whatever the format.

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <gtest/gtest.h>

#include "tests/files/written.h"

namespace numera::testing {
namespace {

using ::arrow::Status;

/// Writes the good batch, then the bad one. Expects that this is refused now and from then on, and
/// that no file is left.
void expect_refused_batch(const std::shared_ptr<::arrow::RecordBatch>& bad,
                          const std::string& reason) {
  const TemporaryFolder folder;
  const std::string path = folder.path("a.arrow");
  auto sink = files::open_sink(path).ValueOrDie();
  const auto refused = Status::Invalid("cannot write ", path, ": ", reason);
  EXPECT_EQ(sink->write(batch_of(*::arrow::Table::MakeEmpty(bad->schema()).ValueOrDie())),
            Status::OK());
  EXPECT_EQ(sink->write(bad), refused);
  EXPECT_EQ(sink->finish(), refused);
  sink.reset();
  EXPECT_EQ(folder.names(), std::vector<std::string>());
}

TEST(SinkBatch, HasTheSchemaOfTheFirst) {
  const TemporaryFolder folder;
  const std::string path = folder.path("a.arrow");
  auto sink = files::open_sink(path).ValueOrDie();
  EXPECT_EQ(sink->write(batch_of({{"n", ::arrow::int64(), "[1]"}})), Status::OK());
  EXPECT_EQ(sink->write(batch_of({{"m", ::arrow::int64(), "[0]"}})),
            Status::Invalid("cannot write ", path,
                            ": found a batch with another schema than the "
                            "first"));
}

/// Texts with these offsets and bytes.
std::shared_ptr<::arrow::RecordBatch> texts_with(const std::vector<std::int32_t>& offsets,
                                                 const std::string& bytes) {
  const auto data = ::arrow::ArrayData::Make(
      ::arrow::utf8(), std::ssize(offsets) - 1,
      {nullptr, ::arrow::Buffer::FromVector(offsets), ::arrow::Buffer::FromString(bytes)}, 0);
  return batch_of("t", ::arrow::MakeArray(data));
}

TEST(SinkBatch, HasValidColumns) {
  expect_refused_batch(
      texts_with({0, 1000}, "a"),
      "column 't': Offset invariant failure: offset for slot 1 out of bounds: 1000 > 1");
  expect_refused_batch(texts_with({0, 1, 0, 1}, "a"),
                       "column 't': Offset invariant failure: non-monotonic offset at slot 2: 0 < "
                       "1");
  expect_refused_batch(texts_with({0, 1}, "\xFF"),
                       "column 't': Invalid UTF8 sequence at string index 0");
}

TEST(SinkBatch, HasColumnsOfItsLengthAndTypes) {
  const auto schema = ::arrow::schema({::arrow::field("n", ::arrow::int64())});
  const auto column = ::arrow::MakeArrayOfNull(::arrow::int64(), 1).ValueOrDie();
  expect_refused_batch(::arrow::RecordBatch::Make(schema, 2, {column}),
                       "Number of rows in column 0 did not match batch: 1 vs 2");
  const auto other = ::arrow::MakeArrayOfNull(::arrow::int8(), 1).ValueOrDie();
  expect_refused_batch(::arrow::RecordBatch::Make(schema, 1, {other}),
                       "Column 0 type not match schema: int8 vs int64");
}

TEST(SinkBatch, HasAtMost1024Levels) {
  auto type = ::arrow::int8();
  for (int i = 0; i < 1024; ++i) type = ::arrow::list(type);
  const TemporaryFolder folder;
  const std::string path = folder.path("a.arrow");
  auto sink = files::open_sink(path).ValueOrDie();
  EXPECT_EQ(sink->write(batch_of("deep", ::arrow::MakeEmptyArray(type).ValueOrDie())),
            Status::Invalid("cannot write ", path,
                            ": column 'deep': found more than 1024 levels, expected at most 1024"));
}

TEST(SinkBatch, MayHaveATimeOf24Hours) {
  const TemporaryFolder folder;
  const auto batch = batch_of({{"t", ::arrow::time32(::arrow::TimeUnit::SECOND), "[86400]"}});
  EXPECT_EQ(write_batches(folder.path("a.arrow"), {batch}), Status::OK());
}

}  // namespace
}  // namespace numera::testing
