// Measures the rows whose names match. Prints one line per row and writes all repetitions as JSON.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/rows.h"

namespace numera::benchmarks {
namespace {

struct Options {
  bool quick = false;
  bool list = false;
  std::string rows = ".*";  ///< a regular expression for the whole name
  std::string json;         ///< the file to write
  std::vector<char*> rest;  ///< arguments for the benchmark library
};

constexpr const char* kUsage =
    "usage: numera_benchmarks [--quick] [--list] [--rows=REGEX] [--json=FILE] "
    "[--benchmark_...]\n";

Options read_options(int argc, char** argv) {
  Options options;
  options.rest.push_back(argv[0]);
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--quick") {
      options.quick = true;
    } else if (argument == "--list") {
      options.list = true;
    } else if (argument.starts_with("--rows=")) {
      options.rows = argument.substr(7);
    } else if (argument.starts_with("--json=")) {
      options.json = argument.substr(7);
    } else {
      options.rest.push_back(argv[i]);
    }
  }
  return options;
}

/// Passes defaults to the benchmark library. The caller's own arguments override them.
bool initialize(Options& options) {
  static char repetitions[] = "--benchmark_repetitions=7";
  static char one_repetition[] = "--benchmark_repetitions=1";
  static char interleaving[] = "--benchmark_enable_random_interleaving=true";
  // At least one round that is not timed, because its memory is fresh.
  static char warmup[] = "--benchmark_min_warmup_time=0.001";
  static char min_time[] = "--benchmark_min_time=0.02";
  static char short_min_time[] = "--benchmark_min_time=0.0005";
  std::vector<char*> arguments = options.rest;
  arguments.insert(arguments.begin() + 1,
                   {options.quick ? one_repetition : repetitions, interleaving, warmup,
                    options.quick ? short_min_time : min_time});
  auto count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  return !benchmark::ReportUnrecognizedArguments(count, arguments.data());
}

void print(const Measurement& row) {
  std::printf("%-38s %11.5f %11.5f", row.name.c_str(), median(row.ours), minimum(row.ours));
  if (row.limit.empty()) {
    std::printf(" %11s %6s", "-", "-");
  } else {
    std::printf(" %11.5f %6.2f", median(row.limit), median(row.ours) / median(row.limit));
  }
  std::printf(" %11.5f\n", median(row.warm_copy));
  std::fflush(stdout);
}

void write_times(std::ostream& out, const char* name, const Times& times) {
  out << ", \"" << name << "\": [";
  const char* separator = "";
  for (const double time : times) {
    out << separator << time;
    separator = ", ";
  }
  out << "]";
}

void write_json(std::ostream& out, const std::vector<Measurement>& rows) {
  out.precision(9);
  out << "[";
  const char* separator = "\n";
  for (const Measurement& row : rows) {
    out << separator << "{\"name\": \"" << row.name << "\", \"elements\": " << row.elements
        << ", \"bytes\": " << row.bytes;
    write_times(out, "ours", row.ours);
    write_times(out, "limit", row.limit);
    write_times(out, "warm_copy", row.warm_copy);
    write_times(out, "freeing", row.freeing);
    out << "}";
    separator = ",\n";
  }
  out << "\n]\n";
}

int run(Options options) {
  if (!initialize(options)) {
    std::cerr << kUsage;
    return 2;
  }
  const std::regex wanted(options.rows);
  std::vector<Measurement> measured;
  for (const Row& row : all_rows(options.quick)) {
    if (!std::regex_match(row.name, wanted)) continue;
    if (options.list) {
      std::cout << row.name << "\n";
      continue;
    }
    if (measured.empty()) {
      std::printf("%-38s %11s %11s %11s %6s %11s\n", "row (milliseconds)", "median", "minimum",
                  "limit", "ratio", "warm copy");
    }
    measured.push_back(measure(row, row.name == "to_host/binary"));
    print(measured.back());
  }
  if (options.json.empty()) return 0;
  std::ofstream out(options.json);
  write_json(out, measured);
  out.flush();
  return out ? 0 : 1;
}

}  // namespace
}  // namespace numera::benchmarks

int main(int argc, char** argv) {
  return numera::benchmarks::run(numera::benchmarks::read_options(argc, argv));
}
