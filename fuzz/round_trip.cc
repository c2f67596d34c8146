#include "fuzz/round_trip.h"

#include <arrow/array/array_base.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <algorithm>
#include <string>
#include <utility>

#include "fuzz/arrow_copies.h"
#include "fuzz/claims.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/host/text_codec.h"
#include "tests/extras/encode/same_values.h"
#include "tests/support/icu.h"

namespace numera::fuzz {
namespace {

using ::arrow::DataType;
using io::arrow::core::to_numera;

bool is_utf8(const std::string& text) { return testing::IcuToUtf16(text).has_value(); }

/// Whether all field names are UTF-8. The host stores them as text.
bool names_are_utf8(const DataType& type) {
  return std::ranges::all_of(type.fields(), [](const auto& field) {
    return is_utf8(field->name()) && names_are_utf8(*field->type());
  });
}

/// Null if a name is not UTF-8. No other failure is allowed.
template <class Value>
hxArrayPtr to_host(const std::shared_ptr<Value>& value, bool names_are_text) {
  const testing::ArrayNodes before(*value);
  try {
    auto written = to_numera(value);
    claim_only_read(before);
    claim(written.ok(), "what is fit gets to the host",
          [&] { return written.status().ToString() + "\n" + value->ToString(); });
    return std::move(written).ValueUnsafe();
  } catch (const hxCodecError& error) {
    claim_only_read(before);
    claim(!names_are_text, "names that are text get to the host", [&] { return error.what(); });
    return nullptr;
  }
}

void check_returned(const ::arrow::ChunkedArray& column, const ::arrow::Array& back) {
  claim(extras::returns_as(*column.type(), *back.type()), "the type is one that returns",
        [&] { return column.type()->ToString() + " returned as " + back.type()->ToString(); });
  // The comparison reads elements in place, so it gets an aligned copy.
  const auto same = testing::SameValues(*exact_copy(column, 0), back);
  claim(static_cast<bool>(same), "the values return", [&] {
    return column.type()->ToString() + ": " + same.message() + "\n" + column.ToString() +
           "\nreturned\n" + back.ToString();
  });
}

/// The readable form of `written`; null if it is refused, which `may_fail` must allow.
hxArrayPtr readable_form(const hxArray* written, bool may_fail, const std::string& subject) {
  auto readable = extras::make_readable(written);
  if (!readable.ok()) {
    claim(may_fail, "what is written has a readable form", [&] {
      return readable.status().ToString() + "\n" + subject + "\n" + extras::print(written);
    });
    return nullptr;
  }
  return std::move(readable).ValueUnsafe();
}

}  // namespace

std::shared_ptr<::arrow::Array> read_valid(const hxArray* readable) {
  auto array = io::arrow::core::to_arrow<::arrow::Array>(readable);
  claim(array.ok(), "what is readable is read",
        [&] { return array.status().ToString() + "\n" + extras::print(readable); });
  const ::arrow::Status valid = (*array)->ValidateFull();
  claim(valid.ok(), "what is readable gives a valid array",
        [&] { return valid.ToString() + "\n" + extras::print(readable); });
  return *array;
}

void check_round_trip(const std::shared_ptr<::arrow::ChunkedArray>& column) {
  const hxArrayPtr written = to_host(column, names_are_utf8(*column->type()));
  if (written == nullptr) return;
  const hxArrayPtr readable = readable_form(written.get(), !extras::returned_type(*column->type()),
                                            column->type()->ToString());
  if (readable == nullptr) return;
  check_returned(*column, *read_valid(readable.get()));
}

void check_round_trip(const std::shared_ptr<::arrow::Table>& table) {
  bool names_are_text = true;
  bool may_fail = false;
  for (int i = 0; i < table->num_columns(); ++i) {
    names_are_text = names_are_text && is_utf8(table->field(i)->name()) &&
                     names_are_utf8(*table->field(i)->type());
    may_fail = may_fail || !extras::returned_type(*table->field(i)->type());
  }
  const hxArrayPtr written = to_host(table, names_are_text);
  if (written == nullptr) return;
  const hxArrayPtr readable = readable_form(written.get(), may_fail, table->schema()->ToString());
  if (readable == nullptr) return;
  const auto back = io::arrow::core::to_arrow_table(readable.get());
  claim(back.ok(), "a readable table is read", [&] { return back.status().ToString(); });
  claim((*back)->ColumnNames() == table->ColumnNames(), "the names of columns return");
  for (int i = 0; i < table->num_columns(); ++i) {
    const ::arrow::Array& column = *(*back)->column(i)->chunk(0);
    claim(column.ValidateFull().ok(), "columns of a readable table are valid");
    check_returned(*table->column(i), column);
  }
}

}  // namespace numera::fuzz
