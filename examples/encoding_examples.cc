#include "examples/encoding_examples.h"

#include <arrow/api.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/json/from_string.h>
#include <parquet/arrow/reader.h>

#include <map>
#include <memory>
#include <utility>

#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/numera.h"

namespace {

namespace core = numera::io::arrow::core;
using Column = std::shared_ptr<::arrow::ChunkedArray>;

struct FileExample {
  const char* name;
  const char* file;
  const char* column;
  std::int64_t first_row;
  std::int64_t rows;
  bool show_read = false;  // the readable form differs from the written one
};

constexpr FileExample kFileExamples[] = {
    {"numbers", "penguins.parquet", "culmen_length_mm", 0, 4},
    {"logical", "penguins.parquet", "clutch_complete", 4, 9},
    {"date", "penguins.parquet", "egg_date", 0, 3},
    {"time of day", "flights.parquet", "departure_time", 0, 3},
    {"timestamp", "flights.parquet", "scheduled_departure", 0, 3},
    {"duration", "flights.parquet", "air_time", 0, 3},
    {"text", "penguins.parquet", "comments", 0, 4, true},
    {"bytes", "countries.arrow", "postal_code_pattern", 2, 2, true},
    {"fixed-size bytes", "countries.arrow", "iso3", 0, 2},
    {"categories", "penguins.parquet", "sex", 0, 4, true},
    {"list", "countries.arrow", "neighbours", 0, 3, true},
    {"struct", "cities.parquet", "location", 0, 2},
    {"map", "countries.arrow", "codes", 0, 2},
    {"null", "countries.arrow", "remarks", 0, 3},
};

struct MadeExample {
  const char* name;
  std::shared_ptr<::arrow::DataType> type;
  std::vector<const char*> chunks;  // JSON
};

std::vector<MadeExample> made_examples() {
  return {{"date64", ::arrow::date64(), {"[1194739200000]"}},
          {"large list of two chunks",
           ::arrow::large_list(::arrow::int8()),
           {"[[1, 2], null]", "[[3]]"}}};
}

::arrow::Result<std::shared_ptr<::arrow::Table>> read_table(const std::string& path) {
  ARROW_ASSIGN_OR_RAISE(auto file, ::arrow::io::ReadableFile::Open(path));
  if (path.ends_with(".arrow")) {
    ARROW_ASSIGN_OR_RAISE(auto reader, ::arrow::ipc::RecordBatchFileReader::Open(file));
    return reader->ToTable();
  }
  ARROW_ASSIGN_OR_RAISE(auto reader,
                        parquet::arrow::OpenFile(file, ::arrow::default_memory_pool()));
  return reader->ReadTable();
}

/// Copies rows into one new array without an offset. Its null slots hold zeros.
::arrow::Result<Column> fresh_rows(const ::arrow::ChunkedArray& column, std::int64_t first,
                                   std::int64_t count) {
  std::unique_ptr<::arrow::ArrayBuilder> builder;
  ARROW_RETURN_NOT_OK(
      ::arrow::MakeBuilderExactIndex(::arrow::default_memory_pool(), column.type(), &builder));
  for (std::int64_t row = first; row < first + count; ++row) {
    ARROW_ASSIGN_OR_RAISE(const auto value, column.GetScalar(row));
    ARROW_RETURN_NOT_OK(value->is_valid ? builder->AppendScalar(*value) : builder->AppendNull());
  }
  ARROW_ASSIGN_OR_RAISE(auto rows, builder->Finish());
  return std::make_shared<::arrow::ChunkedArray>(std::move(rows));
}

::arrow::Result<std::string> written_tree(const Column& column) {
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(column));
  return numera::extras::print(written.get());
}

::arrow::Result<std::string> read_tree(const Column& column) {
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(column));
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr readable, numera::extras::make_readable(written.get()));
  ARROW_ASSIGN_OR_RAISE(const auto array, core::to_arrow<::arrow::Array>(readable.get()));
  ARROW_RETURN_NOT_OK(array->ValidateFull());
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr again, core::to_numera(array));
  if (const auto difference = numera::extras::first_difference(
          hxGetField(written.get(), 0, "Valid"), hxGetField(again.get(), 0, "Valid"))) {
    return ::arrow::Status::Invalid("comes back with other nulls: ", *difference);
  }
  return numera::extras::print(readable.get());
}

/// A table of two rows and two columns.
::arrow::Result<std::string> table_tree(const ::arrow::Table& penguins) {
  ::arrow::FieldVector fields;
  ::arrow::ChunkedArrayVector columns;
  for (const char* name : {"sample_number", "body_mass_g"}) {
    ARROW_ASSIGN_OR_RAISE(columns.emplace_back(),
                          fresh_rows(*penguins.GetColumnByName(name), 2, 2));
    fields.push_back(::arrow::field(name, columns.back()->type()));
  }
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr table,
                        core::to_numera(::arrow::Table::Make(::arrow::schema(fields), columns)));
  return numera::extras::print(table.get());
}

::arrow::Result<std::string> buffer_tree() {
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr buffer,
                        core::to_numera(::arrow::Buffer::FromString("bytes")));
  return numera::extras::print(buffer.get());
}

}  // namespace

::arrow::Result<std::vector<Shown>> encoding_trees(const std::string& data_folder) {
  std::map<std::string, std::shared_ptr<::arrow::Table>> tables;
  std::vector<Shown> trees;
  const auto add = [&](const std::string& name, ::arrow::Result<std::string> text) {
    if (!text.ok()) return text.status().WithMessage(name, ": ", text.status().message());
    trees.push_back({name, "\n```text\n" + *text + "\n```\n\n"});
    return ::arrow::Status::OK();
  };
  for (const FileExample& example : kFileExamples) {
    auto& table = tables[example.file];
    if (table == nullptr) {
      ARROW_ASSIGN_OR_RAISE(table, read_table(data_folder + "/" + example.file));
    }
    ARROW_ASSIGN_OR_RAISE(const Column column, fresh_rows(*table->GetColumnByName(example.column),
                                                          example.first_row, example.rows));
    ARROW_RETURN_NOT_OK(add(example.name, written_tree(column)));
    if (!example.show_read) continue;
    ARROW_RETURN_NOT_OK(add(std::string(example.name) + " read", read_tree(column)));
  }
  for (const MadeExample& example : made_examples()) {
    ::arrow::ArrayVector chunks;
    for (const char* json : example.chunks) {
      ARROW_ASSIGN_OR_RAISE(chunks.emplace_back(),
                            ::arrow::json::ArrayFromJSONString(example.type, json));
    }
    ARROW_RETURN_NOT_OK(
        add(example.name, written_tree(std::make_shared<::arrow::ChunkedArray>(chunks))));
  }
  ARROW_RETURN_NOT_OK(add("table", table_tree(*tables["penguins.parquet"])));
  ARROW_RETURN_NOT_OK(add("buffer", buffer_tree()));
  return trees;
}
