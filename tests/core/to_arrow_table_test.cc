#include "numera/core/to_arrow_table.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/recording_host.h"
#include "tests/support/thrown.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

/// Of the conversion of two columns. Beside the lookups, each column is one check for interrupts,
/// and the class of each field is checked in the first column. Measured in November 2026: 31.
constexpr size_t kLeastCalls = 30;

hxArrayPtr two_names() { return Names({"x", "y"}); }

hxArrayPtr two_columns() {
  return StructColumn(kColumnFields,
                      {Numbers<double>({1, 2}, {2}), Envelope("logical", WrittenBitmap(2, {1}))});
}

Status converted(const hxArrayPtr& encoded) { return to_arrow_table(encoded.get()).status(); }

template <class Exception>
std::string message_thrown(const hxArrayPtr& encoded) {
  return MessageThrown<Exception>([&encoded] { static_cast<void>(converted(encoded)); });
}

TEST(ToArrowTable, ConvertsEveryColumn) {
  const hxArrayPtr encoded = TableEnvelope(two_names(), two_columns());
  const auto table = to_arrow_table(encoded.get()).ValueOrDie();
  const auto expected =
      ::arrow::Table::Make(::arrow::schema({::arrow::field("x", ::arrow::float64()),
                                            ::arrow::field("y", ::arrow::boolean())}),
                           {ArrowArray(::arrow::float64(), "[null, 2]"),
                            ArrowArray(::arrow::boolean(), "[true, false]")});
  EXPECT_TRUE(SameTable(*table, *expected));
  EXPECT_EQ(table->num_rows(), 2);
  EXPECT_TRUE(table->Validate().ok());
}

TEST(ToArrowTable, MakesNullableFieldsWithoutMetadata) {
  const hxArrayPtr encoded = TableEnvelope(two_names(), two_columns());
  const auto schema = to_arrow_table(encoded.get()).ValueOrDie()->schema();
  EXPECT_EQ(schema->metadata(), nullptr);
  for (const auto& field : schema->fields()) {
    EXPECT_TRUE(field->nullable());
    EXPECT_EQ(field->metadata(), nullptr);
  }
}

TEST(ToArrowTable, BorrowsTheMemoryOfTheHost) {
  const hxArrayPtr encoded = TableEnvelope(two_names(), two_columns());
  const auto table = to_arrow_table(encoded.get()).ValueOrDie();
  const hxArray* columns = hxGetField(encoded.get(), 0, "Columns");
  EXPECT_EQ(table->column(0)->chunk(0)->data()->buffers[1]->data(),
            hxGetData(hxGetField(columns, 0, "Data")));
}

TEST(ToArrowTable, MakesAnEmptySchemaOfNoColumns) {
  const hxArrayPtr encoded = TableEnvelope(Names({}), StructColumn(kColumnFields, {}));
  const auto table = to_arrow_table(encoded.get()).ValueOrDie();
  EXPECT_EQ(table->num_columns(), 0);
  EXPECT_EQ(table->num_rows(), 0);
  EXPECT_EQ(table->schema()->num_fields(), 0);
}

TEST(ToArrowTable, DoesNotCompareTheTextOfTheKind) {
  for (const char* kind : {"array", "", "Table"}) {
    const hxArrayPtr encoded = TableOf(Char(kind), two_names(), two_columns());
    EXPECT_EQ(converted(encoded), Status::OK());
  }
}

TEST(ToArrowTable, TakesAnObjectAsTheTableButNotAsItsColumns) {
  const hxArrayPtr encoded = ObjectArray("table", {1, 1}, {"ArrowType", "Names", "Columns"},
                                         {{Char("table"), two_names(), two_columns()}});
  EXPECT_EQ(converted(encoded), Status::OK());
  const hxArrayPtr columns =
      TableEnvelope(Names({}), ObjectArray("columns", {0, 1}, kColumnFields, {}));
  EXPECT_EQ(converted(columns),
            Status::TypeError("Incorrect type 'columns' for struct array field 'Columns'"));
}

TEST(ToArrowTable, GivesTheEmptyNameForACellThatIsNoText) {
  const hxArrayPtr encoded = TableEnvelope(Cell({Scalar(1.0), Empty()}), two_columns());
  const auto table = to_arrow_table(encoded.get()).ValueOrDie();
  EXPECT_EQ(table->ColumnNames(), (std::vector<std::string>{"", ""}));
}

