#include "numera/core/types/string.h"

#include <arrow/array/array_binary.h>
#include <arrow/util/checked_cast.h>

#include <array>
#include <optional>
#include <utility>

#include "numera/core/chunk_memory.h"

namespace numera::io::arrow::core {
namespace {

std::unique_ptr<hxStringArray> make_string_column(std::int64_t length) {
  return hxMakeStringArray(std::array{static_cast<size_t>(length), size_t{1}});
}

}  // namespace

ArrayResult MakeLargeStringArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  return borrow_large_array<::arrow::LargeStringArray>(s, std::move(validity));
}

ArrayResult MakeStringArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  return borrow_narrow_array<::arrow::StringArray>(s, std::move(validity));
}

template <class ArrowArray>
::arrow::Status FillHostStrings(const ArrowArray& array, hxStringArray& store, size_t start) {
  using Offset = typename ArrowArray::offset_type;
  ARROW_ASSIGN_OR_RAISE(const auto texts, variable_width_values<Offset>(*array.data()));
  if (texts.offsets.empty()) return ::arrow::Status::OK();
  size_t row = 0;
  try {
    const auto failed = store.assign_utf8(start, texts.offsets, texts.bytes.data());
    if (!failed) return ::arrow::Status::OK();
    row = *failed - start;
  } catch (...) {
    // Converting an element fails in one way, whatever the host threw.
  }
  return ::arrow::Status::Invalid("Could not convert string in row ", row, " to UTF-16 string.\n");
}

template <class ArrowArray>
::arrow::Result<hxArrayPtr> StringArrayToHost(const ArrowArray& array) {
  ARROW_RETURN_NOT_OK(check_offsets_fit(*array.data(), sizeof(typename ArrowArray::offset_type)));
  auto strings = make_string_column(array.length());
  ARROW_RETURN_NOT_OK(FillHostStrings(array, *strings, 0));
  return hxCreateStringArrayFrom(std::move(strings));
}

template <class ArrowArray>
::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost(const ::arrow::ChunkedArray& column) {
  for (const auto& chunk : column.chunks()) {
    ARROW_RETURN_NOT_OK(
        check_offsets_fit(*chunk->data(), sizeof(typename ArrowArray::offset_type)));
  }
  auto strings = make_string_column(column.length());
  size_t start = 0;
  for (const auto& chunk : column.chunks()) {
    const auto& texts = ::arrow::internal::checked_cast<const ArrowArray&>(*chunk);
    ARROW_RETURN_NOT_OK(FillHostStrings(texts, *strings, start));
    start += static_cast<size_t>(chunk->length());
  }
  return hxCreateStringArrayFrom(std::move(strings));
}

template ::arrow::Status FillHostStrings(const ::arrow::StringArray&, hxStringArray&, size_t);
template ::arrow::Status FillHostStrings(const ::arrow::LargeStringArray&, hxStringArray&, size_t);
template ::arrow::Result<hxArrayPtr> StringArrayToHost(const ::arrow::StringArray&);
template ::arrow::Result<hxArrayPtr> StringArrayToHost(const ::arrow::LargeStringArray&);
template ::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost<::arrow::StringArray>(
    const ::arrow::ChunkedArray&);
template ::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost<::arrow::LargeStringArray>(
    const ::arrow::ChunkedArray&);

}  // namespace numera::io::arrow::core
