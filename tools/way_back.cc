#include "tools/way_back.h"

#include "numera/extras/encode/encode.h"
#include "tools/compare.h"
#include "tools/text_table.h"

namespace numera::tools {
namespace {

std::string describe(const std::vector<extras::IntakeCast>& casts) {
  std::string text;
  for (const extras::IntakeCast& cast : casts) text += "cast " + extras::to_string(cast) + ", ";
  return text;
}

std::string compare(const ::arrow::Array& went, const ::arrow::Array& came,
                    std::int64_t rows_before) {
  if (!extras::returns_as(*went.type(), *came.type())) {
    return "returns as " + came.type()->ToString();
  }
  const auto row = first_differing_row(went, came);
  return row ? "differs in row " + grouped(rows_before + *row) : "";
}

}  // namespace

void WayBack::add(const std::shared_ptr<::arrow::Array>& input, const Trip& trip,
                  std::int64_t rows_before, bool check) {
  nulls += input->null_count();
  if (!failure.empty()) return;
  failure = trip.refusal;
  if (!failure.empty()) return;
  encoded_type = trip.encoded_type;
  casts = describe(trip.casts);
  returned = trip.back->type();
  checked = check;
  if (check) failure = compare(trip.casts.empty() ? *input : *trip.taken, *trip.back, rows_before);
}

std::string WayBack::text(const ::arrow::DataType& went) const {
  if (left_out) return "left out";
  if (!failure.empty()) return failure;
  const std::string verdict = checked ? "equal" : "not checked";
  return casts + verdict + (same_type(went, *returned) ? "" : " as " + returned->ToString());
}

bool same_type(const ::arrow::DataType& one, const ::arrow::DataType& other) {
  if (one.id() != other.id() || one.num_fields() != other.num_fields()) return false;
  if (one.num_fields() == 0) return one.Equals(other);
  for (int i = 0; i < one.num_fields(); ++i) {
    const bool named = one.id() == ::arrow::Type::STRUCT;
    if (named && one.field(i)->name() != other.field(i)->name()) return false;
    if (!same_type(*one.field(i)->type(), *other.field(i)->type())) return false;
  }
  return one.id() == ::arrow::Type::STRUCT || one.id() == ::arrow::Type::LARGE_LIST;
}

}  // namespace numera::tools
