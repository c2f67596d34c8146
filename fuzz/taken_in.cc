#include "fuzz/taken_in.h"

#include <arrow/array/array_base.h>
#include <arrow/compare.h>

#include "fuzz/claims.h"
#include "fuzz/round_trip.h"
#include "numera/extras/intake/intake.h"

namespace numera::fuzz {
namespace {

void check_no_offset(const ::arrow::ArrayData& array) {
  claim(array.offset == 0, "what is taken in has no offset");
  for (const auto& child : array.child_data) check_no_offset(*child);
  if (array.dictionary != nullptr) check_no_offset(*array.dictionary);
}

void check_same(const ::arrow::Table& taken, const ::arrow::Table& given) {
  claim(taken.schema()->Equals(*given.schema()), "without a cast the types stay");
  const auto nans_equal = ::arrow::EqualOptions::Defaults().nans_equal(true);
  for (int i = 0; i < given.num_columns(); ++i) {
    claim(taken.column(i)->Equals(*given.column(i), nans_equal), "without a cast the values stay",
          [&] {
            return given.column(i)->ToString() + "\ntaken in as\n" + taken.column(i)->ToString();
          });
  }
}

}  // namespace

void check_taken(const std::shared_ptr<::arrow::Table>& table, bool cast) {
  const auto taken = extras::take_in(table, {.cast = cast});
  if (!taken.ok()) return;
  const ::arrow::Status valid = taken->value->ValidateFull();
  claim(valid.ok(), "what is taken in is valid", [&] { return valid.ToString(); });
  for (const auto& column : taken->value->columns()) {
    for (const auto& chunk : column->chunks()) check_no_offset(*chunk->data());
  }
  if (taken->casts.empty()) check_same(*taken->value, *table);
  check_round_trip(taken->value);
  for (const auto& column : taken->value->columns()) check_round_trip(column);
}

}  // namespace numera::fuzz
