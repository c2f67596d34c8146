#include "tools/value_summary.h"

#include "tools/json.h"
#include "tools/text_table.h"

namespace numera::tools {

FigureValue count_figure(std::int64_t count) { return {grouped(count), json_number(count)}; }

FigureValue distinct_figure(const DistinctValues& values) {
  FigureValue figure = count_figure(static_cast<std::int64_t>(values.count()));
  figure.is_estimate = values.has_more();
  if (figure.is_estimate) figure.text.insert(0, "more than ");
  return figure;
}

}  // namespace numera::tools
