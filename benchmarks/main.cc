#include <benchmark/benchmark.h>

#include <vector>

#include "benchmarks/rows.h"

int main(int argc, char** argv) {
  using namespace numera::benchmarks;

  // Defaults, which the caller's own arguments override.
  char repetitions[] = "--benchmark_repetitions=15";
  char interleaving[] = "--benchmark_enable_random_interleaving=true";
  char min_time[] = "--benchmark_min_time=0.05";
  std::vector<char*> arguments = {argv[0], repetitions, interleaving, min_time};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  auto count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  add_numeric_rows();
  add_text_rows();
  add_categorical_rows();
  add_nested_rows();
  add_table_rows();
  add_gateway_rows();
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
}
