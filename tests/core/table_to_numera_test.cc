#include <arrow/array/array_primitive.h>
#include <gtest/gtest.h>

#include <string>

#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "numera/host/text_codec.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/only_read.h"
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

std::shared_ptr<Table> table_of(const std::vector<std::string>& names,
                                std::vector<std::shared_ptr<::arrow::ChunkedArray>> columns) {
  ::arrow::FieldVector fields;
  for (size_t i = 0; i < names.size(); ++i) {
    fields.push_back(
        ::arrow::field(names[i], columns[i] == nullptr ? ::arrow::null() : columns[i]->type()));
  }
  const std::int64_t rows = columns.empty() ? 0 : columns[0]->length();
  return Table::Make(::arrow::schema(std::move(fields)), std::move(columns), rows);
}

std::shared_ptr<Table> small_table() {
  return table_of({"x", "y"}, {ArrowChunks(::arrow::int32(), {"[1, 2]", "[3]"}),
                               ArrowChunks(::arrow::boolean(), {"[true, false, true]"})});
}

TEST(TableToNumera, WritesAnEnvelope) {
  const hxArrayPtr expected =
      TableEnvelope({"x", "y"}, {WrittenNumbers<std::int32_t>({1, 2, 3}),
                                 WrittenArray("logical", 3, WrittenBitmap(3, {0x05}))});
  EXPECT_TRUE(SameHostValue(to_numera(small_table()).ValueOrDie().get(), expected.get()));
}

TEST(TableToNumera, OrdersTheFieldsOfTheTableAndOfItsColumns) {
  const hxArrayPtr envelope = to_numera(small_table()).ValueOrDie();
  const char* of_table[] = {"ArrowType", "Columns", "Names"};
  const char* of_columns[] = {"ArrowType", "Type", "Data", "Valid"};
  for (int i = 0; i < 3; ++i) EXPECT_STREQ(hxGetFieldName(envelope.get(), i), of_table[i]);
  const hxArray* columns = hxGetField(envelope.get(), 0, "Columns");
  for (int i = 0; i < 4; ++i) EXPECT_STREQ(hxGetFieldName(columns, i), of_columns[i]);
}

TEST(TableToNumera, WritesATableWithoutColumns) {
  const hxArrayPtr expected = TableEnvelope(Names({}), StructColumn(kColumnFields, {}));
  const hxArrayPtr actual = to_numera(table_of({}, {})).ValueOrDie();
  EXPECT_TRUE(SameHostValue(actual.get(), expected.get()));
  const auto back = to_arrow_table(actual.get()).ValueOrDie();
  EXPECT_TRUE(back->schema()->Equals(*::arrow::schema({}), /*check_metadata=*/true));
}

TEST(TableToNumera, ConvertsNamesFromUtf8) {
  const auto table = table_of({"\xC3\xA9\xF0\x9F\x98\x80", ""},
                              {ArrowChunks(::arrow::int8(), {}), ArrowChunks(::arrow::int8(), {})});
  const hxArrayPtr envelope = to_numera(table).ValueOrDie();
  const hxArrayPtr expected = Cell({1, 2}, {Char(u"\u00E9\U0001F600"), Char("")});
  EXPECT_TRUE(SameHostValue(hxGetField(envelope.get(), 0, "Names"), expected.get()));
}

