#include <arrow/api.h>
#include <arrow/io/file.h>
#include <arrow/io/memory.h>
#include <arrow/ipc/reader.h>
#include <arrow/ipc/writer.h>
#include <arrow/json/from_string.h>
#include <parquet/arrow/reader.h>

#include <algorithm>
#include <utility>

#include "fuzz/seeds.h"
#include "tests/extras/encode/columns.h"

namespace numera::fuzz {
namespace {

using ::arrow::ArrayVector;
using ::arrow::ChunkedArray;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

constexpr std::int64_t kRows = 12;

TablePtr read_file(const std::filesystem::path& path) {
  const auto file = ::arrow::io::ReadableFile::Open(path.string()).ValueOrDie();
  if (path.extension() == ".arrow") {
    return ::arrow::ipc::RecordBatchFileReader::Open(file).ValueOrDie()->ToTable().ValueOrDie();
  }
  const auto reader = parquet::arrow::OpenFile(file, ::arrow::default_memory_pool()).ValueOrDie();
  return reader->ReadRowGroup(0).ValueOrDie();
}

/// Combines the chunks: a written slice would contain all bytes of the file.
TablePtr few_rows(const ::arrow::Table& table) {
  return table.Slice(0, kRows)->CombineChunks().ValueOrDie();
}

TablePtr table_of(ArrayVector chunks) {
  const TypePtr type = chunks.front()->type();
  return ::arrow::Table::Make(::arrow::schema({::arrow::field("c", type)}),
                              {std::make_shared<ChunkedArray>(std::move(chunks))});
}

ArrayPtr from_json(const TypePtr& type, const std::string& json) {
  return ::arrow::json::ArrayFromJSONString(type, json).ValueOrDie();
}

/// Values of types that only the intake handles, if JSON can express them.
ArrayVector values_to_cast() {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  return {
      from_json(float16(), "[1.5, null, -2]"),
      from_json(decimal128(9, 2), R"(["1.25", null, "-3.50"])"),
      from_json(decimal256(40, 3), R"(["1.250", null])"),
      from_json(decimal32(5, 1), R"(["1.5", null])"),
      from_json(decimal64(12, 4), R"(["1.5000", null])"),
      from_json(month_interval(), "[1, null, -3]"),
      from_json(day_time_interval(), "[[1, 2], null]"),
      from_json(month_day_nano_interval(), "[[1, 2, 3], null]"),
      from_json(fixed_size_list(int16(), 2), "[[1, 2], null, [3, null]]"),
      from_json(list_view(utf8()), R"([["a"], null, [], ["b", "c"]])"),
      from_json(large_list_view(int8()), "[[1], null, [2, 3]]"),
      from_json(utf8_view(), R"(["a", null, "longer than twelve bytes"])"),
      from_json(binary_view(), R"(["a", null, "longer than twelve bytes"])"),
      from_json(dictionary(int8(), int32()), "[7, null, 7, 8]"),
      RunEndEncodedArray::Make(5, from_json(int32(), "[2, 5]"), from_json(utf8(), R"(["a", null])"))
          .ValueOrDie(),
      from_json(sparse_union({field("a", int8()), field("b", utf8())}), R"([[0, 1], [1, "x"]])"),
      from_json(map(utf8(), fixed_size_list(float16(), 1)), R"([[["k", [1]]], null])"),
  };
}

}  // namespace

std::vector<TablePtr> seed_tables(const std::filesystem::path& folder) {
  std::vector<TablePtr> tables;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const auto extension = entry.path().extension();
    if (extension == ".arrow" || extension == ".parquet") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  for (const auto& file : files) {
    const TablePtr table = few_rows(*read_file(file));
    tables.push_back(table);
    for (int i = 0; i < table->num_columns(); ++i) {
      tables.push_back(table->SelectColumns({i}).ValueOrDie());
    }
  }
  for (const testing::ColumnType& row : testing::column_types()) {
    const ArrayPtr first = from_json(row.type, row.json);
    const ArrayPtr second = from_json(row.type, row.more_json);
    tables.push_back(table_of({first, second}));
    for (const testing::Nest& nest : testing::nestings()) tables.push_back(table_of({nest(first)}));
  }
  for (const ArrayPtr& array : values_to_cast()) {
    tables.push_back(table_of({array}));
    for (const testing::Nest& nest : testing::nestings()) tables.push_back(table_of({nest(array)}));
  }
  return tables;
}

void keep_streams(const ::arrow::Table& table, const KeepSeed& keep) {
  auto options = ::arrow::ipc::IpcWriteOptions::Defaults();
  options.emit_dictionary_deltas = true;
  const auto sink = ::arrow::io::BufferOutputStream::Create().ValueOrDie();
  const auto writer = ::arrow::ipc::MakeStreamWriter(sink, table.schema(), options).ValueOrDie();
  const std::int64_t half = (table.num_rows() + 1) / 2;
  ::arrow::Status status = writer->WriteTable(*table.Slice(0, half));
  status &= writer->WriteTable(*table.Slice(half));
  status &= writer->Close();
  const auto stream = (status.ok() ? sink->Finish() : status).ValueOrDie();
  for (const std::vector<std::uint8_t>& decisions :
       {std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 0, 0},
        std::vector<std::uint8_t>{5, 2, 1, 7, 0, 9, 0, 0}}) {
    std::vector<std::uint8_t> input = decisions;
    input.insert(input.end(), stream->data(), stream->data() + stream->size());
    keep("stream", input);
  }
}

}  // namespace numera::fuzz
