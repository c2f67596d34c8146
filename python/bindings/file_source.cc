#include <arrow/array/array_base.h>
#include <arrow/array/concatenate.h>
#include <arrow/record_batch.h>
#include <arrow/table.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <nanobind/stl/vector.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/column_status.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/files/read.h"
#include "python/bindings/bindings.h"
#include "python/bindings/errors.h"
#include "python/bindings/file_calls.h"
#include "python/bindings/host_value.h"
#include "python/bindings/to_host.h"
#include "python/bindings/unlocked.h"

namespace numera::python {
namespace {

using TablePtr = std::shared_ptr<::arrow::Table>;

std::vector<std::string> paths_of(nb::list paths) {
  std::vector<std::string> all;
  for (const nb::handle path : paths) all.push_back(path_of(path));
  return all;
}

/// Nested columns in one chunk each. Of these alone the host has one element per chunk. The table
/// must be fully valid: Arrow would follow wrong offsets.
::arrow::Result<TablePtr> in_one_chunk(const ::arrow::Table& table) {
  ::arrow::ChunkedArrayVector columns = table.columns();
  for (size_t i = 0; i < columns.size(); ++i) {
    if (columns[i]->num_chunks() < 2 || !::arrow::is_nested(columns[i]->type()->id())) continue;
    const auto array = ::arrow::Concatenate(columns[i]->chunks());
    if (!array.ok()) {
      const auto index = static_cast<int>(i);
      return extras::status_of_column(array.status(), table.field(index)->name(), index);
    }
    columns[i] = std::make_shared<::arrow::ChunkedArray>(*array);
  }
  return ::arrow::Table::Make(table.schema(), std::move(columns), table.num_rows());
}

::arrow::Result<hxArrayPtr> convert_batches(const std::shared_ptr<::arrow::Schema>& schema,
                                            const ::arrow::RecordBatchVector& batches, bool cast,
                                            bool one_chunk) {
  ARROW_ASSIGN_OR_RAISE(const auto table, ::arrow::Table::FromRecordBatches(schema, batches));
  ARROW_ASSIGN_OR_RAISE(auto taken, extras::take_in(table, {.cast = cast}));
  if (one_chunk) {
    ARROW_ASSIGN_OR_RAISE(taken.value, in_one_chunk(*taken.value));
  }
  return extras::parallel_to_numera(std::move(taken.value), 1);
}

/// Files that are read into host tables: rows are collected, then taken.
class FileSource {
 public:
  FileSource(nb::list paths, std::string prefix,
             const std::optional<std::vector<std::string>>& columns, std::int64_t batch_rows,
             std::optional<std::int64_t> memory_limit, std::optional<char> csv_delimiter,
             bool csv_heading, std::vector<std::string> csv_nulls,
             const std::optional<std::string>& csv_encoding, bool csv_types_of_all_rows)
      : calls_(paths_of(std::move(paths)), std::move(prefix)) {
    files::ReadOptions options;
    options.columns = columns.value_or(std::vector<std::string>{});
    options.batch_rows = batch_rows;
    options.memory_limit = memory_limit;
    options.csv_delimiter = csv_delimiter;
    options.csv_heading = csv_heading;
    options.csv_nulls = std::move(csv_nulls);
    options.csv_encoding = csv_encoding.value_or("");
    options.csv_types_of_all_rows = csv_types_of_all_rows;
    options.while_waiting = [this] { return calls_.while_waiting(); };
    source_ = calls_.value([&] { return files::open_source(calls_.paths(), options); });
    rows_ = source_->rows();
    schema_ = source_->schema();
    // For the library, no names are all columns.
    if (columns && columns->empty()) schema_ = ::arrow::schema({});
  }

  nb::list names() const {
    nb::list names;
    for (const auto& field : schema_->fields()) {
      names.append(text_of(field->name()));
    }
    return names;
  }

  std::optional<std::int64_t> rows() const { return rows_; }

  /// Collects the next rows of the file, at most `most`. Returns their number; 0 at the end.
  std::int64_t collect(std::int64_t most) {
    return calls_.value([&]() -> ::arrow::Result<std::int64_t> {
      while (rest_ == nullptr || rest_->num_rows() == 0) {
        if (source_ == nullptr) return ::arrow::Status::Invalid("it is closed");
        ARROW_RETURN_NOT_OK(source_->ReadNext(&rest_));
        if (rest_ == nullptr) return 0;
        if (schema_->num_fields() == 0) {
          ARROW_ASSIGN_OR_RAISE(rest_, rest_->SelectColumns({}));
        }
      }
      collected_.push_back(rest_->Slice(0, most));
      const std::int64_t rows = collected_.back()->num_rows();
      rest_ = rows < rest_->num_rows() ? rest_->Slice(rows) : nullptr;
      return rows;
    });
  }

  /// The host table of the collected rows, which are given up.
  HostValue take(bool cast, bool one_chunk) {
    const auto collected = calls_.value([&]() -> ::arrow::Result<::arrow::RecordBatchVector> {
      return std::exchange(collected_, {});
    });
    ::arrow::Result<hxArrayPtr> result = [&] {
      const Unlocked unlocked;
      return convert_batches(schema_, collected, cast, one_chunk);
    }();
    return adopt_result(std::move(result), cast);
  }

  void close() {
    calls_.value([&]() -> ::arrow::Result<bool> {
      collected_.clear();
      rest_ = nullptr;
      source_ = nullptr;
      return true;
    });
  }

 private:
  Calls calls_;
  std::shared_ptr<files::Source> source_;
  std::optional<std::int64_t> rows_;
  std::shared_ptr<::arrow::Schema> schema_;
  std::shared_ptr<::arrow::RecordBatch> rest_;  ///< rows that were read and not yet collected
  ::arrow::RecordBatchVector collected_;
};

}  // namespace

void bind_file_source(nb::module_& module) {
  nb::class_<FileSource>(module, "FileSource", "Files that are read; `numera.scan` has them.")
      .def(nb::init<nb::list, std::string, const std::optional<std::vector<std::string>>&,
                    std::int64_t, std::optional<std::int64_t>, std::optional<char>, bool,
                    std::vector<std::string>, const std::optional<std::string>&, bool>(),
           nb::arg("paths"), nb::arg("prefix"), nb::arg("columns").none(), nb::arg("batch_rows"),
           nb::arg("memory_limit").none(), nb::arg("csv_delimiter").none(), nb::arg("csv_heading"),
           nb::arg("csv_nulls"), nb::arg("csv_encoding").none(), nb::arg("csv_types_of_all_rows"))
      .def_prop_ro("names", &FileSource::names, nb::sig("def names(self) -> list[str]"),
                   "The names of the columns.")
      .def_prop_ro("rows", &FileSource::rows, "The number of rows, if the files state it.")
      .def("collect", &FileSource::collect, nb::arg("most"),
           "Reads at most so many rows more. Returns their number, which is 0 at the end.")
      .def("take", &FileSource::take, nb::arg("cast"), nb::arg("one_chunk"),
           "The encoded table of the rows that were collected since the last call.")
      .def("close", &FileSource::close, "Closes the files and gives up what was collected.");
}

}  // namespace numera::python
