#include "numera/extras/inspect/container_reader.h"

#include <utility>

#include "numera/extras/inspect/rows.h"
#include "numera/extras/inspect/text.h"

namespace numera::extras::inspect {
namespace {

using Form = Container::Form;

void begin_element(Container& container) {
  ++container.elements.count;
  container.field = 0;
  container.in_element = true;
}

// The fields of the first element are those of all.
void add_name(const Scanner& scanner, Container& container, size_t begin, std::string name) {
  if (container.elements.count <= 1) {
    container.names.push_back(std::move(name));
  } else if (container.field >= container.names.size()) {
    scanner.fail_at(begin, "field " + name_text(name), "no more fields than the first element has");
  } else if (container.names[container.field] != name) {
    scanner.fail_at(begin, "field " + name_text(name),
                    "field " + name_text(container.names[container.field]));
  }
  ++container.field;
}

void end_element(const Scanner& scanner, Container& container) {
  container.in_element = false;
  if (container.field < container.names.size()) {
    scanner.fail("field " + name_text(container.names[container.field]));
  }
}

// Whether one more element of a list in braces follows.
bool next_in_braces(Scanner& scanner, Container& container) {
  scanner.skip_space();
  if (scanner.take("}")) return false;
  if (container.elements.count > 0) {
    if (scanner.take(";")) {
      container.elements.end_row();
    } else if (!scanner.take(",")) {
      scanner.fail("\",\", \";\" or \"}\"");
    }
    scanner.skip_space();
  }
  return true;
}

// Whether one more field follows in the parentheses of an element.
bool next_in_parens(Scanner& scanner, Container& container, bool with_value) {
  scanner.skip_space();
  if (scanner.take(")")) return false;
  if (container.field > 0) {
    if (!scanner.take(",")) scanner.fail("\",\" or \")\"");
    scanner.skip_space();
  }
  const size_t begin = scanner.position();
  add_name(scanner, container, begin, scanner.take_name());
  scanner.skip_space();
  if (with_value) {
    scanner.expect("=");
    scanner.skip_space();
  }
  return true;
}

bool next_in_brackets(Scanner& scanner, Container& container) {
  if (container.has_cells()) {
    if (!next_in_braces(scanner, container)) return false;
    ++container.elements.count;
    return true;
  }
  const bool listed = container.form == Form::kBraces;
  const bool with_value = listed || container.stated > 0;
  for (;;) {
    if (!container.in_element) {
      if (listed ? !next_in_braces(scanner, container) : container.elements.count > 0) return false;
      if (listed) scanner.expect("(");
      begin_element(container);
    }
    if (next_in_parens(scanner, container, with_value)) {
      if (with_value) return true;
    } else {
      end_element(scanner, container);
    }
  }
}

// Whether one more line with this indent follows.
bool next_line(Scanner& scanner, size_t indent) {
  if (scanner.at_end() || scanner.indent() < indent) return false;
  if (scanner.indent() > indent) {
    scanner.take_indent();
    scanner.fail("an indent of " + std::to_string(indent) + " blanks or fewer");
  }
  scanner.take_indent();
  return true;
}

// Passes the label of the next element: "{0,1}:" or "(3):".
void take_label(Scanner& scanner, Container& container, std::string_view open,
                std::string_view close) {
  const Dims dims = container.head.dims.value_or(Dims{1, 1});
  const std::string index = index_text(dims, container.elements.count);
  const std::string label = std::string(open) + index + std::string(close) + ":";
  if (!next_line(scanner, container.indent)) scanner.fail("\"" + label + "\"");
  scanner.expect(label);
}

// Passes "name:" in front of a value, or alone where there are no elements.
bool next_field_line(Scanner& scanner, Container& container, size_t indent, bool with_value) {
  if (!next_line(scanner, indent)) return false;
  const size_t begin = scanner.position();
  add_name(scanner, container, begin, scanner.take_name());
  scanner.expect(":");
  scanner.skip_blanks();
  if (!with_value) scanner.end_line();
  return true;
}

bool next_on_lines(Scanner& scanner, Container& container) {
  const size_t count = container.stated;
  if (container.has_cells()) {
    if (container.elements.count == count) return false;
    take_label(scanner, container, "{", "}");
    scanner.skip_blanks();
    ++container.elements.count;
    return true;
  }
  for (;;) {
    if (!container.in_element) {
      if (container.elements.count == (container.labelled ? count : 1)) return false;
      if (container.labelled) {
        take_label(scanner, container, "(", ")");
        scanner.end_line();
      }
      begin_element(container);
    }
    const size_t indent = container.indent + (container.labelled ? 2 : 0);
    if (!next_field_line(scanner, container, indent, count > 0)) {
      end_element(scanner, container);
    } else if (count > 0) {
      return true;
    }
  }
}

hxArrayPtr make_container(const Scanner& scanner, const Container& container, const Dims& dims,
                          MakeObject make_object) {
  if (container.has_cells()) return hxCreateCellArray(dims);
  std::vector<const char*> names;
  names.reserve(container.names.size());
  for (const std::string& name : container.names) names.push_back(name.c_str());
  if (container.head.class_id == hxClassID::Struct) return hxCreateStructArray(dims, names);
  if (make_object == nullptr) scanner.fail_at(scanner.position(), "an object", "a struct");
  return make_object(container.head.object_class, dims, names);
}

Dims final_dims(const Scanner& scanner, const Container& container) {
  if (container.form == Form::kBraces) {
    return shape_of(container.elements, container.head.dims, scanner);
  }
  return container.head.dims.value_or(Dims{1, 1});
}

}  // namespace

Container open_container(Scanner& scanner, Head head, size_t line_indent, bool in_brackets) {
  Container container{std::move(head), Form::kNothing};
  container.indent = line_indent + 2;
  const bool cells = container.has_cells();
  if (container.head.dims) {
    container.stated = checked_element_count(*container.head.dims, scanner);
  }
  const size_t count = container.stated;
  scanner.skip_blanks();
  if (scanner.take("{")) {
    container.form = Form::kBraces;
  } else if (!cells && count <= 1 && scanner.take("(")) {
    container.form = Form::kParens;
  } else if (cells && !container.head.dims) {
    scanner.fail("a size, or \"{\"");
  } else if (!in_brackets) {
    container.form = Form::kLines;
    container.labelled = !cells && count > 1;
    scanner.end_line();
  } else if (count > (cells ? 0 : 1)) {
    scanner.fail("\"{\"");
  }
  return container;
}

bool next_slot(Scanner& scanner, Container& container) {
  switch (container.form) {
    case Form::kBraces:
    case Form::kParens:
      return next_in_brackets(scanner, container);
    case Form::kLines:
      return next_on_lines(scanner, container);
    case Form::kNothing:
      break;
  }
  return false;
}

hxArrayPtr close_container(const Scanner& scanner, Container& container, MakeObject make_object) {
  const Dims dims = final_dims(scanner, container);
  hxArrayPtr array = make_container(scanner, container, dims, make_object);
  const Rows rows(dims);
  const size_t fields = container.has_cells() ? 1 : container.names.size();
  for (size_t i = 0; i < container.values.size(); ++i) {
    if (container.values[i] == nullptr) continue;
    const size_t element = i / fields;
    const bool by_rows = container.form == Form::kBraces;
    const size_t slot = (by_rows ? rows.element_at(element) : element) * fields + i % fields;
    hxSetCell(array.get(), slot, std::move(container.values[i]));
  }
  return array;
}

}  // namespace numera::extras::inspect
