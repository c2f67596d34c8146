#include "numera/extras/encode/encode.h"

#include <string>
#include <utility>

#include "numera/extras/encode/envelope.h"
#include "numera/extras/encode/leaf.h"
#include "numera/extras/encode/readable.h"
#include "numera/extras/in_column.h"
#include "numera/format/records.h"

namespace numera::extras {
namespace {

using namespace encoding;  // NOLINT(google-build-using-namespace): this file is its front

/// Gives the name of column `index` and puts what is read of it into the element of that index.
::arrow::Status encode_column(const Located& names, const Located& columns, size_t index,
                              std::string* name, hxArray* readable) {
  ARROW_ASSIGN_OR_RAISE(const Located slot, cell(names, index));
  ARROW_ASSIGN_OR_RAISE(*name, text_of(slot));
  ARROW_ASSIGN_OR_RAISE(ReadableValue column, read_element(columns, index, 0));
  const bool is_valid = column.is_valid;
  store(readable, index, std::move(column));
  if (is_valid) return {};
  const Located place{columns.value, &columns, nullptr, index};
  return validate(readable, index, place);
}

::arrow::Result<hxArrayPtr> encode_table(const Located& table) {
  ARROW_ASSIGN_OR_RAISE(const Located names, field(table, 0, format::kNames));
  ARROW_RETURN_NOT_OK(check_class(names, hxClassID::Cell, "a cell of names"));
  ARROW_ASSIGN_OR_RAISE(const Located columns, field(table, 0, format::kColumns));
  ARROW_RETURN_NOT_OK(check_class(columns, hxClassID::Struct, "a struct array"));
  const size_t count = hxGetNumberOfElements(columns.value);
  if (hxGetNumberOfElements(names.value) != count) {
    return invalid(names, std::to_string(hxGetNumberOfElements(names.value)) + " names",
                   std::to_string(count) + ", one for each column");
  }
  hxArrayPtr readable = format::make_struct(count, format::kTableColumns);
  for (size_t i = 0; i < count; ++i) {
    hxThrowIfInterruptPending();
    std::string name;
    const ::arrow::Status status = encode_column(names, columns, i, &name, readable.get());
    if (!status.ok()) return in_column(status, name, static_cast<int>(i));
  }
  return format::make_record(format::kTable, format::make_word(format::kTableKind),
                             std::move(readable), hxSharedCopy(names.value));
}

// A buffer has one form.
::arrow::Result<hxArrayPtr> encode_buffer(const Located& buffer) {
  ARROW_ASSIGN_OR_RAISE(const Located values, field(buffer, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values, hxClassID::UInt8, "a uint8 array"));
  return hxSharedCopy(buffer.value);
}

::arrow::Result<hxArrayPtr> encode_written(const Located& value) {
  ARROW_RETURN_NOT_OK(check_one_element(value));
  ARROW_ASSIGN_OR_RAISE(const Located kind, field(value, 0, format::kArrowType));
  ARROW_ASSIGN_OR_RAISE(const std::string name, text_of(kind));
  if (name == format::kTableKind) return encode_table(value);
  if (name == format::kBufferKind) return encode_buffer(value);
  ARROW_ASSIGN_OR_RAISE(Envelope envelope, read_child(value, 0));
  return std::move(envelope.value);
}

}  // namespace

::arrow::Result<hxArrayPtr> encode(const hxArray* value) {
  const Located place{value};
  if (value == nullptr) return invalid(place, "a null pointer", "an array");
  if (has_fields(value) && hxGetFieldNumber(value, format::kArrowType) >= 0)
    return encode_written(place);
  // Ordinary values become forms that are valid by their making.
  ARROW_ASSIGN_OR_RAISE(ReadableValue readable, read_plain(place));
  return make_envelope(std::move(readable)).value;
}

}  // namespace numera::extras
