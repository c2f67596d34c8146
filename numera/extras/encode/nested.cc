#include "numera/extras/encode/nested.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "numera/extras/encode/envelope.h"
#include "numera/extras/encode/join.h"
#include "numera/format/records.h"

namespace numera::extras::encoding {
namespace {

// Checks that offsets never decrease and are at most `values`, the number of elements.
template <class T>
::arrow::Status check_offsets(const Located& offsets, size_t values) {
  const std::span source(format::elements<T>(offsets.value), hxGetNumberOfElements(offsets.value));
  std::uint64_t last = 0;
  for (size_t i = 0; i < source.size(); ++i) {
    // A negative offset becomes a huge unsigned number and fails the check.
    const auto offset = static_cast<std::uint64_t>(source[i]);
    if (offset < last || offset > values) {
      return invalid(offsets,
                     "offset " + std::to_string(source[i]) + " at index " + std::to_string(i),
                     "offsets from 0 to " + std::to_string(values) + " that never decrease");
    }
    last = offset;
  }
  return {};
}

template <class T>
::arrow::Result<hxArrayPtr> widen(const Located& offsets, size_t values) {
  ARROW_RETURN_NOT_OK(check_offsets<T>(offsets, values));
  const std::span source(format::elements<T>(offsets.value), hxGetNumberOfElements(offsets.value));
  hxArrayPtr widened = format::make_column(hxClassID::UInt64, source.size());
  std::ranges::transform(source, format::elements<std::uint64_t>(widened),
                         [](T offset) { return static_cast<std::uint64_t>(offset); });
  return widened;
}

// Checks offsets and converts them to uint64, the class that `to_arrow` requires.
::arrow::Result<hxArrayPtr> read_offsets(const Located& offsets, size_t values) {
  ARROW_RETURN_NOT_OK(check_numbers(offsets));
  if (hxIsEmpty(offsets.value)) {
    return invalid(offsets, "no elements", "one more than there are lists");
  }
  const hxClassID class_id = hxGetClassID(offsets.value);
  if (class_id == hxClassID::Int32) return widen<std::int32_t>(offsets, values);
  if (class_id == hxClassID::Int64) return widen<std::int64_t>(offsets, values);
  if (class_id != hxClassID::UInt64) {
    return wrong_class(offsets, "an int32, int64 or uint64 array");
  }
  ARROW_RETURN_NOT_OK(check_offsets<std::uint64_t>(offsets, values));
  return hxSharedCopy(offsets.value);
}

// Makes one chunk of lists. `values` is already in readable form.
::arrow::Result<ReadableValue> make_lists(const Encoded& encoded, size_t chunk, Envelope values) {
  ARROW_ASSIGN_OR_RAISE(const Located offsets, field(encoded.data, chunk, format::kStartOffsets));
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr widened, read_offsets(offsets, values.length));
  const size_t length = hxGetNumberOfElements(widened.get()) - 1;
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr valid, read_validity(encoded.valid, chunk, length));
  hxArrayPtr data =
      format::make_record(format::kLists, std::move(values.value), std::move(widened));
  return ReadableValue{.type = format::kLargeListType,
                       .data = std::move(data),
                       .length = length,
                       .valid = std::move(valid),
                       .kind = format::kListKind};
}

// Makes the entries of maps: structs of key and value, none of them null.
Envelope make_entries(Envelope keys, Envelope items) {
  hxArrayPtr names = format::make_cell(1, 2);
  hxSetCell(names.get(), 0, format::make_word(format::kKey));
  hxSetCell(names.get(), 1, format::make_word(format::kValue));
  hxArrayPtr children = format::make_cell(1, 2);
  hxSetCell(children.get(), 0, std::move(keys.value));
  hxSetCell(children.get(), 1, std::move(items.value));
  hxArrayPtr data = format::make_record(format::kStructs, std::move(names), std::move(children));
  return make_envelope({.type = format::kStructType,
                        .data = std::move(data),
                        .length = keys.length,
                        .kind = format::kStructKind});
}

::arrow::Status check_length(const Located& place, size_t length, size_t expected,
                             std::string_view why) {
  if (length == expected) return {};
  return invalid(place, std::to_string(length) + " elements",
                 std::to_string(expected) + ", " + std::string(why));
}

// Reads the child in field `name` of a chunk.
::arrow::Result<Envelope> read_chunk_child(const Encoded& encoded, size_t chunk, const char* name,
                                           int level) {
  ARROW_ASSIGN_OR_RAISE(const Located place, field(encoded.data, chunk, name));
  return read_child(place, level);
}

