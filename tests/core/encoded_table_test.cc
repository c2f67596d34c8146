#include "numera/core/encoded_table.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <utility>

#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "numera/host/text_codec.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;
using ::arrow::Table;

std::shared_ptr<Table> number_and_bits() {
  return Table::Make(::arrow::schema({::arrow::field("x", ::arrow::int32()),
                                      ::arrow::field("y", ::arrow::boolean())}),
                     {ArrowChunks(::arrow::int32(), {"[1, 2]", "[3]"}),
                      ArrowChunks(::arrow::boolean(), {"[true, false, true]"})},
                     3);
}

hxArrayPtr expected_table() {
  return TableEnvelope({"x", "y"}, {WrittenNumbers<std::int32_t>({1, 2, 3}),
                                    WrittenArray("logical", 3, WrittenBitmap(3, {0x05}))});
}

TEST(EncodedTable, BeginsWithNamesAndEmptyColumns) {
  const EncodedTable begun = begin_encoded_table(number_and_bits().get()).ValueOrDie();
  const hxArrayPtr expected =
      TableEnvelope(Names({"x", "y"}), hxCreateStructArray(Dims{2, 1}, kColumnFields));
  EXPECT_TRUE(SameHostValue(begun.envelope.get(), expected.get()));
  EXPECT_EQ(begun.columns, hxGetField(begun.envelope.get(), 0, "Columns"));
}

TEST(EncodedTable, TakesColumnsInAnyOrder) {
  const auto table = number_and_bits();
  EncodedTable encoded = begin_encoded_table(table.get()).ValueOrDie();
  for (const int i : {1, 0}) put_column(encoded, i, encode_column(*table, i).ValueOrDie());
  EXPECT_TRUE(SameHostValue(encoded.envelope.get(), expected_table().get()));
}

TEST(EncodedTable, TakesColumnsOfOtherThreads) {
  const auto table = number_and_bits();
  EncodedColumn columns[2];
  {
    std::jthread other([&] { columns[0] = encode_column(*table, 0).ValueOrDie(); });
    columns[1] = encode_column(*table, 1).ValueOrDie();
  }
  EncodedTable encoded = begin_encoded_table(table.get()).ValueOrDie();
  for (const int i : {0, 1}) put_column(encoded, i, std::move(columns[i]));
  EXPECT_TRUE(SameHostValue(encoded.envelope.get(), expected_table().get()));
}

TEST(EncodedTable, MovesAColumnWithoutCopyingIt) {
  const auto table = number_and_bits();
  EncodedTable encoded = begin_encoded_table(table.get()).ValueOrDie();
  EncodedColumn column = encode_column(*table, 0).ValueOrDie();
  const hxArray* const data = column.data.get();
  Reset();
  put_column(encoded, 0, std::move(column));
  EXPECT_EQ(hxGetField(encoded.columns, 0, "Data"), data);
  EXPECT_EQ(Calls("hxSharedCopy"), 0U);
}

TEST(EncodedTable, RefusesNull) {
  EXPECT_EQ(begin_encoded_table(nullptr).status(),
            Status::Invalid("Received null pointer in arrow::Table conversion"));
}

TEST(EncodedTable, RefusesANameThatIsNotUtf8) {
  const size_t live = host::memory::LiveArrays();
  const auto table = Table::Make(::arrow::schema({::arrow::field("a\xFF", ::arrow::int8())}),
                                 {ArrowChunks(::arrow::int8(), {})}, 0);
  EXPECT_THROW(static_cast<void>(begin_encoded_table(table.get())), hxCodecError);
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

TEST(EncodedTable, NamesTheColumnThatFails) {
  const size_t live = host::memory::LiveArrays();
  const auto table =
      Table::Make(::arrow::schema({::arrow::field("good", ::arrow::int8()),
                                   ::arrow::field("half", ::arrow::float16())}),
                  {ArrowChunks(::arrow::int8(), {}), ArrowChunks(::arrow::float16(), {})}, 0);
  const Status status = encode_column(*table, 1).status();
  EXPECT_EQ(status.code(), ::arrow::StatusCode::TypeError);
  EXPECT_EQ(status.message(), "Unsupported type for Arrrow-NUMERA conversion: halffloat");
  const auto* detail = dynamic_cast<const util::TableErrorStatusDetail*>(status.detail().get());
  ASSERT_NE(detail, nullptr);
  EXPECT_EQ(detail->column_name(), "half");
  EXPECT_EQ(detail->column_index(), 1);
  EXPECT_EQ(detail->error_code(), util::TableErrorCode::TypeError);
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

}  // namespace
}  // namespace numera::io::arrow::core
