#include "tools/way_back.h"

#include "numera/extras/encode/encode.h"
#include "numera/numera.h"
#include "tools/compare.h"
#include "tools/json.h"
#include "tools/text_table.h"

namespace numera::tools {
namespace {

std::vector<std::string> describe(const std::vector<extras::IntakeCast>& casts) {
  std::vector<std::string> texts;
  texts.reserve(casts.size());
  for (const extras::IntakeCast& cast : casts) texts.push_back(extras::to_string(cast));
  return texts;
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
  std::string text;
  for (const std::string& cast : casts) text += "cast " + cast + ", ";
  text += checked ? "equal" : "not checked";
  return text + (same_type(went, *returned) ? "" : " as " + returned->ToString());
}

std::string WayBack::json(const ::arrow::Field& column, std::int64_t rows,
                          std::int64_t chunks) const {
  const auto host_class = io::arrow::core::to_numera_datatype(column.type());
  const char* verdict = !failure.empty() ? "failed" : checked ? "equal" : "not checked";
  std::vector<std::string> made;
  made.reserve(casts.size());
  for (const std::string& cast : casts) made.push_back(json_text(cast));
  return json_object(
      {{"column", json_text(column.name())},
       {"arrow_type", json_text(column.type()->ToString())},
       {"encoded_type", encoded_type == "-" ? "null" : json_text(encoded_type)},
       {"host_class", json_text_or_null(host_class)},
       {"rows", json_number(rows)},
       {"chunks", json_number(chunks)},
       {"nulls", json_number(nulls)},
       {"way_back", json_text(verdict)},
       {"returned_type", returned == nullptr ? "null" : json_text(returned->ToString())},
       {"casts", json_array(made)},
       {"reason", failure.empty() ? "null" : json_text(failure)}});
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