::arrow::Result<ReadableValue> read_list_chunk(const Encoded& encoded, size_t chunk, int level) {
  ARROW_ASSIGN_OR_RAISE(Envelope child, read_chunk_child(encoded, chunk, format::kValues, level));
  return make_lists(encoded, chunk, std::move(child));
}

::arrow::Result<ReadableValue> make_maps(const Encoded& encoded, size_t chunk, Envelope keys,
                                         Envelope items) {
  ARROW_ASSIGN_OR_RAISE(const Located place, field(encoded.data, chunk, format::kValues));
  ARROW_RETURN_NOT_OK(check_length(place, items.length, keys.length, "one for each key"));
  return make_lists(encoded, chunk, make_entries(std::move(keys), std::move(items)));
}

::arrow::Result<ReadableValue> read_map_chunk(const Encoded& encoded, size_t chunk, int level) {
  ARROW_ASSIGN_OR_RAISE(Envelope keys, read_chunk_child(encoded, chunk, format::kKeys, level + 1));
  ARROW_ASSIGN_OR_RAISE(Envelope items,
                        read_chunk_child(encoded, chunk, format::kValues, level + 1));
  return make_maps(encoded, chunk, std::move(keys), std::move(items));
}

struct StructFields {
  Located names;
  Located children;
};

// Checks that there is at least one child, one name per child, and that every name is a text.
::arrow::Result<StructFields> find_fields(const Encoded& encoded, size_t chunk) {
  ARROW_ASSIGN_OR_RAISE(const Located names, field(encoded.data, chunk, format::kFieldName));
  ARROW_RETURN_NOT_OK(check_class(names, hxClassID::Cell, "a cell of names"));
  ARROW_ASSIGN_OR_RAISE(const Located children, field(encoded.data, chunk, format::kFieldData));
  ARROW_RETURN_NOT_OK(check_class(children, hxClassID::Cell, "a cell of encoded arrays"));
  const size_t count = hxGetNumberOfElements(children.value);
  if (count == 0) return invalid(children, "no fields", "at least one");
  if (hxGetNumberOfElements(names.value) != count) {
    return invalid(names, std::to_string(hxGetNumberOfElements(names.value)) + " names",
                   std::to_string(count) + ", one for each field");
  }
  for (size_t i = 0; i < count; ++i) {
    ARROW_ASSIGN_OR_RAISE(const Located name, cell(names, i));
    ARROW_RETURN_NOT_OK(text_of(name));
  }
  return StructFields{names, children};
}

::arrow::Result<Envelope> read_cell_child(const Located& children, size_t i, int level) {
  ARROW_ASSIGN_OR_RAISE(const Located place, cell(children, i));
  return read_child(place, level);
}

// Reads the children of one chunk of structs. All must have the length of the first.
::arrow::Result<Envelope> read_children(const Located& children, int level) {
  const size_t count = hxGetNumberOfElements(children.value);
  Envelope readable{format::make_cell(1, count)};
  for (size_t i = 0; i < count; ++i) {
    ARROW_ASSIGN_OR_RAISE(Envelope child, read_cell_child(children, i, level));
    if (i == 0) readable.length = child.length;
    const Located place{hxGetCell(children.value, i), &children, nullptr, i};
    ARROW_RETURN_NOT_OK(
        check_length(place, child.length, readable.length, "as in the first field"));
    hxSetCell(readable.value.get(), i, std::move(child.value));
  }
  return readable;
}

::arrow::Result<ReadableValue> make_structs(const Encoded& encoded, size_t chunk,
                                            const hxArray* names, Envelope children) {
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr valid, read_validity(encoded.valid, chunk, children.length));
  hxArrayPtr data =
      format::make_record(format::kStructs, hxSharedCopy(names), std::move(children.value));
  return ReadableValue{.type = format::kStructType,
                       .data = std::move(data),
                       .length = children.length,
                       .valid = std::move(valid),
                       .kind = format::kStructKind};
}

::arrow::Result<ReadableValue> read_struct_chunk(const Encoded& encoded, size_t chunk, int level) {
  ARROW_ASSIGN_OR_RAISE(const StructFields fields, find_fields(encoded, chunk));
  ARROW_ASSIGN_OR_RAISE(Envelope children, read_children(fields.children, level));
  return make_structs(encoded, chunk, fields.names.value, std::move(children));
}

}  // namespace

::arrow::Result<ReadableValue> read_lists(const Encoded& encoded, int level) {
  return read_chunks(encoded, read_list_chunk, level);
}

::arrow::Result<ReadableValue> read_structs(const Encoded& encoded, int level) {
  return read_chunks(encoded, read_struct_chunk, level);
}

::arrow::Result<ReadableValue> read_maps(const Encoded& encoded, int level) {
  return read_chunks(encoded, read_map_chunk, level);
}

}  // namespace numera::extras::encoding
