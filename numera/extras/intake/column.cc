#include "numera/extras/intake/column.h"

#include <arrow/array/util.h>

#include <utility>

#include "numera/extras/intake/rules.h"
#include "numera/extras/intake/soundness.h"

namespace numera::extras::intake {
namespace {

::arrow::Status at(const std::string& path, const ::arrow::Status& status) {
  if (status.ok() || path.empty()) return status;
  return status.WithMessage(path, ": ", status.message());
}

::arrow::Status check_chunk(const std::shared_ptr<::arrow::DataType>& type,
                            const std::shared_ptr<::arrow::Array>& chunk) {
  if (chunk == nullptr) {
    return ::arrow::Status::Invalid("Chunk: found a null pointer, expected an array.");
  }
  ARROW_RETURN_NOT_OK(check_soundness(chunk->data()));
  if (!chunk->type()->Equals(*type)) {
    return ::arrow::Status::Invalid("Chunk: found type ", chunk->type()->ToString(), ", expected ",
                                    type->ToString(), ".");
  }
  return chunk->ValidateFull();
}

/// A column without chunks has the type and the casts of an empty array.
::arrow::Result<TakenColumn> take_in_valid(Work& work, const std::string& path,
                                           const std::shared_ptr<::arrow::DataType>& type,
                                           const ::arrow::ArrayVector& chunks) {
  TakenColumn taken;
  if (chunks.empty()) {
    ARROW_ASSIGN_OR_RAISE(const auto empty, ::arrow::MakeEmptyArray(type));
    ARROW_ASSIGN_OR_RAISE(const Data data, take_in_data(work, path, *empty->data()));
    taken.type = data->type;
  }
  for (const auto& chunk : chunks) {
    ARROW_ASSIGN_OR_RAISE(Data data, take_in_data(work, path, *chunk->data()));
    if (taken.type == nullptr) taken.type = data->type;
    data->type = taken.type;
    taken.chunks.push_back(::arrow::MakeArray(data));
    work.records = false;
  }
  taken.casts = std::move(work.casts);
  return taken;
}

}  // namespace

::arrow::Result<TakenColumn> take_in_column(const std::string& path,
                                            const std::shared_ptr<::arrow::DataType>& type,
                                            const ::arrow::ArrayVector& chunks, const Work& work) {
  ARROW_RETURN_NOT_OK(check_type(path, *type, work.cast));
  for (const auto& chunk : chunks) ARROW_RETURN_NOT_OK(at(path, check_chunk(type, chunk)));
  Work narrow = work;
  auto taken = take_in_valid(narrow, path, type, chunks);
  if (taken.ok() || !narrow.needs_wide) return taken.ok() ? taken : at(path, taken.status());
  Work wide = work;
  wide.wide = true;
  taken = take_in_valid(wide, path, type, chunks);
  return taken.ok() ? taken : at(path, taken.status());
}

}  // namespace numera::extras::intake
