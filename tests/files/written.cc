#include "tests/files/written.h"

#include <arrow/array/array_base.h>
#include <arrow/type.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace numera::testing {

std::shared_ptr<::arrow::RecordBatch> batch_of(const ::arrow::Table& table) {
  return table.CombineChunksToBatch().ValueOrDie();
}

std::shared_ptr<::arrow::RecordBatch> batch_of(const std::vector<NamedColumn>& columns) {
  return batch_of(*table_of(columns));
}

std::shared_ptr<::arrow::RecordBatch> batch_of(const std::string& name,
                                               const std::shared_ptr<::arrow::Array>& column) {
  return ::arrow::RecordBatch::Make(::arrow::schema({::arrow::field(name, column->type())}),
                                    column->length(), ::arrow::ArrayVector{column});
}

::arrow::Status write_batches(const std::string& path, const ::arrow::RecordBatchVector& batches,
                              const files::WriteOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto sink, files::open_sink(path, options));
  for (const auto& batch : batches) ARROW_RETURN_NOT_OK(sink->write(batch));
  return sink->finish();
}

std::string standard_output_of(const std::function<void()>& run) {
  const TemporaryFolder folder;
  const std::string path = folder.path("out");
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  with_standard_output(file, run);
  ::close(file);
  return read_text(path);
}

void with_standard_output(int descriptor, const std::function<void()>& run) {
  std::fflush(stdout);
  const int before = ::dup(STDOUT_FILENO);
  ::dup2(descriptor, STDOUT_FILENO);
  run();
  std::fflush(stdout);
  ::dup2(before, STDOUT_FILENO);
  ::close(before);
}

void with_standard_input(int descriptor, const std::function<void()>& run) {
  const int before = ::dup(STDIN_FILENO);
  ::dup2(descriptor, STDIN_FILENO);
  run();
  ::dup2(before, STDIN_FILENO);
  ::close(before);
}

}  // namespace numera::testing