TEST(TableToNumera, LetsTheCodecRefuseANameThatIsNotUtf8) {
  const size_t live = host::memory::LiveArrays();
  const auto table = table_of({"a\xFF"}, {ArrowChunks(::arrow::int8(), {})});
  EXPECT_THROW(static_cast<void>(to_numera(table)), hxCodecError);
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

TEST(TableToNumera, LeavesMetadataAside) {
  const auto metadata = ::arrow::key_value_metadata({"key"}, {"value"});
  const auto plain = small_table();
  const auto table = Table::Make(
      ::arrow::schema({plain->field(0)->WithMetadata(metadata), plain->field(1)}, metadata),
      plain->columns(), 3);
  EXPECT_TRUE(
      SameHostValue(to_numera(table).ValueOrDie().get(), to_numera(plain).ValueOrDie().get()));
}

TEST(TableToNumera, SharesNothingBetweenTheColumnsAndAnythingElse) {
  const hxArrayPtr envelope = to_numera(small_table()).ValueOrDie();
  const hxArray* columns = hxGetField(envelope.get(), 0, "Columns");
  EXPECT_FALSE(hxIsDataShared(hxGetField(columns, 0, "Data")));
}

TEST(TableToNumera, RefusesNull) {
  EXPECT_EQ(to_numera(std::shared_ptr<Table>()).status(),
            Status::Invalid("Received null pointer in arrow::Table conversion"));
}

TEST(TableToNumera, RefusesATableWithoutASchema) {
  const auto table = Table::Make(nullptr, std::vector<std::shared_ptr<::arrow::ChunkedArray>>(), 0);
  EXPECT_EQ(to_numera(table).status(), Status::Invalid("Table: found no schema, expected one."));
}

TEST(TableToNumera, RefusesAnotherNumberOfColumnsThanFields) {
  const auto column = ArrowChunks(::arrow::int8(), {"[1]"});
  const auto two_fields =
      ::arrow::schema({::arrow::field("a", ::arrow::int8()), ::arrow::field("b", ::arrow::int8())});
  EXPECT_EQ(
      to_numera(Table::Make(two_fields, {column}, 1)).status(),
      Status::Invalid("Table: found 1 columns, expected 2, one for each field of the schema."));
  EXPECT_EQ(
      to_numera(Table::Make(two_fields, {column, column, column}, 1)).status(),
      Status::Invalid("Table: found 3 columns, expected 2, one for each field of the schema."));
}

struct NamedFailure {
  const char* what;
  std::shared_ptr<::arrow::ChunkedArray> column;
  Status status;
  util::TableErrorCode code;
  const char* type_id;
};

TEST(TableToNumera, NamesTheColumnThatFails) {
  const auto short_array = std::make_shared<::arrow::Int8Array>(2, nullptr);
  const NamedFailure cases[] = {
      {"a type error", ArrowChunks(::arrow::fixed_size_list(::arrow::int8(), 2), {}),
       Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: "
                         "fixed_size_list<item: int8>[2]"),
       util::TableErrorCode::TypeError, "TypeError"},
      {"another code", std::make_shared<::arrow::ChunkedArray>(short_array),
       Status::Invalid("Values buffer: found 0 bytes, expected enough for 2 elements."),
       util::TableErrorCode::Internal, "Internal"},
      {"no column", nullptr, Status::Invalid("Received null pointer in arrow::Column conversion"),
       util::TableErrorCode::Internal, "Internal"},
  };
  const auto good = ArrowChunks(::arrow::int8(), {"[1, 2]"});
  for (const NamedFailure& one : cases) {
    SCOPED_TRACE(one.what);
    const Status status = ToNumeraOnlyReads(table_of({"a", "b",
                                                      "Gr\xC3\xB6\xC3\x9F"
                                                      "e",
                                                      "d"},
                                                     {good, good, one.column, one.column}))
                              .status();
    EXPECT_EQ(status.code(), one.status.code());
    EXPECT_EQ(status.message(), one.status.message());
    const auto* detail = dynamic_cast<const util::TableErrorStatusDetail*>(status.detail().get());
    ASSERT_NE(detail, nullptr);
    EXPECT_EQ(detail->column_index(), 2);
    EXPECT_EQ(detail->column_name(),
              "Gr\xC3\xB6\xC3\x9F"
              "e");
    EXPECT_EQ(detail->error_code(), one.code);
    EXPECT_STREQ(detail->type_id(), one.type_id);
  }
}

