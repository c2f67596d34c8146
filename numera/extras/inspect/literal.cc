#include "numera/extras/inspect/literal.h"

#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "numera/extras/inspect/one_line.h"
#include "numera/extras/inspect/rows.h"
#include "numera/extras/inspect/text.h"
#include "numera/extras/inspect/value.h"

namespace numera::extras {
namespace {

using inspect::Content;

// A container of which the slots before `next_slot` are written.
struct Open {
  const hxArray* container;
  inspect::Rows rows;
  size_t elements;
  size_t fields;
  bool in_braces;
  size_t next_element = 0;
  size_t next_field = 0;
};

constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();

class Writer {
 public:
  std::string write(const hxArray* value) {
    begin(value, "<null>");
    while (!open_.empty()) {
      const bool cell = inspect::content_of(open_.back().container) == Content::kCells;
      cell ? write_cell(open_.back()) : write_field(open_.back());
    }
    return std::move(text_);
  }

 private:
  void begin(const hxArray* value, const char* null_text) {
    if (value == nullptr) {
      text_ += null_text;
      return;
    }
    switch (inspect::content_of(value)) {
      case Content::kChars:
        if (inspect::is_row(hxGetDimensions(value))) {
          text_ += inspect::quote(inspect::code_units(value), kNoLimit);
          return;
        }
        [[fallthrough]];
      case Content::kNumbers:
      case Content::kStrings:
        text_ += inspect::one_line(value, null_text, kNoLimit, kNoLimit);
        return;
      case Content::kCells:
      case Content::kFields:
        begin_container(value);
        return;
      case Content::kNothing:
        break;
    }
    throw std::invalid_argument("literal: found " + inspect::class_text(value) + " " +
                                inspect::size_text(value) +
                                ", expected a value whose elements can be read.");
  }

  void begin_container(const hxArray* value) {
    const bool cells = inspect::content_of(value) == Content::kCells;
    const std::span<const size_t> dims = hxGetDimensions(value);
    const size_t elements = hxGetNumberOfElements(value);
    text_ += inspect::class_text(value);
    const bool one = !cells && dims.size() == 2 && elements == 1;
    if (!one) text_ += " " + inspect::size_text(value);
    if (!cells && elements == 0) {
      write_names(value);
      return;
    }
    if (!one) text_ += " {";
    open_.push_back(
        {value, inspect::Rows(dims), elements, cells ? 0 : inspect::field_count(value), !one});
  }

  void write_names(const hxArray* value) {
    text_ += '(';
    for (size_t i = 0; i < inspect::field_count(value); ++i) {
      if (i > 0) text_ += ", ";
      text_ += inspect::name_text(hxGetFieldName(value, static_cast<int>(i)));
    }
    text_ += ')';
  }

  void write_separator(const Open& open) {
    if (open.next_element > 0) text_ += open.rows.starts_row(open.next_element) ? "; " : ", ";
  }

  void write_cell(Open& open) {
    if (open.next_element == open.elements) {
      text_ += '}';
      open_.pop_back();
      return;
    }
    write_separator(open);
    const size_t slot = open.rows.element_at(open.next_element++);
    begin(inspect::slot_value(open.container, slot), "<empty>");
  }

  void write_field(Open& open) {
    if (open.next_field == 0) {
      write_separator(open);
      text_ += '(';
    }
    if (open.next_field < open.fields) {
      const char* const name = hxGetFieldName(open.container, static_cast<int>(open.next_field));
      text_ += (open.next_field > 0 ? ", " : "") + inspect::name_text(name) + "=";
      const size_t element = open.rows.element_at(open.next_element);
      const size_t slot = element * open.fields + open.next_field++;
      begin(inspect::slot_value(open.container, slot), "<empty>");
      return;
    }
    text_ += ')';
    open.next_field = 0;
    if (++open.next_element < open.elements) return;
    if (open.in_braces) text_ += '}';
    open_.pop_back();
  }

  std::string text_;
  std::vector<Open> open_;
};

}  // namespace

std::string literal(const hxArray* value) { return Writer().write(value); }

}  // namespace numera::extras
