/// \file
/// Compares the gateway with a model that handles one element after another and converts with ICU.

#include <new>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "fuzz/host_tree.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/icu.h"

namespace numera::fuzz {
namespace {

/// Bytes and offsets; or, if it throws, the identifier and the number of the element to blame.
struct Outcome {
  std::string bytes;
  std::vector<std::uint64_t> offsets;
  std::string thrown;
  std::uint64_t blamed = 0;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

Outcome throws(const std::string& key) {
  Outcome outcome;
  outcome.thrown = "NUMERA:io:arrow:unicode:" + key;
  return outcome;
}

std::string text_of(const Outcome& outcome) {
  if (!outcome.thrown.empty()) return outcome.thrown + " " + std::to_string(outcome.blamed);
  std::string text = std::to_string(outcome.bytes.size()) + " bytes, offsets";
  for (const std::uint64_t offset : outcome.offsets) text += " " + std::to_string(offset);
  return text;
}

using Texts = std::vector<std::u16string>;

Texts texts_of(const hxStringArray& strings) {
  Texts texts;
  for (size_t i = 0; i < strings.size(); ++i) {
    texts.emplace_back(strings.element(i).value_or(std::u16string_view()));
  }
  return texts;
}

Texts rows_of(const hxArray* matrix) {
  const size_t rows = hxGetDimensions(matrix)[0];
  const auto* const units = static_cast<const char16_t*>(hxGetData(matrix));
  Texts texts(rows);
  for (size_t i = 0; i < hxGetNumberOfElements(matrix); ++i) texts[i % rows] += units[i];
  return texts;
}

bool is_char_row(const hxArray* value) {
  return value != nullptr && hxGetClassID(value) == hxClassID::Char &&
         hxGetDimensions(value).size() == 2 && hxGetDimensions(value)[0] <= 1;
}

/// Converts the texts in order. The first fault counts.
Outcome encode(const Texts& texts) {
  Outcome outcome;
  outcome.offsets.push_back(0);
  for (const std::u16string& text : texts) {
    const auto bytes = testing::IcuToUtf8(text);
    if (!bytes) {
      Outcome refused = throws("UnrecognizedUTF16Character");
      refused.blamed = outcome.offsets.size();
      return refused;
    }
    outcome.bytes += *bytes;
    outcome.offsets.push_back(outcome.bytes.size());
  }
  outcome.bytes += '\0';
  return outcome;
}

Outcome encode_cells(const hxArray* cell) {
  Texts texts;
  for (size_t i = 0; i < hxGetNumberOfElements(cell); ++i) {
    const hxArray* const value = hxGetCell(cell, i);
    if (!is_char_row(value)) {
      const Outcome before = encode(texts);
      return before.thrown.empty() ? throws("InvalidCellArray") : before;
    }
    const auto* const units = static_cast<const char16_t*>(hxGetData(value));
    texts.emplace_back(units, hxGetNumberOfElements(value));
  }
  return encode(texts);
}

bool is_column(std::span<const size_t> dims) { return dims.size() == 2 && dims[1] <= 1; }

Outcome expected_of(const hxArray* value) {
  if (value == nullptr) return throws("InvalidTextInput");
  if (hxIsStringArray(value)) {
    const hxStringArray& strings = hxGetStringArray(value);
    if (!is_column(strings.dimensions())) return throws("InvalidStringDimensions");
    return encode(texts_of(strings));
  }
  if (hxGetClassID(value) == hxClassID::Cell) {
    if (!is_column(hxGetDimensions(value))) return throws("InvalidCellstrDimensions");
    return encode_cells(value);
  }
  if (hxGetClassID(value) == hxClassID::Char) {
    if (hxGetDimensions(value).size() != 2) return throws("InvalidCharDimensions");
    return encode(rows_of(value));
  }
  return throws("InvalidTextInput");
}

template <class T>
std::vector<T> column_of(const hxArrayPtr& array, hxClassID class_id) {
  claim(array != nullptr && hxGetClassID(array.get()) == class_id, "outputs have their class");
  const size_t count = hxGetNumberOfElements(array.get());
  const auto dims = hxGetDimensions(array.get());
  claim(dims.size() == 2 && dims[0] == count && dims[1] == 1, "outputs are columns");
  const T* const elements = static_cast<const T*>(hxGetData(std::as_const(array).get()));
  return {elements, elements + count};
}

Outcome outcome_of(const hxArray* value) {
  const hxArray* inputs[] = {value};
  hxArrayPtr outputs[2];
  Outcome outcome;
  try {
    io::arrow::unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);
  } catch (const hxTaggedException<io::arrow::unicode::UnrecognizedUTF16Character>& error) {
    outcome.blamed = std::get<std::uint64_t>(error.arguments()[0]);
    outcome.thrown = error.identifier();
  } catch (const MessageIdException& error) {
    outcome.thrown = error.identifier();
  }
  if (!outcome.thrown.empty()) {
    claim(outputs[0] == nullptr && outputs[1] == nullptr, "a failure leaves the outputs alone");
    return outcome;
  }
  const auto bytes = column_of<std::uint8_t>(outputs[0], hxClassID::UInt8);
  outcome.bytes.assign(bytes.begin(), bytes.end());
  outcome.offsets = column_of<std::uint64_t>(outputs[1], hxClassID::UInt64);
  return outcome;
}

/// Whether a char array has more rows than there is memory for offsets. It then has no columns.
bool is_too_long(const hxArray* value) {
  return value != nullptr && hxGetClassID(value) == hxClassID::Char &&
         hxGetDimensions(value)[0] > (1U << 16);
}

void check_refused_for_memory(const hxArray* value) {
  try {
    outcome_of(value);
  } catch (const std::bad_alloc&) {
    return;
  }
  refute("a matrix that is too long is refused", extras::print(value));
}

void check(const hxArray* value) {
  const bool is_column_matrix = is_too_long(value) && hxGetDimensions(value).size() == 2;
  if (is_column_matrix) return check_refused_for_memory(value);
  const Outcome expected = expected_of(value);
  const Outcome found = outcome_of(value);
  claim(found == expected, "the gateway does what the model does", [&] {
    return "found " + text_of(found) + "\nexpected " + text_of(expected) + "\n" +
           extras::print(value);
  });
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  ByteSource source(input);
  check(read_host_tree(source).root.get());
}

}  // namespace numera::fuzz
