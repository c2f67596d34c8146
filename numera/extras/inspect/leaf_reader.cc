#include "numera/extras/inspect/leaf_reader.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "numera/extras/inspect/listed_shape.h"
#include "numera/extras/inspect/number_reader.h"
#include "numera/extras/inspect/rows.h"
#include "numera/host/string_array.h"

namespace numera::extras::inspect {
namespace {

/// Reads "[a b; c d]"; `take_item` takes one item. Stops before the bracket at the end.
template <class TakeItem>
Listed read_list(Scanner& scanner, TakeItem take_item) {
  Listed listed;
  scanner.expect("[");
  for (scanner.skip_space(); scanner.peek() != ']'; scanner.skip_space()) {
    if (listed.count > 0 && scanner.take(";")) {
      listed.end_row();
      scanner.skip_space();
    }
    take_item();
    ++listed.count;
  }
  return listed;
}

struct Token {
  std::string_view text;
  size_t position;
};

hxArrayPtr read_numbers(Scanner& scanner, const Head& head) {
  std::vector<Token> tokens;
  const Listed listed = read_list(scanner, [&] {
    const size_t position = scanner.position();
    tokens.push_back({scanner.take_token(), position});
    if (tokens.back().text.empty()) scanner.fail("a number");
  });
  const Dims dims = shape_of(listed, head.dims, scanner);
  scanner.expect("]");
  hxArrayPtr array = hxCreateNumericArray(
      dims, head.class_id, head.complex ? hxComplexity::Complex : hxComplexity::Real);
  const size_t width = hxGetElementSize(array.get());
  auto* const block = static_cast<std::uint8_t*>(hxGetData(array.get()));
  const Rows rows(dims);
  for (size_t i = 0; i < tokens.size(); ++i) {
    std::uint8_t* const element = block + rows.element_at(i) * width;
    if (read_number(tokens[i].text, head.class_id, head.complex, element)) continue;
    scanner.fail_at(tokens[i].position, std::string("a number of class ") +
                                            (head.complex ? "complex " : "") +
                                            hxGetClassName(array.get()));
  }
  return array;
}

hxArrayPtr read_strings(Scanner& scanner, const Head& head) {
  std::vector<std::optional<std::u16string>> texts;
  const Listed listed = read_list(scanner, [&] {
    const bool missing = scanner.take("<missing>");
    if (!missing && scanner.peek() != '"') scanner.fail("a text in quotes or <missing>");
    texts.push_back(missing ? std::nullopt : std::optional(scanner.take_text()));
  });
  const Dims dims = shape_of(listed, head.dims, scanner);
  scanner.expect("]");
  std::unique_ptr<hxStringArray> strings = hxMakeStringArray(dims);
  const Rows rows(dims);
  for (size_t i = 0; i < texts.size(); ++i) {
    const std::optional<std::u16string>& text = texts[i];
    if (text) {
      strings->set(rows.element_at(i), *text);
    } else {
      strings->set_missing(rows.element_at(i));
    }
  }
  return hxCreateStringArrayFrom(std::move(strings));
}

hxArrayPtr make_chars_of(const Dims& dims, const std::u16string& units, const Scanner& scanner,
                         MakeChars make_chars) {
  if (is_row(dims)) return hxCreateCharArray(units.data(), units.size());
  if (make_chars == nullptr) scanner.fail_at(scanner.position(), "a char matrix", "a char row");
  return make_chars(dims, units.data());
}

/// The rows of a char matrix, all of one length, in storage order.
hxArrayPtr read_char_rows(Scanner& scanner, const Head& head, MakeChars make_chars) {
  std::vector<std::u16string> texts;
  const Listed listed = read_list(scanner, [&] {
    if (scanner.peek() != '"') scanner.fail("a row of chars in quotes");
    texts.push_back(scanner.take_text());
  });
  if (!listed.row_ends.empty()) scanner.fail_at(scanner.position(), "\";\"", "a list of rows");
  const size_t length = texts.empty() ? 0 : texts[0].size();
  const Dims dims = head.dims ? *head.dims : Dims{listed.count, length};
  const size_t total = checked_element_count(dims, scanner);
  if (head.dims) check_count(listed.count, total == 0 ? 0 : total / dims[1], scanner);
  for (const std::u16string& text : texts) check_count(text.size(), dims[1], scanner);
  std::u16string units(total, u'\0');
  for (size_t row = 0; row < texts.size(); ++row) {
    const size_t start = row / dims[0] * dims[0] * dims[1] + row % dims[0];
    for (size_t column = 0; column < dims[1]; ++column) {
      units[start + column * dims[0]] = texts[row][column];
    }
  }
  scanner.expect("]");
  return make_chars_of(dims, units, scanner, make_chars);
}

hxArrayPtr read_chars(Scanner& scanner, const Head& head, MakeChars make_chars) {
  if (scanner.peek() == '[') return read_char_rows(scanner, head, make_chars);
  if (scanner.peek() != '"') scanner.fail("a text in quotes, or a list of rows");
  const std::u16string units = scanner.take_text();
  const Dims dims = head.dims ? *head.dims : Dims{1, units.size()};
  const bool empty = checked_element_count(dims, scanner) == 0;
  if (!empty && !is_row(dims)) scanner.fail_at(scanner.position(), "one text", "a list of rows");
  check_count(units.size(), empty ? 0 : dims[1], scanner);
  return make_chars_of(dims, units, scanner, make_chars);
}

}  // namespace

hxArrayPtr read_char_row(Scanner& scanner) {
  const std::u16string units = scanner.take_text();
  return hxCreateCharArray(units.data(), units.size());
}

hxArrayPtr read_leaf(Scanner& scanner, const Head& head, MakeChars make_chars) {
  scanner.skip_blanks();
  const bool as_call = scanner.take("(");
  if (as_call) scanner.skip_space();
  hxArrayPtr array;
  if (head.content == Content::kChars) {
    array = read_chars(scanner, head, make_chars);
  } else if (head.content == Content::kStrings) {
    array = read_strings(scanner, head);
  } else {
    array = read_numbers(scanner, head);
  }
  if (as_call) {
    scanner.skip_space();
    scanner.expect(")");
  }
  return array;
}

}  // namespace numera::extras::inspect
