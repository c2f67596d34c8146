// Columns of every type family to the host: one base row each, and variants that change one
// property.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/axes.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

struct Family {
  std::string name;
  std::int64_t length;
  MakeArray make;
  Limit limit;
};

constexpr std::int64_t kMillion = 1'000'000;

const std::vector<Family>& families() {
  static const std::vector<Family> all = {
      {"float64", 10 * kMillion, doubles, copied_values},
      {"bool_aligned", 10 * kMillion, booleans, copied_bits},
      {"date", 10 * kMillion, dates, copied_values},
      {"time", 10 * kMillion, times, copied_values},
      {"timestamp", 10 * kMillion, timestamps, copied_values},
      {"duration", 10 * kMillion, durations, copied_values},
      {"text_ascii", 5 * kMillion, ascii_texts, widened_texts},
      {"text_mixed", kMillion, mixed_texts, transcoded_texts},
      {"binary", kMillion, byte_strings, slab_of_bytes},
      {"dictionary", 5 * kMillion, categories, copied_codes},
      {"list", kMillion, lists, ascii_leaves},
      {"struct", kMillion, structs, ascii_leaves},
      {"map", kMillion, maps, ascii_leaves},
  };
  return all;
}

hxArrayPtr column_to_host(const ColumnPtr& column) { return core::to_numera(column).ValueOrDie(); }
hxArrayPtr array_to_host(const ArrayPtr& array) { return core::to_numera(array).ValueOrDie(); }

/// Variants of a base row that have a name of their own in the performance targets.
std::string known_name(const std::string& name) {
  if (name == "to_host/float64/nulls=some") return "to_host/float64_nulls";
  if (name == "to_host/float64/chunks=1000") return "to_host/float64_1000_chunks";
  if (name == "to_host/dictionary/chunks=20") return "to_host/dictionary_20_chunks";
  return name;
}

void add_row(std::vector<Row>& rows, const Family& family, const Shape& shape,
             const std::string& variant) {
  rows.push_back(make_row(
      known_name("to_host/" + family.name + variant), shape.length,
      [make = family.make, shape] { return make_column(make, shape); }, column_to_host,
      family.limit));
}

void add_family(std::vector<Row>& rows, const Family& family, bool quick) {
  const std::int64_t length = base_length(family.length, quick);
  for (const Variant& variant : variants(length, quick)) {
    add_row(rows, family, variant.shape, variant.suffix);
  }
}

/// Chunks whose length is no multiple of 8 bits, so that all but the first start within a byte.
void add_unaligned_bits(std::vector<Row>& rows, bool quick) {
  const std::int64_t length = base_length(10 * kMillion, quick);
  const auto make = [=] {
    ::arrow::ArrayVector chunks;
    const std::int64_t odd = length / 10 + 1;
    for (std::int64_t begin = 0; begin < length; begin += odd) {
      chunks.push_back(booleans(begin, std::min(odd, length - begin), Nulls::None));
    }
    return std::make_shared<::arrow::ChunkedArray>(std::move(chunks));
  };
  rows.push_back(make_row("to_host/bool_unaligned", length, make, column_to_host, copied_bits));
}

void add_nested(std::vector<Row>& rows, bool quick) {
  const std::int64_t length = base_length(100'000, quick);
  const auto add = [&](const std::string& name, auto make_nested, int levels) {
    rows.push_back(make_row(
        "to_host/" + name + "/nesting=" + std::to_string(levels), length,
        [=] { return std::make_shared<::arrow::ChunkedArray>(make_nested(length, levels)); },
        column_to_host, ascii_leaves));
  };
  for (const int levels : {1, 10, 100}) add("list", nested_lists, levels);
  for (const int levels : {1, 10, 100}) add("struct", nested_structs, levels);
}

}  // namespace

void add_to_host_rows(std::vector<Row>& rows, bool quick) {
  rows.push_back(
      make_row("to_host/one_call", 10, [] { return doubles(0, 10, Nulls::None); }, array_to_host));
  for (const Family& family : families()) {
    add_family(rows, family, quick);
    if (family.name == "bool_aligned") add_unaligned_bits(rows, quick);
  }
  add_nested(rows, quick);
}

}  // namespace numera::benchmarks
