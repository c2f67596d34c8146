#include <arrow/api.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <gtest/gtest.h>
#include <parquet/arrow/reader.h>

#include <memory>
#include <string>

#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "tests/extras/encode/same_values.h"

namespace numera::testing {
namespace {

using TableResult = ::arrow::Result<std::shared_ptr<::arrow::Table>>;

TableResult read_file(const std::string& name) {
  const std::string path = std::string(NUMERA_SOURCE_DIR) + "/examples/data/" + name;
  ARROW_ASSIGN_OR_RAISE(auto file, ::arrow::io::ReadableFile::Open(path));
  if (name.ends_with(".arrow")) {
    ARROW_ASSIGN_OR_RAISE(auto reader, ::arrow::ipc::RecordBatchFileReader::Open(file));
    return reader->ToTable();
  }
  ARROW_ASSIGN_OR_RAISE(auto reader,
                        parquet::arrow::OpenFile(file, ::arrow::default_memory_pool()));
  // Reads each row group by itself, so that columns have several chunks.
  std::vector<std::shared_ptr<::arrow::Table>> groups;
  for (int group = 0; group < reader->num_row_groups(); ++group) {
    ARROW_ASSIGN_OR_RAISE(auto table, reader->ReadRowGroup(group));
    groups.push_back(std::move(table));
  }
  return ::arrow::ConcatenateTables(groups);
}

TEST(EncodeRealFiles, EveryColumnOfEveryFileReturns) {
  for (const char* name :
       {"penguins.parquet", "flights.parquet", "cities.parquet", "countries.arrow"}) {
    SCOPED_TRACE(name);
    const auto table = read_file(name).ValueOrDie();
    const hxArrayPtr written = io::arrow::core::to_numera(table).ValueOrDie();
    const hxArrayPtr readable = extras::make_readable(written.get()).ValueOrDie();
    const auto back = io::arrow::core::to_arrow_table(readable.get()).ValueOrDie();
    EXPECT_EQ(back->num_rows(), table->num_rows());
    EXPECT_EQ(back->ColumnNames(), table->ColumnNames());
    for (int i = 0; i < table->num_columns(); ++i) {
      SCOPED_TRACE(table->field(i)->ToString());
      const ::arrow::Array& column = *back->column(i)->chunk(0);
      EXPECT_TRUE(column.ValidateFull().ok());
      EXPECT_TRUE(extras::returns_as(*table->column(i)->type(), *column.type()));
      EXPECT_TRUE(SameValues(*table->column(i), column));
    }
  }
}

}  // namespace
}  // namespace numera::testing