TEST(TableToNumera, LeavesNothingBehindOfATableThatFails) {
  const size_t live = host::memory::LiveArrays();
  ASSERT_FALSE(to_numera(table_of({"a", "b"}, {ArrowChunks(::arrow::int8(), {"[1]"}),
                                               ArrowChunks(::arrow::float16(), {})}))
                   .ok());
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

std::shared_ptr<Table> many_columns(size_t count) {
  std::vector<std::string> names;
  std::vector<std::shared_ptr<::arrow::ChunkedArray>> columns;
  for (size_t i = 0; i < count; ++i) {
    names.push_back("c" + std::to_string(i));
    columns.push_back(ArrowChunks(::arrow::int32(), {"[" + std::to_string(i) + "]"}));
  }
  return table_of(names, std::move(columns));
}

TEST(TableToNumera, ConvertsTenThousandColumns) {
  constexpr size_t kCount = 10'000;
  const auto table = many_columns(kCount);
  Reset();
  const hxArrayPtr envelope = to_numera(table).ValueOrDie();
  EXPECT_EQ(Calls("hxThrowIfInterruptPending"), kCount);
  const hxArray* names = hxGetField(envelope.get(), 0, "Names");
  const hxArray* columns = hxGetField(envelope.get(), 0, "Columns");
  ASSERT_EQ(hxGetNumberOfElements(columns), kCount);
  for (size_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(hxGetString(hxGetCell(names, i)), "c" + std::to_string(i));
    const auto* data = static_cast<const std::int32_t*>(hxGetData(hxGetField(columns, i, "Data")));
    ASSERT_EQ(*data, static_cast<std::int32_t>(i));
  }
}

class TableToNumeraInterrupts : public ::testing::Test {
 protected:
  ~TableToNumeraInterrupts() override {
    host::memory::SetInterruptCheck({});
    host::memory::ClearInterrupt();
  }
};

TEST_F(TableToNumeraInterrupts, AreCheckedOnceBeforeEachColumn) {
  for (const size_t count : {size_t{0}, size_t{1}, size_t{3}}) {
    const auto table = many_columns(count);
    Reset();
    ASSERT_TRUE(to_numera(table).ok());
    EXPECT_EQ(Calls("hxThrowIfInterruptPending"), count);
  }
}

TEST_F(TableToNumeraInterrupts, AreNotCheckedOutsideTables) {
  Reset();
  ASSERT_TRUE(to_numera(ArrowChunks(::arrow::int8(), {"[1]", "[2]"})).ok());
  EXPECT_EQ(Calls("hxThrowIfInterruptPending"), 0U);
}

TEST_F(TableToNumeraInterrupts, StopTheConversionBeforeTheNextColumn) {
  const size_t live = host::memory::LiveArrays();
  const auto table = many_columns(3);
  std::vector<size_t> columns_made;
  host::memory::SetInterruptCheck([&columns_made] {
    // The table consists of two structs. Each of these columns adds one, for its validity.
    columns_made.push_back(Calls("hxCreateStructArray") - 2);
    if (columns_made.size() == 2) host::memory::RequestInterrupt();
  });
  Reset();
  EXPECT_THROW(static_cast<void>(to_numera(table)), host::memory::InterruptException);
  EXPECT_EQ(columns_made, (std::vector<size_t>{0, 1}));
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

TEST_F(TableToNumeraInterrupts, OfAnOwnCheckPassThrough) {
  host::memory::SetInterruptCheck([] { throw std::string("stopped"); });
  EXPECT_THROW(static_cast<void>(to_numera(small_table())), std::string);
}

TEST(Table, PassesThroughBothDoorsUnchanged) {
  const char* const rows[] = {"[1, null]", "[]", "[3, 4, null]"};
  const auto numbers = [&rows](std::shared_ptr<::arrow::DataType> type) {
    return ArrowChunks(type, {rows[0], rows[1], rows[2]});
  };
  const auto table =
      table_of({"double", "single", "int8", "uint8", "int16", "uint16", "int32", "uint32", "int64",
                "uint64", "logical"},
               {numbers(::arrow::float64()), numbers(::arrow::float32()), numbers(::arrow::int8()),
                numbers(::arrow::uint8()), numbers(::arrow::int16()), numbers(::arrow::uint16()),
                numbers(::arrow::int32()), numbers(::arrow::uint32()), numbers(::arrow::int64()),
                numbers(::arrow::uint64()),
                ArrowChunks(::arrow::boolean(), {"[true, null]", "[false, null, true]"})});
  const hxArrayPtr encoded = to_numera(table).ValueOrDie();
  const auto back = to_arrow_table(encoded.get()).ValueOrDie();
  EXPECT_TRUE(SameTable(*back, *table));
}

TEST(TableToNumera, LeavesNothingBehindWhereverItFails) {
  const auto table = small_table();
  FailWriting(table);
}

}  // namespace
}  // namespace numera::io::arrow::core
