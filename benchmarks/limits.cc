#include "benchmarks/limits.h"

#include <array>
#include <cstring>

namespace numera::benchmarks {
namespace {

/// A host column with unspecified elements, and where they lie.
template <class T>
T* add_column(std::vector<hxArrayPtr>& columns, size_t length, hxClassID class_id) {
  const std::array<size_t, 2> dims = {length, 1};
  columns.push_back(hxCreateUninitNumericArray(dims, class_id, hxComplexity::Real));
  return static_cast<T*>(hxGetData(columns.back().get()));
}

size_t element_size(hxClassID class_id) {
  const std::array<size_t, 2> dims = {0, 0};
  return hxGetElementSize(hxCreateNumericArray(dims, class_id, hxComplexity::Real).get());
}

}  // namespace

hxArrayPtr copied(std::span<const std::uint8_t> bytes, hxClassID class_id) {
  std::vector<hxArrayPtr> column;
  void* const target = add_column<void>(column, bytes.size() / element_size(class_id), class_id);
  std::memcpy(target, bytes.data(), bytes.size());
  return std::move(column.front());
}

std::vector<hxArrayPtr> widened(const ::arrow::StringArray& texts) {
  const auto count = static_cast<size_t>(texts.length());
  const auto bytes = static_cast<size_t>(texts.total_values_length());
  const std::uint8_t* const source = texts.raw_data() + texts.value_offset(0);
  const std::int32_t* const offsets = texts.raw_value_offsets();
  std::vector<hxArrayPtr> columns;
  auto* const units = add_column<std::uint16_t>(columns, bytes, hxClassID::UInt16);
  for (size_t i = 0; i < bytes; ++i) units[i] = source[i];
  auto* const ends = add_column<std::int64_t>(columns, count + 1, hxClassID::Int64);
  for (size_t i = 0; i <= count; ++i) ends[i] = offsets[i];
  return columns;
}

std::vector<hxArrayPtr> narrowed(std::u16string_view units, size_t texts) {
  std::vector<hxArrayPtr> columns;
  auto* const bytes = add_column<std::uint8_t>(columns, units.size() + 1, hxClassID::UInt8);
  for (size_t i = 0; i < units.size(); ++i) bytes[i] = static_cast<std::uint8_t>(units[i]);
  bytes[units.size()] = 0;
  auto* const offsets = add_column<std::uint64_t>(columns, texts + 1, hxClassID::UInt64);
  for (size_t i = 0; i <= texts; ++i) offsets[i] = i * (units.size() / texts);
  return columns;
}

}  // namespace numera::benchmarks
