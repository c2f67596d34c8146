#include "numera/core/types/numeric.h"

#include <arrow/array/array_primitive.h>
#include <arrow/type_traits.h>

#include <cmath>
#include <cstring>
#include <utility>

#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/to_arrow.h"
#include "numera/format/number_classes.h"
#include "numera/format/records.h"

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

/// The value of "Length", truncated toward zero.
::arrow::Result<std::int64_t> read_length(const hxArray* encoded) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* length,
                        checked_field(encoded, format::kLength, hxClassID::Double));
  ARROW_RETURN_NOT_OK(check_plain(length, format::kLength));
  if (hxGetNumberOfElements(length) != 1) {
    return messages::wrong_value(format::kLength, length, "a double of one element");
  }
  const double value = *static_cast<const double*>(hxGetData(length));
  constexpr double kTwoTo63 = 9223372036854775808.0;
  const double whole = std::trunc(value);
  if (!(whole >= -kTwoTo63 && whole < kTwoTo63))
    return messages::wrong_length(format::kLength, value);
  return static_cast<std::int64_t>(whole);
}

}  // namespace

ArrayResult numeric_to_arrow(const hxArray* values, std::shared_ptr<::arrow::Buffer> validity,
                             const char* field) {
  const auto make = [&]<class T>(const format::NumberClass<T>&) -> ArrayResult {
    ARROW_RETURN_NOT_OK(check_plain(values, field));
    return make_numeric<T>(values, std::move(validity));
  };
  return format::with_number_class(hxGetClassID(values), make, []() -> ArrayResult {
    return ::arrow::Status::Invalid("Invalid type for numeric NUMERA to Arrow conversion.");
  });
}

ArrayResult logical_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t length, read_length(encoded));
  ARROW_ASSIGN_OR_RAISE(auto bits, to_arrow<::arrow::Buffer>(encoded));
  return std::make_shared<::arrow::BooleanArray>(length, std::move(bits), std::move(validity),
                                                 ::arrow::kUnknownNullCount, 0);
}

std::int64_t copy_chunks(const ColumnView& chunks, std::span<std::byte> destination,
                         std::int64_t start, size_t width) {
  for (const ArrayView& chunk : chunks.chunks()) {
    const Bytes bytes = fixed_width_values(chunk, static_cast<std::int64_t>(width));
    const auto target = destination.subspan(static_cast<size_t>(start) * width);
    if (!bytes.empty()) std::memcpy(target.data(), bytes.data(), bytes.size());
    start += chunk.length;
  }
  return start;
}

hxArrayPtr numbers_to_numera(const ColumnView& chunks, hxClassID class_id, size_t width) {
  const auto length = static_cast<size_t>(chunks.length());
  hxArrayPtr column = format::make_column(class_id, length);
  const std::span bytes(format::elements<std::byte>(column), length * width);
  copy_chunks(chunks, bytes, 0, width);
  return column;
}

hxArrayPtr counts_to_numera(const ColumnView& chunks) {
  const auto& type = static_cast<const ::arrow::FixedWidthType&>(*chunks.type());
  return type.bit_width() == 64 ? numbers_to_numera(chunks, hxClassID::Int64, sizeof(std::int64_t))
                                : numbers_to_numera(chunks, hxClassID::Int32, sizeof(std::int32_t));
}

::arrow::Result<hxArrayPtr> logical_to_numera(const ColumnView& chunks) {
  hxArrayPtr packed = format::make_struct(1, format::kBitmaps);
  format::BitmapWriter writer =
      format::store_bitmap(packed.get(), 0, chunks.length(), format::BitFill::Zeros);
  if (chunks.length() == 0) return packed;
  for (const ArrayView& chunk : chunks.chunks()) writer.append(unsliced_bits(chunk), chunk.length);
  return packed;
}

}  // namespace numera::io::arrow::core
