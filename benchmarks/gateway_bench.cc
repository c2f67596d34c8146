// Texts of the host to UTF-8.

#include <array>
#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

struct HostTexts {
  hxArrayPtr encoded;  ///< an envelope, whose "Data" is the string array
  std::u16string units;
  size_t count;
};

HostTexts host_texts(std::int64_t length, const std::string& text) {
  const auto array = texts(length, text);
  const auto count = static_cast<size_t>(length);
  const std::u16string units = hxUTF8ToUTF16("UTF-8").convert(array->value_data()->ToString());
  return {io::arrow::core::to_numera(ArrayPtr(array)).ValueOrDie(), units, count};
}

std::array<hxArrayPtr, 2> encode(const HostTexts& input) {
  std::array<hxArrayPtr, 2> outputs;
  const hxArray* strings = hxGetField(input.encoded.get(), 0, "Data");
  io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &strings);
  return outputs;
}

std::vector<hxArrayPtr> narrow(const HostTexts& input) {
  return narrowed(input.units, input.count);
}

}  // namespace

void add_gateway_rows() {
  add_row("gateway/text_ascii", [] { return host_texts(5'000'000, kAsciiText); }, encode, narrow);
  add_row("gateway/text_mixed", [] { return host_texts(1'000'000, kMixedText); }, encode, narrow);
}

}  // namespace numera::benchmarks
