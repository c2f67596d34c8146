#pragma once

/// \file
/// The rows of the benchmarks: each is a conversion, measured beside its limit, which is the least
/// work that gives the same bytes to the same owner.
///
/// A row makes its result and destroys it. Repetitions of all rows and limits are shuffled, so that
/// whatever else the machine does meets all of them alike.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace numera::benchmarks {

/// Registers NAME, which runs `product`, and "limit/NAME". Both are given what `make_input`
/// returns: it is called once, when the first of them runs, and outside the measured time.
template <class MakeInput, class Product, class Limit>
void add_row(const std::string& name, MakeInput make_input, Product product, Limit limit) {
  using Input = decltype(make_input());
  const auto shared_input = std::make_shared<std::optional<Input>>();
  const auto add = [&](const std::string& full_name, auto run) {
    benchmark::RegisterBenchmark(full_name.c_str(),
                                 [shared_input, make_input, run](benchmark::State& state) {
                                   if (!*shared_input) shared_input->emplace(make_input());
                                   const Input& input = **shared_input;
                                   for ([[maybe_unused]] auto iteration : state) {
                                     auto result = run(input);
                                     benchmark::DoNotOptimize(result);
                                     benchmark::ClobberMemory();
                                   }
                                 });
  };
  add(name, product);
  add("limit/" + name, limit);
}

void add_numeric_rows();
void add_text_rows();
void add_categorical_rows();
void add_nested_rows();
void add_table_rows();
void add_gateway_rows();

/// Keeps the fastest repetition of each row, the one that the machine disturbed least, and prints
/// them at the end: a line a row with its limit and their ratio. Rows run on one thread, and theirs
/// is the time of the processor, system calls included: others who share it do not count.
class RatioReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Row {
    std::string name;
    std::int64_t place;  ///< in the order in which the rows were added
    std::optional<double> seconds;
    std::optional<double> limit_seconds;
  };

  Row& row_of(const Run& run, const std::string& name);

  std::vector<Row> rows_;
};

}  // namespace numera::benchmarks
