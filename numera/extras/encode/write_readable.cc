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
#include "numera/host/text_codec.h"

namespace numera::extras::encoding {
namespace {

using ::arrow::Type;

/// Types whose values are one block of numbers, and the class that holds them.
struct NumberRow {
  Type::type id;
  hxClassID class_id;
  std::u16string_view type;
};

constexpr NumberRow kNumbers[] = {
    {Type::DOUBLE, hxClassID::Double, u"double"},     {Type::FLOAT, hxClassID::Single, u"single"},
    {Type::INT8, hxClassID::Int8, u"int8"},           {Type::UINT8, hxClassID::UInt8, u"uint8"},
    {Type::INT16, hxClassID::Int16, u"int16"},        {Type::UINT16, hxClassID::UInt16, u"uint16"},
    {Type::INT32, hxClassID::Int32, u"int32"},        {Type::UINT32, hxClassID::UInt32, u"uint32"},
    {Type::INT64, hxClassID::Int64, u"int64"},        {Type::UINT64, hxClassID::UInt64, u"uint64"},
    {Type::TIMESTAMP, hxClassID::Int64, u"datetime"}, {Type::TIME32, hxClassID::Int32, u"duration"},
    {Type::TIME64, hxClassID::Int64, u"duration"},
};

// The first `length` elements of a class from a buffer, which may be absent where there are none.
hxArrayPtr copy_column(const ::arrow::ArrayData& array, size_t buffer, hxClassID class_id,
                       size_t length) {
  hxArrayPtr column = make_column(class_id, length);
  const size_t bytes = length * hxGetElementSize(column.get());
  if (bytes > 0) std::memcpy(hxGetData(column.get()), array.buffers[buffer]->data(), bytes);
  return column;
}

hxArrayPtr copy_bits(const ::arrow::ArrayData& array, size_t buffer) {
  return copy_column(array, buffer, hxClassID::UInt8,
                     bitmap_bytes(static_cast<size_t>(array.length)));
}

// One more offset than there are elements; an array without elements may have no offset at all.
hxArrayPtr copy_offsets(const ::arrow::ArrayData& array) {
  if (array.length == 0) return make_zero_column(hxClassID::UInt64, 1);
  return copy_column(array, 1, hxClassID::UInt64, static_cast<size_t>(array.length) + 1);
}

hxArrayPtr write_packed(const ::arrow::ArrayData& array) {
  hxArrayPtr offsets = copy_offsets(array);
  const auto bytes = elements<std::uint64_t>(offsets)[array.length];
  hxArrayPtr data = make_struct(1, {"Values", "StartOffsets"});
  hxSetField(data.get(), 0, "Values", copy_column(array, 2, hxClassID::UInt8, bytes));
  hxSetField(data.get(), 0, "StartOffsets", std::move(offsets));
  return data;
}

hxArrayPtr write_units(::arrow::TimeUnit::type unit) {
  switch (unit) {
    case ::arrow::TimeUnit::SECOND:
      return make_char(u"seconds");
    case ::arrow::TimeUnit::MILLI:
      return make_char(u"milliseconds");
    case ::arrow::TimeUnit::MICRO:
      return make_char(u"microseconds");
    case ::arrow::TimeUnit::NANO:
      return make_char(u"nanoseconds");
  }
  return make_char(u"milliseconds");
}

hxArrayPtr write_utf8(const std::string& utf8) {
  return make_char(hxUTF8ToUTF16("UTF-8").convert(utf8));
}

hxArrayPtr write_numbers(const ::arrow::Array& array, hxClassID class_id) {
  hxArrayPtr values = copy_column(*array.data(), 1, class_id, static_cast<size_t>(array.length()));
  if (array.type_id() == Type::TIMESTAMP) {
    const auto& type = static_cast<const ::arrow::TimestampType&>(*array.type());
    return make_datetime(std::move(values), write_units(type.unit()), write_utf8(type.timezone()));
  }
  if (array.type_id() == Type::TIME32 || array.type_id() == Type::TIME64) {
    const auto& type = static_cast<const ::arrow::TimeType&>(*array.type());
    hxArrayPtr data = make_struct(1, {"Values", "Units"});
    hxSetField(data.get(), 0, "Values", std::move(values));
    hxSetField(data.get(), 0, "Units", write_units(type.unit()));
    return data;
  }
  return values;
}

::arrow::Result<hxArrayPtr> write_categorical(const ::arrow::DictionaryArray& array) {
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*array.type());
  ARROW_ASSIGN_OR_RAISE(ReadableValue codes, write_readable(*array.indices()));
  ARROW_ASSIGN_OR_RAISE(ReadableValue categories, write_readable(*array.dictionary()));
  hxArrayPtr data = make_struct(1, {"Categories", "Values", "Ordinal"});
  hxSetField(data.get(), 0, "Categories", std::move(categories.data));
  hxSetField(data.get(), 0, "Values", std::move(codes.data));
  hxSetField(data.get(), 0, "Ordinal", make_logical(type.ordered()));
  return data;
}

::arrow::Result<hxArrayPtr> write_lists(const ::arrow::LargeListArray& array) {
  ARROW_ASSIGN_OR_RAISE(ReadableValue values, write_readable(*array.values()));
  hxArrayPtr data = make_struct(1, {"Values", "StartOffsets"});
  hxSetField(data.get(), 0, "Values", make_envelope(std::move(values)).value);
  hxSetField(data.get(), 0, "StartOffsets", copy_offsets(*array.data()));
  return data;
}

::arrow::Result<hxArrayPtr> write_structs(const ::arrow::StructArray& array) {
  const auto count = static_cast<size_t>(array.num_fields());
  hxArrayPtr names = make_cell(1, count);
  hxArrayPtr children = make_cell(1, count);
  for (size_t i = 0; i < count; ++i) {
    const int field = static_cast<int>(i);
    ARROW_ASSIGN_OR_RAISE(ReadableValue child, write_readable(*array.field(field)));
    hxSetCell(names.get(), i, write_utf8(array.struct_type()->field(field)->name()));
    hxSetCell(children.get(), i, make_envelope(std::move(child)).value);
  }
  hxArrayPtr data = make_struct(1, {"FieldName", "FieldData"});
  hxSetField(data.get(), 0, "FieldName", std::move(names));
  hxSetField(data.get(), 0, "FieldData", std::move(children));
  return data;
}

// Stores "ArrowType", "Type" and "Data".
::arrow::Status write_data(const ::arrow::Array& array, ReadableValue& readable) {
  const auto* const row = std::ranges::find(kNumbers, array.type_id(), &NumberRow::id);
  if (row != std::ranges::end(kNumbers)) {
    readable.type = row->type;
    readable.data = write_numbers(array, row->class_id);
    return {};
  }
  switch (array.type_id()) {
    case Type::BOOL:
      readable.type = u"logical";
      readable.data = make_packed_logical(copy_bits(*array.data(), 1), readable.length);
      return {};
    case Type::LARGE_STRING:
      readable.type = u"string";
      readable.data = write_packed(*array.data());
      return {};
    case Type::LARGE_BINARY:
      readable.type = u"binary_array";
      readable.data = write_packed(*array.data());
      return {};
    case Type::DICTIONARY:
      readable.type = u"categorical";
      return write_categorical(static_cast<const ::arrow::DictionaryArray&>(array))
          .Value(&readable.data);
    case Type::LARGE_LIST:
      readable.kind = u"list_array";
      readable.type = u"large_list_array";
      return write_lists(static_cast<const ::arrow::LargeListArray&>(array)).Value(&readable.data);
    case Type::STRUCT:
      readable.kind = readable.type = u"struct";
      return write_structs(static_cast<const ::arrow::StructArray&>(array)).Value(&readable.data);
    default:
      return ::arrow::Status::TypeError("Array: found ", array.type()->ToString(),
                                        ", expected a type that host values are read as.");
  }
}

}  // namespace

::arrow::Result<ReadableValue> write_readable(const ::arrow::Array& array) {
  ReadableValue readable{
      .kind = u"array", .type = {}, .data = nullptr, .length = static_cast<size_t>(array.length())};
  ARROW_RETURN_NOT_OK(write_data(array, readable));
  if (array.null_count() > 0) readable.valid = copy_bits(*array.data(), 0);
  return readable;
}

}  // namespace numera::extras::encoding