TEST(ToArrowTable, KeepsNamesBeyondAsciiAndTwiceTheSame) {
  const hxArrayPtr encoded =
      TableEnvelope(Cell({Char(u"Stra\u00DFe"), Char(u"Stra\u00DFe")}), two_columns());
  EXPECT_EQ(to_arrow_table(encoded.get()).ValueOrDie()->ColumnNames(),
            (std::vector<std::string>{"Stra\xC3\x9F"
                                      "e",
                                      "Stra\xC3\x9F"
                                      "e"}));
}

TEST(ToArrowTable, IgnoresNamesBeyondTheColumns) {
  const hxArrayPtr encoded = TableEnvelope(Names({"x", "y", "z"}), two_columns());
  EXPECT_EQ(to_arrow_table(encoded.get()).ValueOrDie()->ColumnNames(),
            (std::vector<std::string>{"x", "y"}));
}

TEST(ToArrowTable, CountsTheColumnsByTheFirstDimension) {
  const auto column = [] {
    return StructArray({1, 2}, kColumnFields,
                       {{Char("array"), Char("double"), Scalar(1.0), BufferEnvelope({})},
                        {Char("array"), Char("double"), Scalar(2.0), BufferEnvelope({})}});
  };
  EXPECT_EQ(to_arrow_table(TableEnvelope(two_names(), column()).get()).ValueOrDie()->num_columns(),
            1);
}

TEST(ToArrowTable, DoesNotCompareTheLengthsOfColumns) {
  const hxArrayPtr encoded =
      TableEnvelope({"x", "y"}, {Numbers<double>({1}), Numbers<double>({1, 2, 3})});
  const auto table = to_arrow_table(encoded.get()).ValueOrDie();
  EXPECT_EQ(table->num_rows(), 1);
  EXPECT_EQ(table->column(1)->length(), 3);
}

