#include "numera/unicode/convert_utf16_to_utf8.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/unicode/encode_texts.h"

namespace numera::io::arrow::unicode {
namespace {

/// Requires two dimensions, the second being 0 or 1.
template <class Tag>
void require_column(std::span<const size_t> dims) {
  if (dims.size() != 2 || dims[1] > 1) throw hxTaggedException<Tag>();
}

EncodedTexts encode_strings(const hxStringArray& strings) {
  const auto text = [&strings](size_t i) {
    return strings.element(i).value_or(std::u16string_view());
  };
  return encode_texts(strings.size(), text);
}

std::u16string_view char_units(const hxArray* chars) {
  return {static_cast<const char16_t*>(hxGetData(chars)), hxGetNumberOfElements(chars)};
}

void require_char_row(const hxArray* value) {
  if (value == nullptr || hxGetClassID(value) != hxClassID::Char) {
    throw hxTaggedException<InvalidCellArray>();
  }
  const auto dims = hxGetDimensions(value);
  if (dims.size() != 2 || dims[0] > 1) throw hxTaggedException<InvalidCellArray>();
}

EncodedTexts encode_cells(const hxArray* cell) {
  const auto text = [cell](size_t i) {
    const hxArray* const value = hxGetCell(cell, i);
    require_char_row(value);
    return char_units(value);
  };
  return encode_texts(hxGetNumberOfElements(cell), text);
}

/// The rows of a char matrix as the elements of a string array. Gathers several rows at a time to
/// use the cache well: consecutive code units of one row have a stride of R in an R-by-C matrix.
std::unique_ptr<hxStringArray> gather_rows(const hxArray* matrix) {
  constexpr size_t kMostRows = 32;
  constexpr size_t kMostUnits = 1 << 16;
  const size_t rows = hxGetDimensions(matrix)[0];
  const size_t columns = hxGetDimensions(matrix)[1];
  const std::u16string_view units = char_units(matrix);
  auto strings = hxMakeStringArray(std::array{rows, size_t{1}});
  if (units.empty()) return strings;
  const size_t step = std::clamp(kMostUnits / columns, size_t{1}, std::min(rows, kMostRows));
  std::vector<char16_t> gathered(step * columns);
  for (size_t begin = 0; begin < rows; begin += step) {
    const size_t end = std::min(begin + step, rows);
    for (size_t column = 0; column < columns; ++column) {
      for (size_t row = begin; row < end; ++row) {
        gathered[(row - begin) * columns + column] = units[column * rows + row];
      }
    }
    for (size_t row = begin; row < end; ++row) {
      strings->set(row, {gathered.data() + (row - begin) * columns, columns});
    }
  }
  return strings;
}

EncodedTexts encode(const hxArray* value) {
  if (value == nullptr) throw hxTaggedException<InvalidTextInput>();
  if (hxIsStringArray(value)) {
    const hxStringArray& strings = hxGetStringArray(value);
    require_column<InvalidStringDimensions>(strings.dimensions());
    return encode_strings(strings);
  }
  if (hxGetClassID(value) == hxClassID::Cell) {
    require_column<InvalidCellstrDimensions>(hxGetDimensions(value));
    return encode_cells(value);
  }
  if (hxGetClassID(value) == hxClassID::Char) {
    if (hxGetDimensions(value).size() != 2) throw hxTaggedException<InvalidCharDimensions>();
    return encode_strings(*gather_rows(value));
  }
  throw hxTaggedException<InvalidTextInput>();
}

}  // namespace

void convertUTF16ToUTF8(int outputCount, hxArrayPtr* outputs, int inputCount,
                        const hxArray** inputs) {
  if (outputCount > 2) hxErrorMaxLhs();
  if (inputCount >= 2) hxErrorMaxRhs();
  if (inputCount < 1) hxErrorMinRhs();
  EncodedTexts texts = encode(inputs[0]);
  if (outputCount >= 1) outputs[0] = std::move(texts.bytes);
  if (outputCount >= 2) outputs[1] = std::move(texts.offsets);
}

}  // namespace numera::io::arrow::unicode
