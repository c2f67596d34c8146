/// \file
/// Forwards the host interface to the in-memory host. No other file of this host defines a function
/// of the interface.

#include <utility>

#include "numera/host/array.h"
#include "numera/host/memory/operations.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"

namespace host = numera::host::memory;

hxArrayPtr hxCreateNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                hxComplexity complexity) {
  return host::create_numeric_array(dims, class_id, complexity);
}
hxArrayPtr hxCreateUninitNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                      hxComplexity complexity) {
  return host::create_uninit_numeric_array(dims, class_id, complexity);
}
hxArrayPtr hxCreateCellArray(std::span<const size_t> dims) { return host::create_cell_array(dims); }
hxArrayPtr hxCreateStructArray(std::span<const size_t> dims,
                               std::span<const char* const> field_names) {
  return host::create_struct_array(dims, field_names);
}
hxArrayPtr hxCreateCharArray(const char16_t* text, size_t length) {
  return host::create_char_array(text, length);
}
hxArrayPtr hxCreateCharArray(const char* text, size_t length) {
  return host::create_char_array(text, length);
}
hxArrayPtr hxSharedCopy(const hxArray* array) { return host::shared_copy(array); }
void hxDestroyArray(hxArray* array) noexcept { host::destroy_array(array); }

hxClassID hxGetClassID(const hxArray* array) noexcept { return host::get_class_id(array); }
const char* hxGetClassName(const hxArray* array) noexcept { return host::get_class_name(array); }
bool hxIsEmpty(const hxArray* array) noexcept { return host::is_empty(array); }
bool hxIsNumeric(const hxArray* array) noexcept { return host::is_numeric(array); }
bool hxIsComplex(const hxArray* array) noexcept { return host::is_complex(array); }
bool hxIsSparse(const hxArray* array) noexcept { return host::is_sparse(array); }
bool hxIsDataShared(const hxArray* array) noexcept { return host::is_data_shared(array); }
size_t hxGetElementSize(const hxArray* array) noexcept { return host::get_element_size(array); }
size_t hxGetNumberOfElements(const hxArray* array) noexcept {
  return host::get_number_of_elements(array);
}
std::span<const size_t> hxGetDimensions(const hxArray* array) noexcept {
  return host::get_dimensions(array);
}
const void* hxGetData(const hxArray* array) noexcept { return host::get_data(array); }
void* hxGetData(hxArray* array) { return host::get_data(array); }
std::string hxGetString(const hxArray* array) { return host::get_string(array); }

int hxGetFieldNumber(const hxArray* array, const char* name) noexcept {
  return host::get_field_number(array, name);
}
int hxGetNumberOfFields(const hxArray* array) noexcept { return host::get_number_of_fields(array); }
const char* hxGetFieldName(const hxArray* array, int number) noexcept {
  return host::get_field_name(array, number);
}
const hxArray* hxGetField(const hxArray* array, size_t index, const char* name) noexcept {
  return host::get_field(array, index, name);
}
const hxArray* hxGetFieldChecked(const hxArray* array, size_t index, const char* name) {
  return host::get_field_checked(array, index, name);
}
const hxArray* hxGetCell(const hxArray* array, size_t index) noexcept {
  return host::get_cell(array, index);
}
const hxArray* hxGetCellChecked(const hxArray* array, size_t index) {
  return host::get_cell_checked(array, index);
}
void hxSetCell(hxArray* array, size_t slot, hxArrayPtr value) {
  host::set_cell(array, slot, std::move(value));
}
void hxReplaceCell(hxArray* array, size_t slot, hxArrayPtr value) {
  host::set_cell(array, slot, std::move(value));
}
void hxSetField(hxArray* array, size_t index, const char* name, hxArrayPtr value) {
  host::set_field(array, index, name, std::move(value));
}
void hxThrowIfInterruptPending() { host::throw_if_interrupt_pending(); }

std::unique_ptr<hxStringArray> hxMakeStringArray(std::span<const size_t> dims) {
  return host::make_string_array(dims);
}
hxArrayPtr hxCreateStringArrayFrom(std::unique_ptr<hxStringArray> strings) {
  return host::create_string_array_from(std::move(strings));
}
bool hxIsStringArray(const hxArray* array) noexcept { return host::is_string_array(array); }
const hxStringArray& hxGetStringArray(const hxArray* array) {
  return host::get_string_array(array);
}

// The codecs have no state.
class hxUTF8ToUTF16::Implementation {};
hxUTF8ToUTF16::hxUTF8ToUTF16(const char* encoding) { host::check_encoding(encoding); }
hxUTF8ToUTF16::~hxUTF8ToUTF16() = default;
std::u16string hxUTF8ToUTF16::convert(std::string_view text) const {
  return host::decode_utf8(text);
}

class hxUTF16ToUTF8::Implementation {};
hxUTF16ToUTF8::hxUTF16ToUTF8(const char* encoding) { host::check_encoding(encoding); }
hxUTF16ToUTF8::~hxUTF16ToUTF8() = default;
std::string hxUTF16ToUTF8::convert(const char16_t* text, size_t length) const {
  return host::encode_utf8(text, length);
}

void hxErrorMaxLhs() { host::error_max_lhs(); }
void hxErrorMinRhs() { host::error_min_rhs(); }
void hxErrorMaxRhs() { host::error_max_rhs(); }
