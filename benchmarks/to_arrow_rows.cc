// Encoded values of every type family to Arrow. Arrow wraps the memory of the host.

#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/axes.h"
#include "benchmarks/rows.h"
#include "numera/extras/encode/encode.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

constexpr std::int64_t kMillion = 1'000'000;

struct Family {
  std::string name;
  std::int64_t length;
  MakeArray make;
};

/// "duration" is the host's name for a time of day.
const std::vector<Family>& families() {
  static const std::vector<Family> all = {
      {"float64", 10 * kMillion, doubles},
      {"logical", 10 * kMillion, booleans},
      {"text", 5 * kMillion, ascii_texts},
      {"binary", kMillion, byte_strings},
      {"categorical", 5 * kMillion, categories},
      {"timestamp", 10 * kMillion, timestamps},
      {"duration", 10 * kMillion, times},
      {"list", kMillion, lists},
      {"struct", kMillion, structs},
  };
  return all;
}

/// The value that the library writes for a column, made readable.
hxArrayPtr readable(const ColumnPtr& column) {
  const hxArrayPtr written = core::to_numera(column).ValueOrDie();
  return numera::extras::make_readable(written.get()).ValueOrDie();
}

ArrayPtr encoded_to_arrow(const hxArrayPtr& encoded) {
  return core::to_arrow<::arrow::Array>(encoded.get()).ValueOrDie();
}

void add_row(std::vector<Row>& rows, const std::string& name, MakeArray make, const Shape& shape) {
  rows.push_back(make_row(
      name, shape.length, [=] { return readable(make_column(make, shape)); }, encoded_to_arrow));
}

void add_nested(std::vector<Row>& rows, bool quick) {
  const std::int64_t length = base_length(100'000, quick);
  const auto add = [&](const std::string& name, auto make_nested, int levels) {
    rows.push_back(make_row(
        "to_arrow/" + name + "/nesting=" + std::to_string(levels), length,
        [=] {
          return readable(std::make_shared<::arrow::ChunkedArray>(make_nested(length, levels)));
        },
        encoded_to_arrow));
  };
  for (const int levels : {1, 10, 100}) add("list", nested_lists, levels);
  for (const int levels : {1, 10, 100}) add("struct", nested_structs, levels);
}

}  // namespace

void add_to_arrow_rows(std::vector<Row>& rows, bool quick) {
  add_row(rows, "to_arrow/one_call", doubles, {.length = 10});
  add_row(rows, "to_arrow/one_call_1e7", doubles, {.length = base_length(10 * kMillion, quick)});
  for (const Family& family : families()) {
    for (const Variant& variant : variants(base_length(family.length, quick), quick)) {
      // The encoded value is always one chunk without an offset.
      if (variant.shape.chunks > 1 || variant.shape.sliced) continue;
      add_row(rows, "to_arrow/" + family.name + variant.suffix, family.make, variant.shape);
    }
  }
  add_nested(rows, quick);
}

}  // namespace numera::benchmarks
