#include <arrow/array/array_dict.h>
#include <arrow/array/array_nested.h>
#include <arrow/type.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "numera/extras/encode/join.h"
#include "numera/extras/encode/time.h"
#include "numera/format/number_classes.h"
#include "numera/format/records.h"
#include "numera/format/time_units.h"
#include "numera/host/text_codec.h"

namespace numera::extras::encoding {
namespace {

using ::arrow::Type;

// Copies the first `length` elements of a buffer to a column of this class. The buffer may be null
// if `length` is 0.
hxArrayPtr copy_column(const ::arrow::ArrayData& array, size_t buffer, hxClassID class_id,
                       size_t length) {
  hxArrayPtr column = format::make_column(class_id, length);
  const size_t bytes = length * hxGetElementSize(column.get());
  if (bytes > 0) std::memcpy(hxGetData(column.get()), array.buffers[buffer]->data(), bytes);
  return column;
}

hxArrayPtr copy_values(const ::arrow::Array& array, hxClassID class_id) {
  return copy_column(*array.data(), 1, class_id, static_cast<size_t>(array.length()));
}

hxArrayPtr copy_bits(const ::arrow::ArrayData& array, size_t buffer) {
  return copy_column(array, buffer, hxClassID::UInt8,
                     static_cast<size_t>(format::bitmap_bytes(array.length)));
}

// Copies the offsets, one more than there are elements. An array without elements may have no
// offsets buffer; the result is then one offset, 0.
hxArrayPtr copy_offsets(const ::arrow::ArrayData& array) {
  if (array.length == 0) return format::make_zero_column(hxClassID::UInt64, 1);
  return copy_column(array, 1, hxClassID::UInt64, static_cast<size_t>(array.length) + 1);
}

hxArrayPtr write_packed(const ::arrow::ArrayData& array) {
  hxArrayPtr offsets = copy_offsets(array);
  const auto bytes = format::elements<std::uint64_t>(offsets)[array.length];
  return format::make_record(format::kPacked, copy_column(array, 2, hxClassID::UInt8, bytes),
                             std::move(offsets));
}

hxArrayPtr write_logical(const ::arrow::Array& array) {
  return format::make_packed_logical(copy_bits(*array.data(), 1), array.length());
}

hxArrayPtr write_units(::arrow::TimeUnit::type unit) {
  return format::make_word(format::unit_name(unit));
}

hxArrayPtr write_timestamps(const ::arrow::Array& array) {
  const auto& type = static_cast<const ::arrow::TimestampType&>(*array.type());
  return make_datetime(copy_values(array, hxClassID::Int64), write_units(type.unit()),
                       format::make_char_row_from_utf8(type.timezone()));
}

hxArrayPtr write_times(const ::arrow::Array& array, hxClassID class_id) {
  const auto& type = static_cast<const ::arrow::TimeType&>(*array.type());
  return format::make_record(format::kTimes, copy_values(array, class_id),
                             write_units(type.unit()));
}

::arrow::Result<hxArrayPtr> write_categorical(const ::arrow::DictionaryArray& array) {
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*array.type());
  ARROW_ASSIGN_OR_RAISE(ReadableValue codes, write_readable(*array.indices()));
  ARROW_ASSIGN_OR_RAISE(ReadableValue categories, write_readable(*array.dictionary()));
  return format::make_record(format::kCategorical, std::move(categories.data),
                             std::move(codes.data), format::make_logical(type.ordered()));
}

::arrow::Result<hxArrayPtr> write_lists(const ::arrow::LargeListArray& array) {
  ARROW_ASSIGN_OR_RAISE(ReadableValue values, write_readable(*array.values()));
  return format::make_record(format::kLists, make_envelope(std::move(values)).value,
                             copy_offsets(*array.data()));
}

::arrow::Result<hxArrayPtr> write_structs(const ::arrow::StructArray& array) {
  const auto count = static_cast<size_t>(array.num_fields());
  hxArrayPtr names = format::make_cell(1, count);
  hxArrayPtr children = format::make_cell(1, count);
  for (size_t i = 0; i < count; ++i) {
    const int field = static_cast<int>(i);
    ARROW_ASSIGN_OR_RAISE(ReadableValue child, write_readable(*array.field(field)));
    hxSetCell(names.get(), i,
              format::make_char_row_from_utf8(array.struct_type()->field(field)->name()));
    hxSetCell(children.get(), i, make_envelope(std::move(child)).value);
  }
  return format::make_record(format::kStructs, std::move(names), std::move(children));
}

::arrow::Status write_numbers(const ::arrow::Array& array, ReadableValue& readable) {
  const auto is_it = [&](const auto& row) { return row.arrow_type == array.type_id(); };
  const auto write = [&](const auto& row) -> ::arrow::Status {
    readable.type = row.name;
    readable.data = copy_values(array, row.host_class);
    return {};
  };
  return format::with_number_class(is_it, write, [&]() -> ::arrow::Status {
    return ::arrow::Status::TypeError("Array: found ", array.type()->ToString(),
                                      ", expected a type to which host values are converted.");
  });
}

// Stores "ArrowType", "Type" and "Data".
::arrow::Status write_data(const ::arrow::Array& array, ReadableValue& readable) {
  switch (array.type_id()) {
    case Type::BOOL:
      readable.type = format::kLogicalType;
      readable.data = write_logical(array);
      return {};
    case Type::TIMESTAMP:
      readable.type = format::kDatetimeType;
      readable.data = write_timestamps(array);
      return {};
    case Type::TIME32:
    case Type::TIME64:
      readable.type = format::kDurationType;
      readable.data =
          write_times(array, array.type_id() == Type::TIME32 ? hxClassID::Int32 : hxClassID::Int64);
      return {};
    case Type::LARGE_STRING:
      readable.type = format::kStringType;
      readable.data = write_packed(*array.data());
      return {};
    case Type::LARGE_BINARY:
      readable.type = format::kBinaryType;
      readable.data = write_packed(*array.data());
      return {};
    case Type::DICTIONARY:
      readable.type = format::kCategoricalType;
      return write_categorical(static_cast<const ::arrow::DictionaryArray&>(array))
          .Value(&readable.data);
    case Type::LARGE_LIST:
      readable.kind = format::kListKind;
      readable.type = format::kLargeListType;
      return write_lists(static_cast<const ::arrow::LargeListArray&>(array)).Value(&readable.data);
    case Type::STRUCT:
      readable.kind = format::kStructKind;
      readable.type = format::kStructType;
      return write_structs(static_cast<const ::arrow::StructArray&>(array)).Value(&readable.data);
    default:
      return write_numbers(array, readable);
  }
}

}  // namespace

::arrow::Result<ReadableValue> write_readable(const ::arrow::Array& array) {
  ReadableValue readable{
      .type = {}, .data = nullptr, .length = static_cast<size_t>(array.length())};
  ARROW_RETURN_NOT_OK(write_data(array, readable));
  if (array.null_count() > 0) readable.valid = copy_bits(*array.data(), 0);
  return readable;
}

}  // namespace numera::extras::encoding
