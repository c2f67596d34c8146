#include <arrow/array/array_base.h>
#include <arrow/array/concatenate.h>
#include <arrow/python/pyarrow.h>
#include <arrow/record_batch.h>
#include <arrow/table.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <nanobind/stl/vector.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "numera/files/write.h"
#include "python/bindings/bindings.h"
#include "python/bindings/errors.h"
#include "python/bindings/file_calls.h"

namespace numera::python {
namespace {

namespace py = ::arrow::py;

using BatchResult = ::arrow::Result<std::shared_ptr<::arrow::RecordBatch>>;

/// The rows as one batch, and nested columns without the values of other rows: the sink checks all
/// that a batch holds, so a long table would be checked once per batch. The table must be valid.
BatchResult batch_of(const ::arrow::Table& rows) {
  ARROW_ASSIGN_OR_RAISE(const auto batch, rows.CombineChunksToBatch());
  ::arrow::ArrayVector columns = batch->columns();
  for (auto& column : columns) {
    if (!::arrow::is_nested(column->type_id())) continue;
    ARROW_ASSIGN_OR_RAISE(column, ::arrow::Concatenate({column}));
  }
  return ::arrow::RecordBatch::Make(batch->schema(), batch->num_rows(), std::move(columns));
}

/// A file that appears when it is finished.
class FileSink {
 public:
  FileSink(nb::handle path, const std::optional<std::string>& compression,
           std::vector<std::string> partition_by, std::optional<char> csv_delimiter)
      : calls_({path_of(path)}) {
    files::WriteOptions options;
    options.compression = compression.value_or("");
    options.partition_by = std::move(partition_by);
    options.csv_delimiter = csv_delimiter;
    sink_ = calls_.value([&] { return files::open_sink(calls_.paths().front(), options); });
  }

  /// Writes a pyarrow.Table as one batch.
  void write(nb::handle table) {
    const auto rows = value_or_raise(py::unwrap_table(table.ptr()));
    run([&](files::Sink& sink) -> ::arrow::Status {
      ARROW_ASSIGN_OR_RAISE(const auto batch, batch_of(*rows));
      return sink.write(batch);
    });
  }

  void finish() {
    run([](files::Sink& sink) { return sink.finish(); });
  }

  /// Removes the file if it is not finished.
  void close() {
    calls_.value([&]() -> ::arrow::Result<bool> {
      sink_ = nullptr;
      return true;
    });
  }

 private:
  template <class Call>
  void run(const Call& call) {
    calls_.value([&]() -> ::arrow::Result<bool> {
      if (sink_ == nullptr) return ::arrow::Status::Invalid("it is closed");
      ARROW_RETURN_NOT_OK(call(*sink_));
      return true;
    });
  }

  Calls calls_;
  std::unique_ptr<files::Sink> sink_;
};

}  // namespace

void bind_file_sink(nb::module_& module) {
  nb::class_<FileSink>(module, "FileSink", "A file that is written; `numera.write` has it.")
      .def(nb::init<nb::handle, const std::optional<std::string>&, std::vector<std::string>,
                    std::optional<char>>(),
           nb::arg("path"), nb::arg("compression").none(), nb::arg("partition_by"),
           nb::arg("csv_delimiter").none())
      .def("write", &FileSink::write, nb::arg("table"),
           nb::sig("def write(self, table: pyarrow.Table) -> None"), "Writes rows.")
      .def("finish", &FileSink::finish, "Puts the file in place.")
      .def("close", &FileSink::close, "Removes the file if it is not finished.");
}

}  // namespace numera::python
