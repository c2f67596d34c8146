#include "tests/gauntlet/reading/checks.h"

namespace numera::gauntlet::reading {

bool is_struct(const hxArray* value) {
  return value != nullptr &&
         (hxGetClassID(value) == hxClassID::Struct || hxGetClassID(value) == hxClassID::Object);
}

std::string text_of(const hxArray* value) {
  const bool is_text = value != nullptr && hxGetClassID(value) == hxClassID::Char;
  return is_text ? hxGetString(value) : "";
}

std::string text_of(const hxArray* value, const char* field) {
  return text_of(hxGetFieldChecked(value, 0, field));
}

::arrow::Status check(const hxArray* value, const char* field, hxClassID class_id) {
  if (!is_struct(value)) return ::arrow::Status::TypeError("Struct array required for input");
  if (hxIsEmpty(value)) return ::arrow::Status::OK();
  const hxArray* found = hxGetFieldChecked(value, 0, field);
  if (found == nullptr) {
    return ::arrow::Status::TypeError("Missing field '", field, "' in input struct array");
  }
  if (class_id == hxClassID::Unknown || hxGetClassID(found) == class_id) {
    return ::arrow::Status::OK();
  }
  return ::arrow::Status::TypeError("Incorrect type '", hxGetClassName(found),
                                    "' for struct array field '", field, "'");
}

void require(const hxArray* value, const char* field, hxClassID class_id) {
  const ::arrow::Status status = check(value, field, class_id);
  if (!status.ok()) throw Refusal{status};
}

std::string description(const hxArray* value) {
  if (value == nullptr) return "no value";
  std::string size;
  for (const size_t extent : hxGetDimensions(value)) {
    size += (size.empty() ? "" : "-by-") + std::to_string(extent);
  }
  return std::string("a ") + (hxIsComplex(value) ? "complex " : "") +
         (hxIsSparse(value) ? "sparse " : "") + size + " " + hxGetClassName(value) + " array";
}

void require_plain(const hxArray* value, const char* field) {
  if (!hxIsComplex(value) && !hxIsSparse(value)) return;
  refuse_type("Field '", field, "': found ", description(value),
              ", expected a real array that is not sparse.");
}

Region memory_of(const hxArray* value) {
  const size_t size = hxGetNumberOfElements(value) * hxGetElementSize(value);
  return {hxGetData(value), static_cast<std::int64_t>(size)};
}

}  // namespace numera::gauntlet::reading
