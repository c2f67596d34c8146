#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "numera/extras/inspect/inspect.h"
#include "numera/extras/inspect/number.h"
#include "numera/extras/inspect/one_line.h"
#include "numera/extras/inspect/text.h"
#include "numera/extras/inspect/value.h"
#include "numera/host/string_array.h"

namespace numera::extras {
namespace {

using inspect::Content;

// A difference and its element: "(3)", or "" if the value as a whole differs.
struct Difference {
  std::string element;
  std::string text;
};
using Finding = std::optional<Difference>;

// A pair of containers on the path from the two values to the slots that are compared now.
struct Frame {
  const hxArray* a;
  const hxArray* b;
  size_t slots;
  size_t next_slot = 0;
};

Difference is_not(std::string element, const std::string& a, const std::string& b) {
  return {std::move(element), a + " is not " + b};
}

std::string element_index(const hxArray* array, size_t element) {
  if (hxGetNumberOfElements(array) == 1) return "";
  return "(" + inspect::index_text(hxGetDimensions(array), element) + ")";
}

// Shows two different texts from their start or, if they share a long start, from the difference.
Difference text_difference(std::string element, std::u16string_view a, std::u16string_view b) {
  constexpr size_t kLongStart = 16;
  // Wide enough to show the difference, even if every code unit before it is escaped.
  constexpr size_t kColumns = 6 * kLongStart + 14;
  const auto at =
      static_cast<size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
  const size_t from = at < kLongStart ? 0 : at;
  Difference difference = is_not(std::move(element), inspect::quote(a.substr(from), kColumns),
                                 inspect::quote(b.substr(from), kColumns));
  if (from > 0) {
    difference.text = "from code unit " + std::to_string(from) + ", " + difference.text;
  }
  return difference;
}

Finding compare_numbers(const hxArray* a, const hxArray* b) {
  const size_t width = inspect::number_size(a);
  const size_t bytes = hxGetNumberOfElements(a) * width;
  const auto* const block_a = static_cast<const unsigned char*>(hxGetData(a));
  const auto* const block_b = static_cast<const unsigned char*>(hxGetData(b));
  if (bytes == 0 || block_a == block_b || std::memcmp(block_a, block_b, bytes) == 0) return {};
  const auto* const place = std::mismatch(block_a, block_a + bytes, block_b).first;
  const size_t element = static_cast<size_t>(place - block_a) / width;
  std::string text_a = inspect::number_text(a, element);
  std::string text_b = inspect::number_text(b, element);
  if (text_a == text_b) {
    text_a += " (bits " + inspect::bits_text(a, element) + ")";
    text_b += " (bits " + inspect::bits_text(b, element) + ")";
  }
  return is_not(element_index(a, element), text_a, text_b);
}

Finding compare_chars(const hxArray* a, const hxArray* b) {
  const std::u16string_view units_a = inspect::code_units(a);
  const std::u16string_view units_b = inspect::code_units(b);
  if (units_a.data() == units_b.data() || units_a == units_b) return {};
  if (inspect::is_row(hxGetDimensions(a))) return text_difference("", units_a, units_b);
  const auto at = static_cast<size_t>(
      std::mismatch(units_a.begin(), units_a.end(), units_b.begin()).first - units_a.begin());
  return text_difference(element_index(a, at), units_a.substr(at, 1), units_b.substr(at, 1));
}

Finding compare_strings(const hxArray* a, const hxArray* b) {
  constexpr size_t kColumns = 60;
  const hxStringArray& strings_a = hxGetStringArray(a);
  const hxStringArray& strings_b = hxGetStringArray(b);
  for (size_t i = 0; i < hxGetNumberOfElements(a); ++i) {
    const std::optional<std::u16string_view> text_a = strings_a.element(i);
    const std::optional<std::u16string_view> text_b = strings_b.element(i);
    if (text_a == text_b) continue;
    if (text_a && text_b) return text_difference(element_index(a, i), *text_a, *text_b);
    return is_not(element_index(a, i), text_a ? inspect::quote(*text_a, kColumns) : "<missing>",
                  text_b ? inspect::quote(*text_b, kColumns) : "<missing>");
  }
  return {};
}

Finding compare_field_names(const hxArray* a, const hxArray* b) {
  const size_t fields_a = inspect::field_count(a);
  const size_t fields_b = inspect::field_count(b);
  const auto name = [](const hxArray* array, size_t number) -> std::string {
    if (number >= inspect::field_count(array)) return "<none>";
    return inspect::name_text(hxGetFieldName(array, static_cast<int>(number)));
  };
  for (size_t i = 0; i < std::max(fields_a, fields_b); ++i) {
    const std::string name_a = name(a, i);
    const std::string name_b = name(b, i);
    if (name_a != name_b) return is_not("", "field " + std::to_string(i) + " " + name_a, name_b);
  }
  return {};
}

Finding compare_content(const hxArray* a, const hxArray* b) {
  switch (inspect::content_of(a)) {
    case Content::kNumbers:
      return compare_numbers(a, b);
    case Content::kChars:
      return compare_chars(a, b);
    case Content::kStrings:
      return compare_strings(a, b);
    case Content::kFields:
      return compare_field_names(a, b);
    case Content::kCells:
      return {};
    case Content::kNothing:
      break;
  }
  return Difference{"", "the elements of " + inspect::class_text(a) + " cannot be compared"};
}

// The difference between two values, ignoring what their slots hold.
Finding compare_without_slots(const hxArray* a, const hxArray* b, const char* null_text) {
  constexpr size_t kElements = 5;
  constexpr size_t kColumns = 60;
  if (a == b) return {};
  if (a == nullptr || b == nullptr) {
    return is_not("", inspect::one_line(a, null_text, kElements, kColumns),
                  inspect::one_line(b, null_text, kElements, kColumns));
  }
  const std::string class_a = inspect::class_text(a);
  const std::string class_b = inspect::class_text(b);
  if (class_a != class_b) return is_not("", "class " + class_a, class_b);
  const std::span<const size_t> dims_a = hxGetDimensions(a);
  const std::span<const size_t> dims_b = hxGetDimensions(b);
  if (!std::equal(dims_a.begin(), dims_a.end(), dims_b.begin(), dims_b.end())) {
    const bool texts = inspect::content_of(a) == Content::kChars && inspect::is_row(dims_a) &&
                       inspect::is_row(dims_b);
    if (texts) return text_difference("", inspect::code_units(a), inspect::code_units(b));
    return is_not("", "size " + inspect::size_text(a), inspect::size_text(b));
  }
  return compare_content(a, b);
}

size_t slots_to_compare(const hxArray* a, const hxArray* b) {
  if (a == b) return 0;
  const Content content = inspect::content_of(a);
  const bool has_slots = content == Content::kCells || content == Content::kFields;
  return has_slots ? inspect::slot_count(a) : 0;
}

// The path to the current slot of the innermost frame.
std::string path_text(const std::vector<Frame>& frames) {
  std::string path;
  for (const Frame& frame : frames) {
    const size_t slot = frame.next_slot - 1;
    if (inspect::content_of(frame.a) == Content::kCells) {
      path += "{" + inspect::index_text(hxGetDimensions(frame.a), slot) + "}";
      continue;
    }
    const size_t fields = inspect::field_count(frame.a);
    const char* const name = hxGetFieldName(frame.a, static_cast<int>(slot % fields));
    path += element_index(frame.a, slot / fields) + "." + inspect::name_text(name);
  }
  return path;
}

}  // namespace

std::optional<std::string> first_difference(const hxArray* a, const hxArray* b) {
  std::vector<Frame> frames;
  Finding finding = compare_without_slots(a, b, "<null>");
  if (!finding) frames.push_back({a, b, slots_to_compare(a, b)});
  while (!finding && !frames.empty()) {
    Frame& frame = frames.back();
    if (frame.next_slot == frame.slots) {
      frames.pop_back();
      continue;
    }
    const hxArray* const next_a = inspect::slot_value(frame.a, frame.next_slot);
    const hxArray* const next_b = inspect::slot_value(frame.b, frame.next_slot);
    ++frame.next_slot;
    finding = compare_without_slots(next_a, next_b, "<empty>");
    if (finding) break;
    const size_t slots = slots_to_compare(next_a, next_b);
    if (slots > 0) frames.push_back({next_a, next_b, slots});
  }
  if (!finding) return std::nullopt;
  const std::string path = path_text(frames) + finding->element;
  return path.empty() ? finding->text : path + ": " + finding->text;
}

}  // namespace numera::extras
