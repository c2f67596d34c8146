#include "numera/extras/encode/encode.h"

#include <string>
#include <utility>
#include <vector>

#include "numera/extras/column_status.h"
#include "numera/extras/encode/envelope.h"
#include "numera/extras/encode/leaf.h"
#include "numera/extras/encode/readable.h"
#include "numera/extras/parallel/in_order.h"
#include "numera/format/records.h"

namespace numera::extras {
namespace {

using namespace encoding;  // NOLINT(google-build-using-namespace): the public functions use it

/// Returns the readable envelope of column `index` and stores the column's name in `name`.
::arrow::Result<Envelope> readable_column(const Located& names, const Located& columns,
                                          size_t index, std::string* name) {
  ARROW_ASSIGN_OR_RAISE(const Located slot, cell(names, index));
  ARROW_ASSIGN_OR_RAISE(*name, text_of(slot));
  ARROW_ASSIGN_OR_RAISE(ReadableValue column, read_element(columns, index, 0));
  return checked_envelope(std::move(column), {columns.value, &columns, nullptr, index});
}

/// The columns of a readable table, all of as many elements as the first.
::arrow::Result<hxArrayPtr> join_columns(const Located& columns, std::vector<Envelope> envelopes) {
  hxArrayPtr joined = format::make_struct(envelopes.size(), format::kTableColumns);
  for (size_t i = 0; i < envelopes.size(); ++i) {
    const Located place{columns.value, &columns, nullptr, i};
    if (envelopes[i].length != envelopes[0].length) {
      const auto status = invalid(place, std::to_string(envelopes[i].length) + " elements",
                                  std::to_string(envelopes[0].length) + ", as in the first column");
      return status_of_column(status, columns.column_names[i], static_cast<int>(i));
    }
    const hxArray* const envelope = envelopes[i].value.get();
    for (const char* const field : format::kTableColumns) {
      hxSetField(joined.get(), i, field, hxSharedCopy(hxGetField(envelope, 0, field)));
    }
  }
  return joined;
}

::arrow::Result<hxArrayPtr> readable_table(const Located& table, size_t threads) {
  ARROW_ASSIGN_OR_RAISE(const Located names, field(table, 0, format::kNames));
  ARROW_RETURN_NOT_OK(check_class(names, hxClassID::Cell, "a cell of names"));
  ARROW_ASSIGN_OR_RAISE(Located columns, field(table, 0, format::kColumns));
  ARROW_RETURN_NOT_OK(check_class(columns, hxClassID::Struct, "a struct array"));
  const size_t count = hxGetNumberOfElements(columns.value);
  if (hxGetNumberOfElements(names.value) != count) {
    return invalid(names, std::to_string(hxGetNumberOfElements(names.value)) + " names",
                   std::to_string(count) + ", one for each column");
  }
  std::vector<Envelope> envelopes(count);
  std::vector<std::string> texts(count);
  columns.column_names = texts.data();
  const auto check = [](size_t) { hxThrowIfInterruptPending(); };
  const auto convert = [&](size_t i) -> ::arrow::Status {
    const auto status = readable_column(names, columns, i, &texts[i]).Value(&envelopes[i]);
    return status.ok() ? status : status_of_column(status, texts[i], static_cast<int>(i));
  };
  threads = parallel::thread_count(threads);
  ARROW_RETURN_NOT_OK(parallel::in_order(count, threads, threads, check, convert));
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr readable, join_columns(columns, std::move(envelopes)));
  return format::make_record(format::kTable, format::make_word(format::kTableKind),
                             std::move(readable), hxSharedCopy(names.value));
}

// The written form of a buffer is also its readable form.
::arrow::Result<hxArrayPtr> readable_buffer(const Located& buffer) {
  ARROW_ASSIGN_OR_RAISE(const Located values, field(buffer, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values, hxClassID::UInt8, "a uint8 array"));
  return hxSharedCopy(buffer.value);
}

::arrow::Result<hxArrayPtr> readable_written(const Located& value, size_t threads) {
  ARROW_RETURN_NOT_OK(check_one_element(value));
  ARROW_ASSIGN_OR_RAISE(const Located kind, field(value, 0, format::kArrowType));
  ARROW_ASSIGN_OR_RAISE(const std::string name, text_of(kind));
  if (name == format::kTableKind) return readable_table(value, threads);
  if (name == format::kBufferKind) return readable_buffer(value);
  ARROW_ASSIGN_OR_RAISE(Envelope envelope, read_child(value, 0));
  return std::move(envelope.value);
}

}  // namespace

::arrow::Result<hxArrayPtr> make_readable(const hxArray* value, size_t threads) {
  const Located place{value};
  if (value == nullptr) return invalid(place, "a null pointer", "an array");
  if (has_fields(value) && hxGetFieldNumber(value, format::kArrowType) >= 0)
    return readable_written(place, threads);
  // The readable form of an ordinary value is always valid, so it is not validated.
  ARROW_ASSIGN_OR_RAISE(ReadableValue readable, read_plain(place));
  return make_envelope(std::move(readable)).value;
}

}  // namespace numera::extras
