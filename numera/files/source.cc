#include <arrow/type.h>

#include <utility>

#include "numera/files/locations.h"
#include "numera/files/memory_limit.h"
#include "numera/files/open_file.h"
#include "numera/files/read.h"

namespace numera::files {

Source::~Source() = default;

StatedCounts Source::stated() const {
  StatedCounts counts{.rows = rows()};
  counts.nulls.resize(static_cast<size_t>(schema()->num_fields()));
  return counts;
}

std::optional<std::int64_t> Source::bytes() const { return std::nullopt; }

std::int64_t Source::bytes_read() const { return 0; }

::arrow::Result<std::shared_ptr<Source>> open_source(const std::vector<std::string>& paths,
                                                     const ReadOptions& options) {
  if (options.batch_rows <= 0) {
    return ::arrow::Status::Invalid("batch_rows: found ", options.batch_rows,
                                    ", expected a positive number");
  }
  ARROW_ASSIGN_OR_RAISE(const auto files, find_files(paths));
  Opening opening = {options, nullptr};
  if (options.pool == nullptr) {
    opening.limit = LimitedPool::make(options.memory_limit);
    opening.options.pool = opening.limit.get();
  }
  const bool is_one_file = paths.size() == 1 && files.size() == 1 && files[0].is_named;
  if (!is_one_file) return open_files(files, opening);
  ARROW_ASSIGN_OR_RAISE(auto opened, open_file(files.front(), opening));
  return std::move(opened.source);
}

::arrow::Result<std::shared_ptr<Source>> open_source(const std::string& path,
                                                     const ReadOptions& options) {
  return open_source(std::vector<std::string>{path}, options);
}

}  // namespace numera::files
