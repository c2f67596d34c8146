#pragma once

/// \file
/// The rows of the benchmarks. Each row is a conversion, measured beside its limit: the least work
/// that gives the same bytes to the same owner.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "benchmarks/sizes.h"

namespace numera::benchmarks {

using Measured = std::function<void(benchmark::State&)>;

/// A row with its input. All functions share the input.
struct ReadyRow {
  std::int64_t elements;
  std::int64_t bytes;  ///< size of the input values
  Measured product;
  Measured limit;                               ///< none if there is nothing to compare with
  std::function<std::shared_ptr<void>()> make;  ///< makes one result; the pointer owns it
};

struct Row {
  std::string name;
  bool by_clock = false;  ///< wall-clock time; processor time does not fit several threads
  std::function<ReadyRow()> prepare;
};

/// Repeatedly makes a result and destroys it.
template <class Input, class Work>
Measured repeat(std::shared_ptr<const Input> input, Work work) {
  return [input = std::move(input), work](benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
      auto result = work(*input);
      benchmark::DoNotOptimize(result);
      benchmark::ClobberMemory();
    }
  };
}

/// A row that runs `product` and `limit`, each on what `make_input` returns. For a table, the row
/// counts the elements of the table instead of `elements`.
template <class MakeInput, class Product, class Limit = std::nullptr_t>
Row make_row(std::string name, std::int64_t elements, MakeInput make_input, Product product,
             Limit limit = nullptr) {
  const auto prepare = [=]() -> ReadyRow {
    using Input = decltype(make_input());
    using Result = decltype(product(std::declval<const Input&>()));
    const auto input = std::make_shared<const Input>(make_input());
    ReadyRow row;
    row.elements = elements;
    if constexpr (std::is_same_v<Input, TablePtr>) row.elements = elements_of(*input);
    row.bytes = bytes_of(*input);
    row.product = repeat(input, product);
    if constexpr (!std::is_null_pointer_v<Limit>) row.limit = repeat(input, limit);
    row.make = [=] { return std::make_shared<Result>(product(*input)); };
    return row;
  };
  return {std::move(name), false, prepare};
}

/// \name Rows of one part of the library
/// With `quick`, the rows have few elements and the same names.
/// @{
void add_to_host_rows(std::vector<Row>& rows, bool quick);
void add_table_rows(std::vector<Row>& rows, bool quick);
void add_file_rows(std::vector<Row>& rows);
/// Columns spread over two threads; the limit is the serial call.
void add_parallel_rows(std::vector<Row>& rows, bool quick);
void add_to_arrow_rows(std::vector<Row>& rows, bool quick);
void add_gateway_rows(std::vector<Row>& rows, bool quick);
void add_encode_rows(std::vector<Row>& rows, bool quick);
/// @}

/// All rows, in display order.
std::vector<Row> all_rows(bool quick);

}  // namespace numera::benchmarks
