#include <arrow/api.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "numera/core/util/table_error.h"
#include "numera/extras/encode/encode.h"
#include "tests/support/envelopes.h"

namespace numera::testing {
namespace {

using extras::make_readable;
using io::arrow::core::util::TableErrorCode;
using io::arrow::core::util::TableErrorStatusDetail;

/// Two columns of doubles. The second has the given data.
hxArrayPtr columns_with(hxArrayPtr data) {
  return StructColumn(kColumnFields,
                      {WrittenNumbers<double>({1}), WrittenArray("double", 1, std::move(data))});
}

struct RefusedTable {
  hxArrayPtr value;
  ::arrow::Status status;
};

TEST(EncodeRefusedTables, SayWhatIsWrongWithAllOfThem) {
  const RefusedTable rows[] = {
      {TableEnvelope(Names({"a"}), columns_with(Scalar(1.0))),
       ::arrow::Status::Invalid(".Names: found 1 names, expected 2, one for each column.")},
      {TableEnvelope(Strings({u"a", u"b"}), columns_with(Scalar(1.0))),
       ::arrow::Status::TypeError(
           ".Names: found a 2-by-1 string array, expected a cell of names.")},
      {TableEnvelope(Names({"a", "b"}), Scalar(1.0)),
       ::arrow::Status::TypeError(
           ".Columns: found a 1-by-1 double array, expected a struct array.")},
  };
  for (const RefusedTable& row : rows)
    EXPECT_EQ(make_readable(row.value.get()).status(), row.status);
}

struct RefusedColumn {
  hxArrayPtr table;
  ::arrow::Status status;
  std::string name;
};

TEST(EncodeRefusedTables, NameTheColumnThatIsWrong) {
  const RefusedColumn rows[] = {
      {TableEnvelope(Names({"a", "b"}), columns_with(Complex<double>({1, 1}, {{1, 2}}))),
       ::arrow::Status::TypeError(
           "Column 'b' (index 1).Data: found a complex 1-by-1 double array, expected "
           "real numbers that are not sparse."),
       "b"},
      {TableEnvelope(Names({"a", "b"}), columns_with(Empty())),
       ::arrow::Status::TypeError("Column 'b' (index 1).Data: found no value, expected one."), "b"},
      {TableEnvelope(Names({"a", "b"}), columns_with(Char(u"\xDC00"))),
       ::arrow::Status::Invalid("Column 'b' (index 1).Data: found text that is not UTF-16 in "
                                "element 0 (Unpaired low surrogate "
                                "at code unit 0.), expected paired surrogates."),
       "b"},
      {TableEnvelope(Names({"a", "b"}), columns_with(Column<double>({1, 2}))),
       ::arrow::Status::Invalid(
           "Column 'b' (index 1): found 2 elements, expected 1, as in the first column."),
       "b"},
      {TableEnvelope(Cell({1, 2}, {Char("a"), Scalar(1.0)}), columns_with(Scalar(1.0))),
       ::arrow::Status::TypeError(
           "Column '' (index 1): .Names{1}: found a 1-by-1 double array, expected a char array."),
       ""},
  };
  for (const RefusedColumn& row : rows) {
    SCOPED_TRACE(row.status.message());
    const ::arrow::Status status = make_readable(row.table.get()).status();
    EXPECT_EQ(status.WithDetail(nullptr), row.status);
    const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
    ASSERT_NE(detail, nullptr);
    EXPECT_EQ(detail->column_name(), row.name);
    EXPECT_EQ(detail->column_index(), 1);
    EXPECT_EQ(detail->error_code(),
              row.status.IsTypeError() ? TableErrorCode::TypeError : TableErrorCode::Internal);
  }
}

TEST(EncodeRefusedTables, NameTheFirstRefusedColumnOnAnyNumberOfThreads) {
  const auto refused = [] { return Envelope("double", Complex<double>({1, 1}, {{1, 2}})); };
  const hxArrayPtr table = TableEnvelope(
      {"a", "b", "c", "d"}, {Numbers<double>({1}), refused(), Numbers<double>({1}), refused()});
  for (const size_t threads : {0U, 1U, 2U, 4U}) {
    const ::arrow::Status status = make_readable(table.get(), threads).status();
    const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
    ASSERT_NE(detail, nullptr) << status;
    EXPECT_EQ(detail->column_name(), "b");
  }
}

}  // namespace
}  // namespace numera::testing
