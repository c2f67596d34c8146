#include "benchmarks/rows.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

namespace numera::benchmarks {
namespace {

constexpr std::string_view kLimit = "limit/";

std::string in_microseconds(const std::optional<double>& seconds) {
  if (!seconds) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", *seconds * 1e6);
  return text;
}

}  // namespace

bool RatioReporter::ReportContext(const Context& context) {
  PrintBasicContext(&GetErrorStream(), context);
  return true;
}

RatioReporter::Row& RatioReporter::row_of(const Run& run, const std::string& name) {
  const auto found = std::ranges::find(rows_, name, &Row::name);
  return found != rows_.end() ? *found : rows_.emplace_back(Row{name, run.family_index, {}, {}});
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration) continue;
    std::string name = run.run_name.function_name;
    const bool is_limit = name.starts_with(kLimit);
    if (is_limit) name.erase(0, kLimit.size());
    Row& row = row_of(run, name);
    std::optional<double>& fastest = is_limit ? row.limit_seconds : row.seconds;
    const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
    fastest = std::min(fastest.value_or(seconds), seconds);
  }
}

void RatioReporter::Finalize() {
  std::ranges::sort(rows_, {}, &Row::place);
  std::ostream& out = GetOutputStream();
  char line[128];
  std::snprintf(line, sizeof line, "%-32s %12s %12s %8s\n", "row", "us", "limit us", "ratio");
  out << line;
  for (const Row& row : rows_) {
    char ratio[32] = "-";
    if (row.seconds && row.limit_seconds) {
      std::snprintf(ratio, sizeof ratio, "%.2f", *row.seconds / *row.limit_seconds);
    }
    std::snprintf(line, sizeof line, "%-32s %12s %12s %8s\n", row.name.c_str(),
                  in_microseconds(row.seconds).c_str(), in_microseconds(row.limit_seconds).c_str(),
                  ratio);
    out << line;
  }
}

}  // namespace numera::benchmarks
