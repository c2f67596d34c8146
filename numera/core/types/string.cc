#include "numera/core/types/string.h"

#include <arrow/array/array_binary.h>

#include <array>
#include <optional>
#include <utility>

namespace numera::io::arrow::core {
namespace {

std::unique_ptr<hxStringArray> make_string_column(std::int64_t length) {
  return hxMakeStringArray(std::array{static_cast<size_t>(length), size_t{1}});
}

/// Sets the elements one by one, after the store failed to take them all at once. Returns the index
/// of the first element that cannot be set.
template <class Offset>
std::optional<size_t> set_one_by_one(const VariableWidthValues<Offset>& texts, hxStringArray& store,
                                     size_t start) {
  for (size_t i = 0; i + 1 < texts.offsets.size(); ++i) {
    const auto begin = static_cast<size_t>(texts.offsets[i]);
    const auto end = static_cast<size_t>(texts.offsets[i + 1]);
    const auto bytes = texts.bytes.subspan(begin, end - begin);
    try {
      store.set(start + i,
                Utf8ToUtf16({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    } catch (...) {
      return i;
    }
  }
  return std::nullopt;
}

template <class Offset>
::arrow::Status fill_strings(const ArrayView& array, hxStringArray& store, size_t start) {
  ARROW_ASSIGN_OR_RAISE(const auto texts, variable_width_values<Offset>(array));
  if (texts.offsets.empty()) return ::arrow::Status::OK();
  std::optional<size_t> row;
  try {
    row = store.assign_utf8(start, texts.offsets, texts.bytes.data());
    if (row) *row -= start;
  } catch (...) {
    // The exception does not tell which element failed.
    row = set_one_by_one(texts, store, start);
  }
  if (!row) return ::arrow::Status::OK();
  return ::arrow::Status::Invalid("Could not convert string in row ", *row, " to UTF-16 string.\n");
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
  return fill_strings<typename ArrowArray::offset_type>(array, store, start);
}

template <class ArrowArray>
::arrow::Result<hxArrayPtr> StringArrayToHost(const ArrowArray& array) {
  return ChunkedStringArrayToHost<ArrowArray>(ColumnView(ArrayView(array)));
}

template <class ArrowArray>
::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost(const ColumnView& column) {
  using Offset = typename ArrowArray::offset_type;
  auto strings = make_string_column(column.length());
  size_t start = 0;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_RETURN_NOT_OK(fill_strings<Offset>(chunk, *strings, start));
    start += static_cast<size_t>(chunk.length);
  }
  return hxCreateStringArrayFrom(std::move(strings));
}

template ::arrow::Status FillHostStrings(const ::arrow::StringArray&, hxStringArray&, size_t);
template ::arrow::Status FillHostStrings(const ::arrow::LargeStringArray&, hxStringArray&, size_t);
template ::arrow::Result<hxArrayPtr> StringArrayToHost(const ::arrow::StringArray&);
template ::arrow::Result<hxArrayPtr> StringArrayToHost(const ::arrow::LargeStringArray&);
template ::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost<::arrow::StringArray>(
    const ColumnView&);
template ::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost<::arrow::LargeStringArray>(
    const ColumnView&);

}  // namespace numera::io::arrow::core
