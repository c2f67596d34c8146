#include "fuzz/taken_in.h"

#include <arrow/array/array_base.h>
#include <arrow/compare.h>

#include <algorithm>

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

/// Whether a dictionary at any depth holds nulls. The intake moves these to the codes.
bool has_null_categories(const ::arrow::ArrayData& array) {
  const auto& values = array.dictionary;
  if (values != nullptr && (values->GetNullCount() > 0 || has_null_categories(*values)))
    return true;
  return std::ranges::any_of(array.child_data,
                             [](const auto& child) { return has_null_categories(*child); });
}

void check_same(const ::arrow::Table& taken, const ::arrow::Table& given) {
  claim(taken.schema()->Equals(*given.schema()), "without a cast the types stay");
  const auto nans_equal = ::arrow::EqualOptions::Defaults().nans_equal(true);
  for (int i = 0; i < given.num_columns(); ++i) {
    const bool moved = std::ranges::any_of(given.column(i)->chunks(), [](const auto& chunk) {
      return has_null_categories(*chunk->data());
    });
    if (moved) continue;
    claim(taken.column(i)->Equals(*given.column(i), nans_equal), "without a cast the values stay",
          [&] {
            return given.column(i)->ToString() + "\ntaken in as\n" + taken.column(i)->ToString();
          });
  }
}

}  // namespace

void check_taken(const std::shared_ptr<::arrow::Table>& table, bool cast) {
  const testing::ArrayNodes before(*table);
  const auto taken = extras::take_in(table, {.cast = cast});
  claim_only_read(before);
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
