#include "numera/extras/encode/located.h"

#include <vector>

#include "numera/extras/column_status.h"
#include "numera/format/values.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"

namespace numera::extras::encoding {
namespace {

void append_step(const Located& place, std::string& text) {
  const std::string* const names = place.parent->column_names;
  if (names != nullptr) {
    text += column_text(names[place.index], static_cast<int>(place.index));
    if (place.field != nullptr) text.append(".").append(place.field);
    return;
  }
  const std::string index = std::to_string(place.index);
  if (place.field == nullptr) {
    const bool in_cell = hxGetClassID(place.parent->value) == hxClassID::Cell;
    text += in_cell ? "{" + index + "}" : "(" + index + ")";
    return;
  }
  if (hxGetNumberOfElements(place.parent->value) != 1) text += "(" + index + ")";
  text += ".";
  text += place.field;
}

::arrow::Status failure(::arrow::StatusCode code, const Located& place, std::string_view found,
                        std::string_view expected) {
  return {code, path_of(place) + ": found " + std::string(found) + ", expected " +
                    std::string(expected) + "."};
}

::arrow::Status not_plain(const Located& place) {
  return wrong_class(place, "real numbers that are not sparse");
}

}  // namespace

std::string path_of(const Located& place) {
  std::vector<const Located*> steps;
  for (const Located* step = &place; step->parent != nullptr; step = step->parent) {
    steps.push_back(step);
    if (step->parent->column_names != nullptr) break;
  }
  if (steps.empty()) return "Value";
  std::string text;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) append_step(**step, text);
  return text;
}

::arrow::Status wrong_class(const Located& place, std::string_view expected) {
  return failure(::arrow::StatusCode::TypeError, place, format::describe(place.value), expected);
}

::arrow::Status invalid(const Located& place, std::string_view found, std::string_view expected) {
  return failure(::arrow::StatusCode::Invalid, place, found, expected);
}

::arrow::Status at(const Located& place, const ::arrow::Status& status) {
  return status.WithMessage(path_of(place), ": ", status.message());
}

bool has_fields(const hxArray* value) {
  return format::is_struct(value) && !hxIsStringArray(value);
}

::arrow::Result<Located> field(const Located& record, size_t index, const char* name) {
  if (!has_fields(record.value)) return wrong_class(record, "a struct array");
  if (hxGetFieldNumber(record.value, name) < 0) {
    return wrong_class(record, "the field '" + std::string(name) + "' in it");
  }
  const Located found{hxGetField(record.value, index, name), &record, name, index};
  if (found.value == nullptr) return wrong_class(found, "one");
  return found;
}

::arrow::Result<Located> cell(const Located& cells, size_t index) {
  const Located found{hxGetCell(cells.value, index), &cells, nullptr, index};
  if (found.value == nullptr) return wrong_class(found, "one");
  return found;
}

::arrow::Status check_class(const Located& place, hxClassID class_id, std::string_view expected) {
  if (place.value != nullptr && hxGetClassID(place.value) == class_id) return {};
  return wrong_class(place, expected);
}

::arrow::Status check_numbers(const Located& place) {
  if (hxIsNumeric(place.value) && format::is_plain(place.value)) return {};
  return not_plain(place);
}

::arrow::Status check_numbers(const Located& place, hxClassID class_id, std::string_view expected) {
  ARROW_RETURN_NOT_OK(check_class(place, class_id, expected));
  return format::is_plain(place.value) ? ::arrow::Status::OK() : not_plain(place);
}

::arrow::Status check_one_element(const Located& place) {
  const size_t elements = hxGetNumberOfElements(place.value);
  if (elements == 1) return {};
  return invalid(place, std::to_string(elements) + " elements", "one");
}

::arrow::Result<std::string> text_of(const Located& place) {
  ARROW_RETURN_NOT_OK(check_class(place, hxClassID::Char, "a char array"));
  try {
    return hxGetString(place.value);
  } catch (const hxCodecError& error) {
    return invalid(place, "text that is not UTF-16 (" + std::string(error.what()) + ")",
                   "paired surrogates");
  }
}

}  // namespace numera::extras::encoding
