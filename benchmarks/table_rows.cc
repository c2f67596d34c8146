// Tables of many columns both ways, and the tables of real files.

#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/table.h>
#include <parquet/arrow/reader.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

hxArrayPtr table_to_host(const TablePtr& table) { return core::to_numera(table).ValueOrDie(); }

TablePtr table_to_arrow(const hxArrayPtr& encoded) {
  return core::to_arrow_table(encoded.get()).ValueOrDie();
}

/// Copies each column with its own limit.
std::vector<Blocks> leaves_of_columns(const TablePtr& table) {
  std::vector<Blocks> columns;
  for (const ColumnPtr& column : table->columns()) columns.push_back(leaves(column));
  return columns;
}

/// The base row has the name from the performance targets.
std::string table_name(const std::string& direction, std::int64_t columns) {
  return columns == 1000 ? direction + "/table_1000_columns"
                         : direction + "/table/columns=" + std::to_string(columns);
}

TablePtr table_of_text(std::int64_t length) {
  constexpr int kColumns = 20;
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector columns;
  for (int i = 0; i < kColumns; ++i) {
    fields.push_back(::arrow::field("column " + std::to_string(i), ::arrow::utf8()));
    columns.push_back((i % 2 == 0 ? ascii_texts : mixed_texts)(0, length, Nulls::None));
  }
  return ::arrow::Table::Make(::arrow::schema(std::move(fields)), std::move(columns));
}

TablePtr parquet_table(const std::shared_ptr<::arrow::io::RandomAccessFile>& file) {
  auto reader = ::parquet::arrow::OpenFile(file, ::arrow::default_memory_pool()).ValueOrDie();
  return reader->ReadTable().ValueOrDie();
}

TablePtr ipc_table(const std::shared_ptr<::arrow::io::RandomAccessFile>& file) {
  const auto reader = ::arrow::ipc::RecordBatchFileReader::Open(file).ValueOrDie();
  return reader->ToTable().ValueOrDie();
}

/// A table of examples/data after the intake, as the program passes it to the core.
TablePtr example_table(const std::string& name) {
  const auto file = ::arrow::io::ReadableFile::Open(NUMERA_EXAMPLE_DATA "/" + name).ValueOrDie();
  const TablePtr table = name.ends_with(".arrow") ? ipc_table(file) : parquet_table(file);
  return numera::extras::take_in(table, {.cast = true}).ValueOrDie().value;
}

}  // namespace

void add_table_rows(std::vector<Row>& rows, bool quick) {
  for (const std::int64_t columns : {1000, 1, 20, 100, 10'000}) {
    if (quick && columns > 1000) continue;
    const auto make = [=] { return make_table(columns); };
    const std::int64_t elements = columns * kTableRows;
    rows.push_back(
        make_row(table_name("to_host", columns), elements, make, table_to_host, leaves_of_columns));
    rows.push_back(make_row(
        table_name("to_arrow", columns), elements, [=] { return table_to_host(make()); },
        table_to_arrow));
  }
}

void add_parallel_rows(std::vector<Row>& rows, bool quick) {
  constexpr size_t kThreads = 2;
  const std::int64_t length = quick ? 2'500 : 250'000;
  rows.push_back(make_row(
      "parallel/table_of_text", 0, [=] { return table_of_text(length); },
      [](const TablePtr& table) {
        return numera::extras::parallel_to_numera(table, kThreads).ValueOrDie();
      },
      table_to_host));
  rows.back().by_clock = true;
}

void add_file_rows(std::vector<Row>& rows) {
  for (const std::string name :
       {"penguins.parquet", "flights.parquet", "cities.parquet", "countries.arrow"}) {
    rows.push_back(make_row(
        "files/" + name, 0, [=] { return example_table(name); }, table_to_host, leaves_of_columns));
  }
}

}  // namespace numera::benchmarks
