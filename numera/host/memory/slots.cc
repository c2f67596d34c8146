#include <stdexcept>
#include <utility>

#include "numera/host/memory/layout.h"
#include "numera/host/memory/operations.h"
#include "numera/host/memory/storage.h"

namespace numera::host::memory {
namespace {

constexpr const char* kNotCell = "Array is not cell array.";
constexpr const char* kCellRange = "Cell index is out of range.";

bool is_struct(const hxArray* array) {
  return array != nullptr && (array->layout->class_id == hxClassID::Struct ||
                              array->layout->class_id == hxClassID::Object);
}

bool is_cell(const hxArray* array) {
  return array != nullptr && array->layout->class_id == hxClassID::Cell;
}

size_t slot_of(const hxArray* array, size_t index, int field) {
  return index * array->layout->field_names.size() + static_cast<size_t>(field);
}

size_t checked_slot(const hxArray* array, size_t index, const char* name) {
  if (!is_struct(array)) throw std::invalid_argument("Array is not struct array.");
  const int field = find_field(*array->layout, name);
  if (field < 0) throw std::invalid_argument("Wrong field name.");
  if (index >= array->layout->element_count) {
    throw std::out_of_range("Struct index is out of range.");
  }
  return slot_of(array, index, field);
}

void store(hxArray* array, size_t slot, hxArrayPtr value) {
  unshare(array);
  destroy_array(std::exchange(array->slots()[slot], value.release()));
}

}  // namespace

int get_field_number(const hxArray* array, const char* name) noexcept {
  return find_field(*array->layout, name);
}

int get_number_of_fields(const hxArray* array) noexcept {
  return static_cast<int>(array->layout->field_names.size());
}

const char* get_field_name(const hxArray* array, int number) noexcept {
  const auto names = array->layout->field_names;
  if (number < 0 || static_cast<size_t>(number) >= names.size()) return nullptr;
  return names[static_cast<size_t>(number)];
}

const hxArray* get_field(const hxArray* array, size_t index, const char* name) noexcept {
  const int field = find_field(*array->layout, name);
  if (field < 0 || index >= array->layout->element_count) return nullptr;
  return array->slots()[slot_of(array, index, field)];
}

const hxArray* get_field_checked(const hxArray* array, size_t index, const char* name) {
  const size_t slot = checked_slot(array, index, name);
  return array->slots()[slot];
}

const hxArray* get_cell(const hxArray* array, size_t index) noexcept {
  if (!is_cell(array) || index >= array->layout->element_count) return nullptr;
  return array->slots()[index];
}

const hxArray* get_cell_checked(const hxArray* array, size_t index) {
  if (!is_cell(array)) throw std::invalid_argument(kNotCell);
  if (index >= array->layout->element_count) throw std::out_of_range(kCellRange);
  return array->slots()[index];
}

// Implements both `hxSetCell` and `hxReplaceCell`. An empty slot is a null pointer, and destroying
// that does nothing.
void set_cell(hxArray* array, size_t slot, hxArrayPtr value) {
  if (array == nullptr || array->layout->content != Content::Slots) {
    throw std::invalid_argument(kNotCell);
  }
  if (slot >= array->slots().size()) throw std::out_of_range(kCellRange);
  store(array, slot, std::move(value));
}

void set_field(hxArray* array, size_t index, const char* name, hxArrayPtr value) {
  const size_t slot = checked_slot(array, index, name);
  store(array, slot, std::move(value));
}

}  // namespace numera::host::memory
