#include "tools/summary_json.h"

#include <utility>
#include <vector>

#include "tools/json.h"

namespace numera::tools {
namespace {

std::string figure_json(const Figures& figures, Figure figure) {
  const auto found = figures.find(figure);
  return found == figures.end() ? "null" : found->second.json;
}

std::string quantiles_json(const Figures& figures) {
  if (!figures.contains(Figure::k50)) return "null";
  return json_object({{"p5", figure_json(figures, Figure::k5)},
                      {"p25", figure_json(figures, Figure::k25)},
                      {"p50", figure_json(figures, Figure::k50)},
                      {"p75", figure_json(figures, Figure::k75)},
                      {"p95", figure_json(figures, Figure::k95)}});
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
                      {"nulls", figure_json(figures, Figure::kNulls)},
                      {"distinct", figure_json(figures, Figure::kDistinct)},
                      {"nans", figure_json(figures, Figure::kNaN)},
                      {"falses", figure_json(figures, Figure::kFalse)},
                      {"trues", figure_json(figures, Figure::kTrue)},
                      {"min", figure_json(figures, Figure::kMin)},
                      {"max", figure_json(figures, Figure::kMax)},
                      {"mean", figure_json(figures, Figure::kMean)},
                      {"quantiles", quantiles_json(figures)},
                      {"shortest", figure_json(figures, Figure::kShortest)},
                      {"longest", figure_json(figures, Figure::kLongest)},
                      {"histogram", figure_json(figures, Figure::kHistogram)},
                      {"approximate", estimates_json(figures)}});
}

}  // namespace numera::tools
