#include "numera/core/types/numeric.h"

#include <arrow/array/array_primitive.h>
#include <arrow/type_traits.h>

#include <cmath>
#include <cstring>
#include <utility>

#include "numera/core/bitmap.h"
#include "numera/core/buffer_envelope.h"
#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/to_arrow.h"

namespace numera::io::arrow::core {
namespace {

template <class T>
std::shared_ptr<::arrow::Array> make_numeric(const hxArray* values,
                                             std::shared_ptr<::arrow::Buffer> validity) {
  using ArrowType = typename ::arrow::CTypeTraits<T>::ArrowType;
  return std::make_shared<::arrow::NumericArray<ArrowType>>(
      ::arrow::TypeTraits<ArrowType>::type_singleton(),
      static_cast<std::int64_t>(hxGetNumberOfElements(values)), borrow_elements(values),
      std::move(validity), ::arrow::kUnknownNullCount, 0);
}

using MakeNumeric = std::shared_ptr<::arrow::Array> (*)(const hxArray*,
                                                        std::shared_ptr<::arrow::Buffer>);

/// Null where the class is not numeric.
MakeNumeric numeric_maker(hxClassID class_id) {
  switch (class_id) {
    case hxClassID::Double:
      return make_numeric<double>;
    case hxClassID::Single:
      return make_numeric<float>;
    case hxClassID::Int8:
      return make_numeric<std::int8_t>;
    case hxClassID::UInt8:
      return make_numeric<std::uint8_t>;
    case hxClassID::Int16:
      return make_numeric<std::int16_t>;
    case hxClassID::UInt16:
      return make_numeric<std::uint16_t>;
    case hxClassID::Int32:
      return make_numeric<std::int32_t>;
    case hxClassID::UInt32:
      return make_numeric<std::uint32_t>;
    case hxClassID::Int64:
      return make_numeric<std::int64_t>;
    case hxClassID::UInt64:
      return make_numeric<std::uint64_t>;
    case hxClassID::Unknown:
    case hxClassID::Cell:
    case hxClassID::Struct:
    case hxClassID::Logical:
    case hxClassID::Char:
    case hxClassID::Void:
    case hxClassID::Function:
    case hxClassID::Object:
      return nullptr;
  }
  return nullptr;
}

/// The value of "Length", truncated toward zero.
::arrow::Result<std::int64_t> read_length(const hxArray* encoded) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* length, checked_field(encoded, "Length", hxClassID::Double));
  ARROW_RETURN_NOT_OK(check_plain(length, "Length"));
  if (hxGetNumberOfElements(length) != 1) {
    return messages::wrong_value("Length", length, "a double of one element");
  }
  const double value = *static_cast<const double*>(hxGetData(length));
  constexpr double kTwoTo63 = 9223372036854775808.0;
  const double whole = std::trunc(value);
  if (!(whole >= -kTwoTo63 && whole < kTwoTo63)) return messages::wrong_length("Length", value);
  return static_cast<std::int64_t>(whole);
}

}  // namespace

ArrayResult numeric_to_arrow(const hxArray* values, std::shared_ptr<::arrow::Buffer> validity,
                             const char* field) {
  const MakeNumeric make = numeric_maker(hxGetClassID(values));
  if (make == nullptr) {
    return ::arrow::Status::Invalid("Invalid type for numeric NUMERA to Arrow conversion.");
  }
  ARROW_RETURN_NOT_OK(check_plain(values, field));
  return make(values, std::move(validity));
}

ArrayResult logical_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t length, read_length(encoded));
  ARROW_ASSIGN_OR_RAISE(auto bits, to_arrow<::arrow::Buffer>(encoded));
  return std::make_shared<::arrow::BooleanArray>(length, std::move(bits), std::move(validity),
                                                 ::arrow::kUnknownNullCount, 0);
}

template <class T>
::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView& chunks, std::span<T> destination,
                                                 std::int64_t start) {
  for (const ArrayView& chunk : chunks.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const auto bytes, fixed_width_values(chunk, sizeof(T)));
    const auto target = destination.subspan(static_cast<size_t>(start));
    if (!bytes.empty()) std::memcpy(target.data(), bytes.data(), bytes.size());
    start += chunk.length;
  }
  return start;
}

template <class T>
::arrow::Result<hxArrayPtr> numeric_to_numera(const ColumnView& chunks) {
  for (const ArrayView& chunk : chunks.chunks()) {
    ARROW_RETURN_NOT_OK(fixed_width_values(chunk, sizeof(T)));
  }
  const auto length = static_cast<size_t>(chunks.length());
  hxArrayPtr column = make_column(kNumericClass<T>, length);
  ARROW_RETURN_NOT_OK(numeric_chunk_copy<T>(chunks, {elements<T>(column), length}, 0));
  return column;
}

template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&, std::span<double>,
                                                          std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&, std::span<float>,
                                                          std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&, std::span<std::int8_t>,
                                                          std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::uint8_t>, std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::int16_t>, std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::uint16_t>, std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::int32_t>, std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::uint32_t>, std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::int64_t>, std::int64_t);
template ::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView&,
                                                          std::span<std::uint64_t>, std::int64_t);

template ::arrow::Result<hxArrayPtr> numeric_to_numera<double>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<float>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::int8_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::uint8_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::int16_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::uint16_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::int32_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::uint32_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::int64_t>(const ColumnView&);
template ::arrow::Result<hxArrayPtr> numeric_to_numera<std::uint64_t>(const ColumnView&);

::arrow::Result<hxArrayPtr> logical_to_numera(const ColumnView& chunks) {
  hxArrayPtr packed = make_bitmap_envelopes(1);
  BitmapWriter writer = store_bitmap(packed.get(), 0, chunks.length(), BitFill::Zeros);
  if (chunks.length() == 0) return packed;
  for (const ArrayView& chunk : chunks.chunks()) {
    ARROW_ASSIGN_OR_RAISE(const auto bits, unsliced_bits(chunk));
    writer.append(bits, chunk.length);
  }
  return packed;
}

}  // namespace numera::io::arrow::core