TEST(ToArrowTable, ReportsTheFirstFieldThatFails) {
  struct Case {
    hxArrayPtr encoded;
    const char* message;
  };
  const Case cases[] = {
      {Scalar(1.0), "Struct array required for input"},
      {nullptr, "Struct array required for input"},
      {TableOf(Empty(), Empty(), Empty()), "Missing field 'ArrowType' in input struct array"},
      {TableOf(Strings({u"table"}), Empty(), Empty()),
       "Incorrect type 'string' for struct array field 'ArrowType'"},
      {TableOf(Char(""), Empty(), Empty()), "Missing field 'Names' in input struct array"},
      {TableOf(Char(""), Strings({u"x"}), Empty()),
       "Incorrect type 'string' for struct array field 'Names'"},
      {TableOf(Char(""), two_names(), Empty()), "Missing field 'Columns' in input struct array"},
      {TableOf(Char(""), two_names(), Cell({})),
       "Incorrect type 'cell' for struct array field 'Columns'"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    EXPECT_EQ(converted(one.encoded), Status::TypeError(one.message));
  }
}

TEST(ToArrowTable, StopsAtTheFirstFieldThatFails) {
  const hxArrayPtr encoded = Struct({{"ArrowType", Empty()}});
  EXPECT_EQ(converted(encoded),
            Status::TypeError("Missing field 'ArrowType' in input struct array"));
}

TEST(ToArrowTable, ThrowsWhereTheHostDoes) {
  EXPECT_EQ(message_thrown<std::invalid_argument>(
                Struct({{"ArrowType", Char("table")}, {"Names", two_names()}})),
            "Wrong field name.");
  EXPECT_EQ(
      message_thrown<std::out_of_range>(StructArray({0, 1}, {"ArrowType", "Names", "Columns"}, {})),
      "Struct index is out of range.");
  EXPECT_EQ(message_thrown<std::out_of_range>(TableEnvelope(Names({"x"}), two_columns())),
            "Cell index is out of range.");
  for (const size_t rows : {size_t{2}, size_t{1} << 62}) {
    EXPECT_EQ(message_thrown<std::out_of_range>(
                  TableEnvelope(two_names(), StructArray({rows, 0}, kColumnFields, {}))),
              "Struct index is out of range.");
  }
}

TEST(ToArrowTable, PassesOnTheStatusOfAColumnUnchanged) {
  const hxArrayPtr encoded = TableEnvelope(
      {"x", "y"}, {Numbers<double>({1}), KindEnvelope("table", "double", Scalar(1.0))});
  const Status status = converted(encoded);
  EXPECT_EQ(status, Status::TypeError("Expected 'array' input type, received 'table' instead."));
  EXPECT_EQ(status.detail(), nullptr);
}

TEST(ToArrowTable, AnswersEmptySlotsOfALaterColumnWithAStatus) {
  const hxArrayPtr encoded = TableEnvelope(
      {"x", "y"}, {Numbers<double>({1}), EnvelopeOf(Empty(), Empty(), Empty(), Empty())});
  EXPECT_EQ(converted(encoded),
            Status::TypeError("Expected 'array' input type, received '' instead."));
}

TEST(ToArrowTable, RefusesAValidThatArrowWouldReadPast) {
  const auto with_data = [](hxArrayPtr type, hxArrayPtr data) {
    return TableEnvelope({"x"}, {EnvelopeOf(Char("array"), std::move(type), BufferEnvelope({0xFF}),
                                            std::move(data))});
  };
  EXPECT_EQ(converted(with_data(Char("double"), Column<double>(std::vector<double>(9)))),
            Status::Invalid("Field 'Valid': found 1 bytes, expected enough for 9 elements."));
  EXPECT_EQ(converted(with_data(Char("double"), Column<double>(std::vector<double>(8)))),
            Status::OK());
  EXPECT_EQ(
      converted(with_data(Char("logical"), WrittenBitmap(-1, {1}))),
      Status::Invalid("Array: found offset 0 and length -1, expected neither negative and their "
                      "sum within 64 bits."));
}

/// Each column holds its own index.
hxArrayPtr many_host_columns(size_t count) {
  std::vector<hxArrayPtr> columns;
  for (size_t i = 0; i < count; ++i) columns.push_back(Numbers<double>({static_cast<double>(i)}));
  return StructColumn(kColumnFields, columns);
}

hxArrayPtr many_names(size_t count) {
  std::vector<std::string> names;
  for (size_t i = 0; i < count; ++i) names.push_back("c" + std::to_string(i));
  return Names(names);
}

TEST(ToArrowTable, ConvertsTenThousandColumns) {
  constexpr size_t kCount = 10'000;
  const hxArrayPtr encoded = TableEnvelope(many_names(kCount), many_host_columns(kCount));
  Reset();
  const auto table = to_arrow_table(encoded.get()).ValueOrDie();
  EXPECT_EQ(Calls("hxThrowIfInterruptPending"), kCount);
  ASSERT_EQ(table->num_columns(), 10'000);
  for (int i = 0; i < table->num_columns(); ++i) {
    ASSERT_EQ(table->field(i)->name(), "c" + std::to_string(i));
    ASSERT_EQ(table->column(i)->chunk(0)->GetScalar(0).ValueOrDie()->ToString(), std::to_string(i));
  }
}

class ToArrowTableInterrupts : public ::testing::Test {
 protected:
  ~ToArrowTableInterrupts() override {
    host::memory::SetInterruptCheck({});
    host::memory::ClearInterrupt();
  }
};

TEST_F(ToArrowTableInterrupts, AreCheckedOnceBeforeEachColumn) {
  for (const size_t count : {size_t{0}, size_t{1}, size_t{3}}) {
    const hxArrayPtr encoded = TableEnvelope(many_names(count), many_host_columns(count));
    Reset();
    ASSERT_TRUE(to_arrow_table(encoded.get()).ok());
    EXPECT_EQ(Calls("hxThrowIfInterruptPending"), count);
  }
}

TEST_F(ToArrowTableInterrupts, StopTheConversionBeforeTheNextColumn) {
  const hxArrayPtr encoded = TableEnvelope(many_names(3), many_host_columns(3));
  std::vector<size_t> names_read;
  host::memory::SetInterruptCheck([&names_read] {
    names_read.push_back(Calls("hxGetCellChecked"));
    if (names_read.size() == 2) host::memory::RequestInterrupt();
  });
  Reset();
  EXPECT_THROW(static_cast<void>(to_arrow_table(encoded.get())), host::memory::InterruptException);
  EXPECT_EQ(names_read, (std::vector<size_t>{0, 1}));
}

TEST(ToArrowTable, LeavesNothingBehindWhereverItFails) {
  const hxArrayPtr encoded = TableEnvelope(two_names(), two_columns());
  const FaultSites sites = FailEverywhere([&encoded] { return converted(encoded); });
  ExpectAtLeast(sites, SitesOfReading(encoded));
  EXPECT_GE(sites.calls, kLeastCalls);
}

}  // namespace
}  // namespace numera::io::arrow::core
