// Fields of structs, and elements of cells.

#include <stdexcept>
#include <string_view>
#include <utility>

#include "examples/own_host/own_array.h"

namespace {

bool is_struct(const hxArray* array) {
  return array != nullptr &&
         (hxGetClassID(array) == hxClassID::Struct || hxGetClassID(array) == hxClassID::Object);
}

bool is_cell(const hxArray* array) {
  return array != nullptr && hxGetClassID(array) == hxClassID::Cell;
}

size_t slot_of(const hxArray* array, size_t index, int field) {
  return index * array->shape->fields.size() + static_cast<size_t>(field);
}

// The slot of a field. The checks come in the order that every host must keep.
size_t checked_slot(const hxArray* array, size_t index, const char* name) {
  if (!is_struct(array)) throw std::invalid_argument("Array is not struct array.");
  const int field = hxGetFieldNumber(array, name);
  if (field < 0) throw std::invalid_argument("Wrong field name.");
  if (index >= hxGetNumberOfElements(array)) {
    throw std::out_of_range("Struct index is out of range.");
  }
  return slot_of(array, index, field);
}

void store(hxArray* array, size_t slot, hxArrayPtr value) {
  own_host::unshare(array);
  array->content->slots[slot] = std::move(value);
}

}  // namespace

int hxGetFieldNumber(const hxArray* array, const char* name) noexcept {
  if (name == nullptr) return -1;
  const std::string_view wanted = name;
  for (int field = 0; field < hxGetNumberOfFields(array); ++field) {
    if (array->shape->fields[static_cast<size_t>(field)] == wanted) return field;
  }
  return -1;
}

int hxGetNumberOfFields(const hxArray* array) noexcept {
  return static_cast<int>(array->shape->fields.size());
}

const char* hxGetFieldName(const hxArray* array, int number) noexcept {
  if (number < 0 || number >= hxGetNumberOfFields(array)) return nullptr;
  return array->shape->fields[static_cast<size_t>(number)].c_str();
}

const hxArray* hxGetField(const hxArray* array, size_t index, const char* name) noexcept {
  const int field = hxGetFieldNumber(array, name);
  if (field < 0 || index >= hxGetNumberOfElements(array)) return nullptr;
  return array->content->slots[slot_of(array, index, field)].get();
}

const hxArray* hxGetFieldChecked(const hxArray* array, size_t index, const char* name) {
  return array == nullptr ? throw std::invalid_argument("Array is not struct array.")
                          : array->content->slots[checked_slot(array, index, name)].get();
}

const hxArray* hxGetCell(const hxArray* array, size_t index) noexcept {
  if (!is_cell(array) || index >= hxGetNumberOfElements(array)) return nullptr;
  return array->content->slots[index].get();
}

const hxArray* hxGetCellChecked(const hxArray* array, size_t index) {
  if (!is_cell(array)) throw std::invalid_argument("Array is not cell array.");
  if (index >= hxGetNumberOfElements(array)) {
    throw std::out_of_range("Cell index is out of range.");
  }
  return array->content->slots[index].get();
}

void hxSetCell(hxArray* array, size_t slot, hxArrayPtr value) {
  hxReplaceCell(array, slot, std::move(value));
}

void hxReplaceCell(hxArray* array, size_t slot, hxArrayPtr value) {
  if (!is_cell(array) && (!is_struct(array) || hxIsStringArray(array))) {
    throw std::invalid_argument("Array is not cell array.");
  }
  if (slot >= array->content->slots.size()) throw std::out_of_range("Cell index is out of range.");
  store(array, slot, std::move(value));
}

void hxSetField(hxArray* array, size_t index, const char* name, hxArrayPtr value) {
  store(array, checked_slot(array, index, name), std::move(value));
}
