#include "numera/extras/intake/column.h"

#include <arrow/array/util.h>
#include <arrow/type_traits.h>

#include <stdexcept>
#include <utility>

#include "numera/extras/intake/behind_nulls.h"
#include "numera/extras/intake/rules.h"
#include "numera/extras/intake/soundness.h"
#include "numera/extras/intake/type_text.h"

namespace numera::extras::intake {
namespace {

::arrow::Status at(const std::string& path, const ::arrow::Status& status) {
  if (status.ok() || path.empty()) return status;
  return status.WithMessage(path, ": ", status.message());
}

/// Arrow's full validation also refuses invalid values that nulls hide. The returned chunk holds 0
/// in their place.
::arrow::Result<std::shared_ptr<::arrow::Array>> validate(
    const Work& work, const std::shared_ptr<::arrow::Array>& chunk) {
  ::arrow::Status status = chunk->ValidateFull();
  if (status.ok()) return chunk;
  ARROW_RETURN_NOT_OK(chunk->Validate());
  ARROW_ASSIGN_OR_RAISE(const Data mended, without_bad_values_behind_nulls(work, chunk->data()));
  if (mended == chunk->data()) return status;
  auto array = ::arrow::MakeArray(mended);
  ARROW_RETURN_NOT_OK(array->ValidateFull());
  return array;
}

::arrow::Result<std::shared_ptr<::arrow::Array>> check_chunk(
    const Work& work, const std::shared_ptr<::arrow::DataType>& type,
    const std::shared_ptr<::arrow::Array>& chunk) {
  if (chunk == nullptr) {
    return ::arrow::Status::Invalid("Chunk: found a null pointer, expected an array.");
  }
  ARROW_RETURN_NOT_OK(check_soundness(chunk->data()));
  if (!chunk->type()->Equals(*type)) {
    return ::arrow::Status::Invalid("Chunk: found type ", type_text(*chunk->type()), ", expected ",
                                    type_text(*type), ".");
  }
  return validate(work, chunk);
}

/// A column without chunks gets the type and the casts of an empty array. If it is nested, it also
/// gets that array as its chunk: the host learns the element types from chunks only.
::arrow::Result<TakenColumn> take_in_valid(Work& work, const std::string& path,
                                           const std::shared_ptr<::arrow::DataType>& type,
                                           const ::arrow::ArrayVector& chunks) {
  TakenColumn taken;
  if (chunks.empty()) {
    // Arrow's MakeEmptyArray has no builder for nested extension types.
    ARROW_ASSIGN_OR_RAISE(const auto empty, ::arrow::MakeArrayOfNull(type, 0, work.pool));
    ARROW_ASSIGN_OR_RAISE(const Data data, take_in_data(work, path, *empty->data()));
    taken.type = data->type;
    if (::arrow::is_nested(data->type->id())) taken.chunks.push_back(::arrow::MakeArray(data));
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

/// Uses 64-bit offsets if 32 bits are not enough. A few bytes, for example of run-end encoded
/// values, can stand for more elements than memory can hold: that is a CapacityError.
::arrow::Result<TakenColumn> take_in_narrow_or_wide(const std::string& path,
                                                    const std::shared_ptr<::arrow::DataType>& type,
                                                    const ::arrow::ArrayVector& chunks,
                                                    const Work& work) {
  try {
    Work narrow = work;
    auto taken = take_in_valid(narrow, path, type, chunks);
    if (taken.ok() || !narrow.needs_wide) return taken;
    Work wide = work;
    wide.wide = true;
    return take_in_valid(wide, path, type, chunks);
  } catch (const std::length_error&) {
    return ::arrow::Status::CapacityError("Array: found more elements than memory can hold.");
  }
}

}  // namespace

::arrow::Result<TakenColumn> take_in_column(const std::string& path,
                                            const std::shared_ptr<::arrow::DataType>& type,
                                            const ::arrow::ArrayVector& chunks, const Work& work) {
  if (type == nullptr) {
    return ::arrow::Status::Invalid("Type: found a null pointer, expected a type.");
  }
  ARROW_RETURN_NOT_OK(check_type(path, *type, {work.cast, work.views}));
  ::arrow::ArrayVector valid;
  for (const auto& chunk : chunks) {
    auto checked = check_chunk(work, type, chunk);
    if (!checked.ok()) return at(path, checked.status());
    valid.push_back(*std::move(checked));
  }
  auto taken = take_in_narrow_or_wide(path, type, valid, work);
  return taken.ok() ? taken : at(path, taken.status());
}

}  // namespace numera::extras::intake
