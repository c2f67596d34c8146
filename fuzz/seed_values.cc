#include <arrow/table.h>

#include <limits>
#include <optional>
#include <random>
#include <stdexcept>
#include <string_view>

#include "fuzz/host_tree.h"
#include "fuzz/seeds.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"

namespace numera::fuzz {
namespace {

using namespace numera::testing;
using Bytes = std::vector<std::uint8_t>;

/// Random bytes, the same in every run.
Bytes random_bytes(unsigned seed, size_t size) {
  std::minstd_rand random(seed);
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random() >> 8);
  return bytes;
}

/// Larger seeds cost a fuzzer much and teach it little.
constexpr size_t kLargest = 4096;

Bytes bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

void keep_small(const KeepSeed& keep, const std::string& fuzzer, const Bytes& input) {
  if (input.size() <= kLargest) keep(fuzzer, input);
}

void keep_value(const hxArray* value, const KeepSeed& keep) {
  Bytes tree;
  try {
    tree = write_host_tree(value);
  } catch (const std::invalid_argument&) {
    return;  // too large
  }
  keep_small(keep, "gateway", tree);
  keep_small(keep, "print", tree);
  tree.insert(tree.begin(), 0);  // no failing allocation
  keep_small(keep, "to_arrow", tree);
}

std::vector<hxArrayPtr> plain_values() {
  std::vector<hxArrayPtr> values;
  values.push_back(Char("char row"));
  values.push_back(CharMatrix({2, 3}, u"trwoow"));
  values.push_back(CharMatrix({0, 0}, u""));
  values.push_back(Strings({u"a", std::nullopt, u"gr\u00FC\u00DFe"}));
  values.push_back(Strings({0, 1}, {}));
  values.push_back(Strings({2, 2}, {u"a", u"c", u"b", u"d"}));
  values.push_back(Cell({Char("a"), Char(u"\u65E5\u672C"), Char("")}));
  values.push_back(Cell({Column<std::uint8_t>({1, 2, 3}), Column<std::uint8_t>({})}));
  values.push_back(Cell({1, 2}, {Scalar(1.0), Empty()}));
  values.push_back(Column<double>({1, 2.5, std::numeric_limits<double>::quiet_NaN()}));
  values.push_back(Matrix<std::int64_t>({2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8}));
  values.push_back(Logical({true, false, true, true, false, false, true, true, true}));
  values.push_back(Complex<float>({1, 2}, {{1, 2}, {0, -1}}));
  values.push_back(BufferEnvelope({1, 2}));
  values.push_back(ObjectArray("Point", {1, 2}, {"X"}, {{Scalar(1.0)}, {Empty()}}));
  values.push_back(StructArray({2, 1}, {"Name", "two words"},
                               {{Char("Ada"), Empty()}, {Char("Jo"), Cell({0, 0}, {})}}));
  return values;
}

constexpr std::string_view kTexts[] = {
    "",
    "ascii only, and long enough for more than one block of any vector code there may be",
    "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
    "\xED\xA0\x80",
    "\xC0\x80",
    "\xF4\x90\x80\x80",
    "mostly ascii \xE6\x97\xA5\xE6\x9C\xAC mostly ascii \xFF",
};

}  // namespace

void keep_host_values(const TablePtr& table, const KeepSeed& keep) {
  const auto written = io::arrow::core::to_numera(table);
  if (!written.ok()) return;  // a type that needs the intake
  keep_value(written->get(), keep);
  const auto readable = extras::make_readable(written->get());
  if (readable.ok()) keep_value(readable->get(), keep);
  for (const auto& column : table->columns()) {
    const auto part = io::arrow::core::to_numera(column);
    if (!part.ok()) continue;
    keep_value(part->get(), keep);
    const auto readable_part = extras::make_readable(part->get());
    if (readable_part.ok()) keep_value(readable_part->get(), keep);
  }
}

void keep_plain_values(const KeepSeed& keep) {
  for (const hxArrayPtr& value : plain_values()) keep_value(value.get(), keep);
  for (const std::string_view text : kTexts) {
    keep("text", bytes_of(text));
    Bytes columns = {1, 5, 0, 3, 7, 0, 20, 99};
    columns.insert(columns.end(), text.begin(), text.end());
    keep("text", columns);
    Bytes units;
    for (const char unit : text) units.insert(units.end(), {static_cast<std::uint8_t>(unit), 0});
    keep("text", units);
  }
  keep("text", Bytes{0x3D, 0xD8, 0x00, 0xDE, 0x3D, 0xD8});
  for (unsigned seed = 1; seed <= 300; ++seed) keep("to_host", random_bytes(seed, seed));
  for (const std::uint8_t position : Bytes{0, 1, 7, 8, 9, 63, 64, 65}) {
    for (const std::uint8_t length : Bytes{0, 1, 7, 8, 9, 63, 64, 65, 130}) {
      Bytes input = {length, 0, position, 0, 3, 40};
      for (int i = 0; i < 100; ++i) input.push_back(static_cast<std::uint8_t>(i * 37));
      keep("bitmap", input);
    }
  }
}

}  // namespace numera::fuzz
