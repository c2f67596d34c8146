// Texts and byte strings towards the host.

#include <array>
#include <cstring>

#include "benchmarks/arrow_data.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

hxArrayPtr array_to_host(const ArrayPtr& array) { return core::to_numera(array).ValueOrDie(); }

std::vector<hxArrayPtr> widen(const std::shared_ptr<::arrow::StringArray>& texts) {
  return widened(*texts);
}

/// A cell of columns, each a plain copy.
hxArrayPtr copy_into_cells(const std::shared_ptr<::arrow::BinaryArray>& strings) {
  const std::array<size_t, 2> dims = {static_cast<size_t>(strings->length()), 1};
  hxArrayPtr cells = hxCreateCellArray(dims);
  for (size_t i = 0; i < dims[0]; ++i) {
    const std::string_view bytes = strings->GetView(static_cast<std::int64_t>(i));
    const std::array<size_t, 2> size = {bytes.size(), 1};
    hxArrayPtr cell = hxCreateUninitNumericArray(size, hxClassID::UInt8, hxComplexity::Real);
    std::memcpy(hxGetData(cell.get()), bytes.data(), bytes.size());
    hxSetCell(cells.get(), i, std::move(cell));
  }
  return cells;
}

}  // namespace

void add_text_rows() {
  add_row("to_host/text_ascii", [] { return texts(5'000'000, kAsciiText); }, array_to_host, widen);
  add_row("to_host/text_mixed", [] { return texts(1'000'000, kMixedText); }, array_to_host, widen);
  add_row(
      "to_host/binary", [] { return byte_strings(1'000'000, "sixteen bytes..."); }, array_to_host,
      copy_into_cells);
}

}  // namespace numera::benchmarks
