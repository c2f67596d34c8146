#include "numera/files/json_fields.h"

#include <arrow/util/utf8.h>

namespace numera::files {
namespace {

constexpr std::string_view kBlank = " \t\r\n";

/// The position of the quotation mark that ends the text that starts at `at`.
size_t end_of_text(std::string_view line, size_t at) {
  while (true) {
    at = line.find_first_of("\"\\", at);
    if (at == std::string_view::npos || line[at] == '"') return at;
    at += 2;
  }
}

bool is_name(std::string_view line, size_t after_text) {
  const size_t next = line.find_first_not_of(kBlank, after_text);
  return next != std::string_view::npos && line[next] == ':';
}

}  // namespace

void JsonFields::restart() {
  values_ = 0;
  for (Group& group : groups_) group.length = 0;
}

::arrow::Result<bool> JsonFields::scan(std::string_view line) {
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  const size_t start = line.find_first_not_of(kBlank);
  if (start == std::string_view::npos) return false;
  if (!::arrow::util::ValidateUTF8(line)) return ::arrow::Status::Invalid("it is not UTF-8");
  if (line[start] != '{') return ::arrow::Status::Invalid("it is no JSON object");
  add_element(0);
  ARROW_RETURN_NOT_OK(scan_object(line.substr(start)));
  return true;
}

::arrow::Status JsonFields::scan_object(std::string_view line) {
  opened_.clear();
  current_ = 0;
  size_t at = 0;
  do {
    at = line.find_first_of("\"{}[],", at);
    if (at == std::string_view::npos) break;
    const char found = line[at++];
    if (found == '"') {
      const size_t end = end_of_text(line, at);
      if (end == std::string_view::npos) break;
      if (is_name(line, end + 1)) ARROW_RETURN_NOT_OK(name_field(line.substr(at, end - at)));
      at = end + 1;
    } else if (found == ',') {
      next_value();
    } else if (found == '{' || found == '[') {
      ARROW_RETURN_NOT_OK(open(found));
    } else {
      opened_.pop_back();
    }
  } while (!opened_.empty());
  if (!opened_.empty()) return ::arrow::Status::Invalid("the JSON object does not end in it");
  return line.find_first_not_of(kBlank, at) == std::string_view::npos
             ? ::arrow::Status::OK()
             : ::arrow::Status::Invalid("text follows the JSON object");
}

::arrow::Status JsonFields::open(char bracket) {
  if (opened_.size() == kDeepestJson) {
    return ::arrow::Status::Invalid("it has more than ", kDeepestJson, " levels of nesting");
  }
  if (bracket == '[') {
    if (fields_[current_].elements == 0) {
      groups_.push_back({});
      ARROW_ASSIGN_OR_RAISE(fields_[current_].elements, add_field(groups_.size() - 1, 0));
    }
    current_ = fields_[current_].elements;
    add_element(fields_[current_].group);
  }
  opened_.push_back({current_, bracket == '['});
  return ::arrow::Status::OK();
}

/// An element of a list, or the next name of an object, which finds its field itself.
void JsonFields::next_value() {
  current_ = opened_.back().field;
  if (opened_.back().is_list) add_element(fields_[current_].group);
}

::arrow::Status JsonFields::name_field(std::string_view name) {
  const size_t parent = opened_.back().field;
  const auto& children = fields_[parent].children;
  if (const auto found = children.find(name); found != children.end()) {
    current_ = found->second;
    return ::arrow::Status::OK();
  }
  ARROW_ASSIGN_OR_RAISE(current_, add_field(fields_[parent].group, name.size()));
  fields_[parent].children.emplace(name, current_);
  return ::arrow::Status::OK();
}

void JsonFields::add_element(size_t group) {
  ++groups_[group].length;
  values_ += groups_[group].fields;
}

/// Long names count as several fields, because all names stay in memory.
::arrow::Result<size_t> JsonFields::add_field(size_t group, size_t name_length) {
  size_ += 1 + name_length / 1024;
  if (size_ > kMostJsonFields) {
    return ::arrow::Status::Invalid("the file has more than ", kMostJsonFields,
                                    " fields, or their names are too long");
  }
  fields_.push_back({.group = group});
  ++groups_[group].fields;
  values_ += groups_[group].length;
  return fields_.size() - 1;
}

}  // namespace numera::files
