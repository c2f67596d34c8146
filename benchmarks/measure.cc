#include "benchmarks/measure.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace numera::benchmarks {
namespace {

constexpr const char* kOurs = "ours";
constexpr const char* kLimit = "limit";
constexpr const char* kWarmCopy = "warm_copy";
constexpr const char* kFreeing = "freeing";

/// Collects the repetitions of the four measurements of a row.
class Collector : public benchmark::BenchmarkReporter {
 public:
  Collector(Measurement& measurement, bool by_clock)
      : measurement_(measurement), by_clock_(by_clock) {}

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const double seconds = by_clock_ ? run.real_accumulated_time : run.cpu_accumulated_time;
      times_of(run.run_name.function_name)
          .push_back(seconds / static_cast<double>(run.iterations) * 1e3);
    }
  }

 private:
  Times& times_of(const std::string& name) {
    if (name == kOurs) return measurement_.ours;
    if (name == kLimit) return measurement_.limit;
    return name == kWarmCopy ? measurement_.warm_copy : measurement_.freeing;
  }

  Measurement& measurement_;
  bool by_clock_;
};

Measured raw_copy(std::int64_t bytes) {
  const auto size = static_cast<size_t>(bytes);
  const auto source = std::make_shared<std::vector<char>>(size, 'a');
  const auto target = std::make_shared<std::vector<char>>(size, 'b');
  return [=](benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
      std::memcpy(target->data(), source->data(), size);
      benchmark::ClobberMemory();
    }
  };
}

Measured freeing(const ReadyRow& ready) {
  return [make = ready.make](benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
      state.PauseTiming();
      auto result = make();
      state.ResumeTiming();
      result.reset();
    }
  };
}

void add(const char* name, const Measured& measured) {
  benchmark::RegisterBenchmark(name, measured)->MeasureProcessCPUTime();
}

}  // namespace

Measurement measure(const Row& row, bool with_freeing) {
  const ReadyRow ready = row.prepare();
  add(kOurs, ready.product);
  if (ready.limit) add(kLimit, ready.limit);
  add(kWarmCopy, raw_copy(ready.bytes));
  if (with_freeing) add(kFreeing, freeing(ready));
  Measurement measurement{row.name, ready.elements, ready.bytes, {}, {}, {}, {}};
  Collector collector(measurement, row.by_clock);
  benchmark::RunSpecifiedBenchmarks(&collector);
  benchmark::ClearRegisteredBenchmarks();
  return measurement;
}

double median(Times times) {
  const auto middle = times.begin() + (static_cast<std::ptrdiff_t>(times.size()) - 1) / 2;
  std::ranges::nth_element(times, middle);
  return *middle;
}

double minimum(const Times& times) { return *std::ranges::min_element(times); }

}  // namespace numera::benchmarks
