// Host texts to UTF-8, and written values to readable ones.

#include <array>
#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/axes.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/extras/encode/encode.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

constexpr std::int64_t kMillion = 1'000'000;

/// A written value, and the code units of all its texts as one string.
struct Written {
  hxArrayPtr encoded;
  std::u16string units;
  std::int64_t texts;
};

std::int64_t bytes_of(const Written& input) {
  return ::numera::benchmarks::bytes_of(input.encoded);
}

hxArrayPtr written(const ColumnPtr& column) { return core::to_numera(column).ValueOrDie(); }

Written written_texts(MakeArray make, const Shape& shape) {
  const ColumnPtr column = make_column(make, shape);
  const auto& texts = static_cast<const ::arrow::StringArray&>(*column->chunk(0));
  const auto* const bytes = reinterpret_cast<const char*>(texts.raw_data());
  const std::string_view all(bytes + texts.value_offset(0),
                             static_cast<size_t>(texts.total_values_length()));
  return {written(column), hxUTF8ToUTF16("UTF-8").convert(all), shape.length};
}

std::array<hxArrayPtr, 2> texts_to_utf8(const Written& input) {
  std::array<hxArrayPtr, 2> outputs;
  const hxArray* strings = hxGetField(input.encoded.get(), 0, "Data");
  io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &strings);
  return outputs;
}

hxArrayPtr encode_texts(const Written& input) {
  return extras::make_readable(input.encoded.get()).ValueOrDie();
}

hxArrayPtr encode_value(const hxArrayPtr& value) {
  return extras::make_readable(value.get()).ValueOrDie();
}

Blocks narrow(const Written& input) { return narrowed_units(input.units, input.texts); }
Blocks transcode(const Written& input) { return encoded_units(input.units, input.texts); }

template <class Product, class TextLimit>
void add_texts(std::vector<Row>& rows, const std::string& name, MakeArray make, std::int64_t length,
               bool quick, Product product, TextLimit limit) {
  for (const Variant& variant : variants(base_length(length, quick), quick)) {
    const Shape& shape = variant.shape;
    if (shape.chunks > 1 || shape.sliced) continue;  // a string array is one piece
    rows.push_back(make_row(
        name + variant.suffix, shape.length, [=] { return written_texts(make, shape); }, product,
        limit));
  }
}

void add_encoded(std::vector<Row>& rows, const std::string& name, MakeArray make,
                 std::int64_t length, bool quick) {
  for (const Variant& variant : variants(base_length(length, quick), quick)) {
    const Shape& shape = variant.shape;
    rows.push_back(make_row(
        "encode/" + name + variant.suffix, shape.length,
        [=] { return written(make_column(make, shape)); }, encode_value));
  }
}

}  // namespace

void add_gateway_rows(std::vector<Row>& rows, bool quick) {
  add_texts(rows, "gateway/text_ascii", ascii_texts, 2 * kMillion, quick, texts_to_utf8, narrow);
  add_texts(rows, "gateway/text_mixed", mixed_texts, kMillion / 2, quick, texts_to_utf8, transcode);
}

void add_encode_rows(std::vector<Row>& rows, bool quick) {
  add_texts(rows, "encode/text", ascii_texts, 2 * kMillion, quick, encode_texts, narrow);
  add_encoded(rows, "binary", byte_strings, kMillion, quick);
  add_encoded(rows, "dictionary", categories, kMillion, quick);
  add_encoded(rows, "list", lists, kMillion / 2, quick);
  add_encoded(rows, "struct", structs, kMillion / 2, quick);
  add_encoded(rows, "map", maps, kMillion / 2, quick);
}

}  // namespace numera::benchmarks
