#include "benchmarks/sizes.h"

#include <arrow/util/byte_size.h>

#include "numera/host/string_array.h"

namespace numera::benchmarks {
namespace {

size_t text_bytes(const hxStringArray& strings) {
  size_t bytes = 0;
  for (size_t i = 0; i < strings.size(); ++i) {
    if (const auto text = strings.element(i)) bytes += text->size() * sizeof(char16_t);
  }
  return bytes;
}

size_t host_bytes(const hxArray* value) {
  if (value == nullptr) return 0;
  if (hxIsStringArray(value)) return text_bytes(hxGetStringArray(value));
  const size_t count = hxGetNumberOfElements(value);
  if (hxGetData(value) != nullptr) return count * hxGetElementSize(value);
  size_t bytes = 0;
  if (hxGetClassID(value) == hxClassID::Cell) {
    for (size_t i = 0; i < count; ++i) bytes += host_bytes(hxGetCell(value, i));
  }
  for (int field = 0; field < hxGetNumberOfFields(value); ++field) {
    for (size_t i = 0; i < count; ++i) {
      bytes += host_bytes(hxGetField(value, i, hxGetFieldName(value, field)));
    }
  }
  return bytes;
}

}  // namespace

std::int64_t bytes_of(const ArrayPtr& array) {
  return ::arrow::util::ReferencedBufferSize(*array).ValueOrDie();
}

std::int64_t bytes_of(const ColumnPtr& column) {
  return ::arrow::util::ReferencedBufferSize(*column).ValueOrDie();
}

std::int64_t bytes_of(const TablePtr& table) {
  return ::arrow::util::ReferencedBufferSize(*table).ValueOrDie();
}

std::int64_t elements_of(const TablePtr& table) { return table->num_rows() * table->num_columns(); }

std::int64_t bytes_of(const hxArrayPtr& value) {
  return static_cast<std::int64_t>(host_bytes(value.get()));
}

}  // namespace numera::benchmarks
