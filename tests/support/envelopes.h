#pragma once

/// \file
/// Builders of encoded values and of their parts, based on host_builder.h.
///
/// `Written...` makes the form that `to_numera` writes: all fields, in order. The other envelopes
/// have only the fields that `to_arrow` reads. `...Of` takes a value for every field, so a test can
/// pass wrong ones. A bitmap is given as its bytes; no bytes: nothing is null.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/host_builder.h"

namespace numera::testing {

using Bits = std::vector<std::uint8_t>;

/// \name The fields of records, for struct arrays of several elements
/// @{
using FieldNames = std::vector<const char*>;
inline const FieldNames kEnvelopeFields = {"ArrowType", "Type", "Valid", "Data"};
inline const FieldNames kColumnFields = {"ArrowType", "Type", "Data", "Valid"};
inline const FieldNames kBitmapFields = {"Values", "Length", "ArrowType"};
inline const FieldNames kListFields = {"Values", "StartOffsets"};
inline const FieldNames kStructFields = {"FieldName", "FieldData"};
inline const FieldNames kMapFields = {"Keys", "Values", "StartOffsets"};
/// @}

/// A struct array of these 1-by-1 structs. A field that a struct lacks stays empty.
inline hxArrayPtr StructElements(const Dims& dims, const FieldNames& fields,
                                 const std::vector<hxArrayPtr>& elements) {
  check_element_count(dims, elements.size());
  hxArrayPtr array = hxCreateStructArray(dims, fields);
  size_t slot = 0;
  for (const hxArrayPtr& element : elements) {
    for (const char* field : fields) {
      const hxArray* value = hxGetField(element.get(), 0, field);
      hxSetCell(array.get(), slot++, value == nullptr ? Empty() : hxSharedCopy(value));
    }
  }
  return array;
}

inline hxArrayPtr StructColumn(const FieldNames& fields, const std::vector<hxArrayPtr>& elements) {
  return StructElements({elements.size(), 1}, fields, elements);
}

inline hxArrayPtr StructColumn(const FieldNames& fields, std::initializer_list<Slot> elements) {
  std::vector<hxArrayPtr> all;
  for (const Slot& element : elements) all.push_back(std::move(element.value));
  return StructColumn(fields, all);
}

/// A cell row of char rows.
inline hxArrayPtr Names(const std::vector<std::string>& names) {
  hxArrayPtr row = hxCreateCellArray(Dims{1, names.size()});
  for (size_t i = 0; i < names.size(); ++i) hxSetCell(row.get(), i, Char(names[i]));
  return row;
}

/// \name Buffers, bitmaps and logical values
/// @{
inline hxArrayPtr BufferOf(hxArrayPtr kind, hxArrayPtr values) {
  return Struct({{"ArrowType", std::move(kind)}, {"Values", std::move(values)}});
}

inline hxArrayPtr BufferEnvelope(const Bits& bytes) {
  return BufferOf(Char("buffer"), Column<std::uint8_t>(bytes));
}

inline hxArrayPtr WrittenBufferOf(hxArrayPtr values, hxArrayPtr length) {
  return Struct({{"ArrowType", Char("buffer")},
                 {"Values", std::move(values)},
                 {"Length", std::move(length)}});
}

inline hxArrayPtr WrittenBuffer(const Bits& bytes) {
  return WrittenBufferOf(Column<std::uint8_t>(bytes), Empty());
}

/// The validity bitmap of all chunks of a column.
inline hxArrayPtr WrittenValidity(double length, const Bits& bytes = {}) {
  return WrittenBufferOf(Column<std::uint8_t>(bytes), Scalar(length));
}

inline hxArrayPtr BitmapOf(hxArrayPtr values, hxArrayPtr length, hxArrayPtr kind = Char("buffer")) {
  return Struct({{"Values", std::move(values)},
                 {"Length", std::move(length)},
                 {"ArrowType", std::move(kind)}});
}

/// "Data" of logical values, or the validity bitmap of one chunk of a nested value. Read and
/// written alike.
inline hxArrayPtr WrittenBitmap(double length, const Bits& bytes = {}) {
  return BitmapOf(Column<std::uint8_t>(bytes), Scalar(length));
}
/// @}

/// \name "Data". Written and read in the same form; but dates and maps are only written, `TextData`
/// is only read, and timestamps have two forms.
/// @{

/// One chunk of lists. Packed texts and bytes have the same two fields.
inline hxArrayPtr ListData(hxArrayPtr values, hxArrayPtr offsets) {
  return Struct({{"Values", std::move(values)}, {"StartOffsets", std::move(offsets)}});
}

/// Packed texts or bytes, the form that `to_arrow` reads.
inline hxArrayPtr TextData(std::string_view bytes, const std::vector<std::uint64_t>& offsets) {
  return ListData(Column<std::uint8_t>({bytes.begin(), bytes.end()}),
                  Column<std::uint64_t>(offsets));
}

/// One chunk of structs.
inline hxArrayPtr StructData(hxArrayPtr names, hxArrayPtr children) {
  return Struct({{"FieldName", std::move(names)}, {"FieldData", std::move(children)}});
}

inline hxArrayPtr StructData(const std::vector<std::string>& names,
                             std::initializer_list<Slot> children) {
  return StructData(Names(names), Cell({1, children.size()}, children));
}

inline hxArrayPtr StructData(const std::vector<std::string>& names,
                             std::vector<hxArrayPtr> children) {
  hxArrayPtr row = hxCreateCellArray(Dims{1, children.size()});
  for (size_t i = 0; i < children.size(); ++i) hxSetCell(row.get(), i, std::move(children[i]));
  return StructData(Names(names), std::move(row));
}

/// One chunk of maps.
inline hxArrayPtr MapData(hxArrayPtr keys, hxArrayPtr values, hxArrayPtr offsets) {
  return Struct({{"Keys", std::move(keys)},
                 {"Values", std::move(values)},
                 {"StartOffsets", std::move(offsets)}});
}

inline hxArrayPtr CategoricalData(hxArrayPtr categories, hxArrayPtr codes, hxArrayPtr ordinal) {
  return Struct({{"Categories", std::move(categories)},
                 {"Values", std::move(codes)},
                 {"Ordinal", std::move(ordinal)}});
}

inline hxArrayPtr DateData(hxArrayPtr values) {
  return Struct({{"Values", std::move(values)}, {"DateType", Char("Date")}});
}

inline hxArrayPtr TimeData(hxArrayPtr values, hxArrayPtr units) {
  return Struct({{"Values", std::move(values)}, {"Units", std::move(units)}});
}

inline hxArrayPtr TimestampData(hxArrayPtr values, hxArrayPtr units, hxArrayPtr time_zone) {
  return Struct({{"Values", std::move(values)},
                 {"Units", std::move(units)},
                 {"TimeZone", std::move(time_zone)}});
}

inline hxArrayPtr WrittenTimestampData(hxArrayPtr values, hxArrayPtr units, hxArrayPtr time_zone) {
  return Struct({{"Values", std::move(values)},
                 {"Units", std::move(units)},
                 {"TimeZone", std::move(time_zone)},
                 {"DateType", Char("Timestamp")}});
}
/// @}

/// \name Encoded arrays
/// @{
inline hxArrayPtr EnvelopeOf(hxArrayPtr kind, hxArrayPtr type, hxArrayPtr valid, hxArrayPtr data) {
  return Struct({{"ArrowType", std::move(kind)},
                 {"Type", std::move(type)},
                 {"Valid", std::move(valid)},
                 {"Data", std::move(data)}});
}

inline hxArrayPtr KindEnvelope(std::string_view kind, std::string_view type, hxArrayPtr data,
                               const Bits& valid = {}) {
  return EnvelopeOf(Char(kind), Char(type), BufferEnvelope(valid), std::move(data));
}

/// The kind "array".
inline hxArrayPtr Envelope(std::string_view type, hxArrayPtr data, const Bits& valid = {}) {
  return KindEnvelope("array", type, std::move(data), valid);
}

inline hxArrayPtr ListEnvelope(hxArrayPtr values, hxArrayPtr offsets, const Bits& valid = {}) {
  return KindEnvelope("list_array", "list_array", ListData(std::move(values), std::move(offsets)),
                      valid);
}

inline hxArrayPtr StructEnvelope(const std::vector<std::string>& names,
                                 std::initializer_list<Slot> children, const Bits& valid = {}) {
  return KindEnvelope("struct", "struct", StructData(names, children), valid);
}

/// Any kind, with any "Valid".
inline hxArrayPtr WrittenEnvelope(std::string_view kind, std::string_view type, hxArrayPtr valid,
                                  hxArrayPtr data) {
  return EnvelopeOf(Char(kind), Char(type), std::move(valid), std::move(data));
}

/// The kind "array".
inline hxArrayPtr WrittenArray(std::string_view type, double length, hxArrayPtr data,
                               const Bits& valid = {}) {
  return WrittenEnvelope("array", type, WrittenValidity(length, valid), std::move(data));
}

/// One chunk of a nested kind.
inline hxArrayPtr WrittenNested(std::string_view kind, std::string_view type, double length,
                                hxArrayPtr data, const Bits& valid = {}) {
  return WrittenEnvelope(kind, type, WrittenBitmap(length, valid), std::move(data));
}

/// An encoded array of numbers. "Type" is the name of their class.
template <class T>
hxArrayPtr Numbers(const std::vector<T>& values, const Bits& valid = {}) {
  hxArrayPtr data = Column<T>(values);
  const std::string type = hxGetClassName(data.get());
  return Envelope(type, std::move(data), valid);
}

template <class T>
hxArrayPtr WrittenNumbers(const std::vector<T>& values, const Bits& valid = {}) {
  hxArrayPtr data = Column<T>(values);
  const std::string type = hxGetClassName(data.get());
  return WrittenArray(type, static_cast<double>(values.size()), std::move(data), valid);
}
/// @}

/// \name Tables
/// @{
inline hxArrayPtr TableOf(hxArrayPtr kind, hxArrayPtr names, hxArrayPtr columns) {
  return Struct({{"ArrowType", std::move(kind)},
                 {"Columns", std::move(columns)},
                 {"Names", std::move(names)}});
}

inline hxArrayPtr TableEnvelope(hxArrayPtr names, hxArrayPtr columns) {
  return TableOf(Char("table"), std::move(names), std::move(columns));
}

inline hxArrayPtr TableEnvelope(const std::vector<std::string>& names,
                                std::initializer_list<Slot> columns) {
  return TableEnvelope(Names(names), StructColumn(kColumnFields, columns));
}
/// @}

}  // namespace numera::testing
