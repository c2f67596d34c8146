#include "tools/summary_json.h"

#include <utility>
#include <vector>

#include "tools/json.h"

namespace numera::tools {
namespace {

std::string json_of(const Figures& figures, Figure figure) {
  const auto found = figures.find(figure);
  return found == figures.end() ? "null" : found->second.json;
}

std::string quantiles_json(const Figures& figures) {
  if (!figures.contains(Figure::k50)) return "null";
  return json_object({{"p5", json_of(figures, Figure::k5)},
                      {"p25", json_of(figures, Figure::k25)},
                      {"p50", json_of(figures, Figure::k50)},
                      {"p75", json_of(figures, Figure::k75)},
                      {"p95", json_of(figures, Figure::k95)}});
}

/// The names of the members that are estimates.
std::string estimates_json(const Figures& figures) {
  constexpr std::pair<Figure, const char*> kMembers[] = {{Figure::kDistinct, "distinct"},
                                                         {Figure::k50, "quantiles"},
                                                         {Figure::kHistogram, "histogram"}};
  std::vector<std::string> names;
  for (const auto& [figure, name] : kMembers) {
    const auto found = figures.find(figure);
    if (found != figures.end() && found->second.is_estimate) names.push_back(json_text(name));
  }
  return json_array(names);
}

}  // namespace

std::string summary_json(const ::arrow::Field& column, std::int64_t rows, const Figures& figures) {
  return json_object({{"column", json_text(column.name())},
                      {"arrow_type", json_text(column.type()->ToString())},
                      {"rows", json_number(rows)},
                      {"nulls", json_of(figures, Figure::kNulls)},
                      {"distinct", json_of(figures, Figure::kDistinct)},
                      {"nans", json_of(figures, Figure::kNaN)},
                      {"falses", json_of(figures, Figure::kFalse)},
                      {"trues", json_of(figures, Figure::kTrue)},
                      {"min", json_of(figures, Figure::kMin)},
                      {"max", json_of(figures, Figure::kMax)},
                      {"mean", json_of(figures, Figure::kMean)},
                      {"quantiles", quantiles_json(figures)},
                      {"shortest", json_of(figures, Figure::kShortest)},
                      {"longest", json_of(figures, Figure::kLongest)},
                      {"histogram", json_of(figures, Figure::kHistogram)},
                      {"approximate", estimates_json(figures)}});
}

}  // namespace numera::tools
