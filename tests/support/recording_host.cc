/// \file
/// The host interface. Every call goes through the recorder to the in-memory host.

#include "tests/support/recording_host.h"

#include <utility>

#include "numera/host/array.h"
#include "numera/host/memory/operations.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tests/support/recorder.h"

namespace host = numera::host::memory;
using numera::testing::codec_input;
using numera::testing::created;
using numera::testing::note;
using numera::testing::note_throwing;

hxArrayPtr hxCreateNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                hxComplexity complexity) {
  note_throwing("hxCreateNumericArray");
  return created("hxCreateNumericArray", host::create_numeric_array(dims, class_id, complexity));
}

hxArrayPtr hxCreateUninitNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                      hxComplexity complexity) {
  note_throwing("hxCreateUninitNumericArray");
  return created("hxCreateUninitNumericArray",
                 host::create_uninit_numeric_array(dims, class_id, complexity));
}

hxArrayPtr hxCreateCellArray(std::span<const size_t> dims) {
  note_throwing("hxCreateCellArray");
  return created("hxCreateCellArray", host::create_cell_array(dims));
}

hxArrayPtr hxCreateStructArray(std::span<const size_t> dims,
                               std::span<const char* const> field_names) {
  note_throwing("hxCreateStructArray");
  return created("hxCreateStructArray", host::create_struct_array(dims, field_names));
}

hxArrayPtr hxCreateCharArray(const char16_t* text, size_t length) {
  note_throwing("hxCreateCharArray");
  return created("hxCreateCharArray", host::create_char_array(text, length));
}

hxArrayPtr hxCreateCharArray(const char* text, size_t length) {
  note_throwing("hxCreateCharArray");
  return created("hxCreateCharArray", host::create_char_array(text, length));
}

hxArrayPtr hxSharedCopy(const hxArray* array) {
  note_throwing("hxSharedCopy");
  return created("hxSharedCopy", host::shared_copy(array));
}

void hxDestroyArray(hxArray* array) noexcept {
  note("hxDestroyArray");
  host::destroy_array(array);
}

hxClassID hxGetClassID(const hxArray* array) noexcept {
  note("hxGetClassID");
  return host::get_class_id(array);
}

const char* hxGetClassName(const hxArray* array) noexcept {
  note("hxGetClassName");
  return host::get_class_name(array);
}

bool hxIsEmpty(const hxArray* array) noexcept {
  note("hxIsEmpty");
  return host::is_empty(array);
}

bool hxIsNumeric(const hxArray* array) noexcept {
  note("hxIsNumeric");
  return host::is_numeric(array);
}

bool hxIsComplex(const hxArray* array) noexcept {
  note("hxIsComplex");
  return host::is_complex(array);
}

bool hxIsSparse(const hxArray* array) noexcept {
  note("hxIsSparse");
  return host::is_sparse(array);
}

bool hxIsDataShared(const hxArray* array) noexcept {
  note("hxIsDataShared");
  return host::is_data_shared(array);
}

size_t hxGetElementSize(const hxArray* array) noexcept {
  note("hxGetElementSize");
  return host::get_element_size(array);
}

size_t hxGetNumberOfElements(const hxArray* array) noexcept {
  note("hxGetNumberOfElements");
  return host::get_number_of_elements(array);
}

std::span<const size_t> hxGetDimensions(const hxArray* array) noexcept {
  note("hxGetDimensions");
  return host::get_dimensions(array);
}

const void* hxGetData(const hxArray* array) noexcept {
  note("hxGetData const");
  return host::get_data(array);
}

void* hxGetData(hxArray* array) {
  note_throwing("hxGetData");
  return host::get_data(array);
}

std::string hxGetString(const hxArray* array) {
  note_throwing("hxGetString");
  return host::get_string(array);
}

int hxGetFieldNumber(const hxArray* array, const char* name) noexcept {
  note("hxGetFieldNumber");
  return host::get_field_number(array, name);
}

int hxGetNumberOfFields(const hxArray* array) noexcept {
  note("hxGetNumberOfFields");
  return host::get_number_of_fields(array);
}

const char* hxGetFieldName(const hxArray* array, int number) noexcept {
  note("hxGetFieldName");
  return host::get_field_name(array, number);
}

const hxArray* hxGetField(const hxArray* array, size_t index, const char* name) noexcept {
  note("hxGetField");
  return host::get_field(array, index, name);
}

const hxArray* hxGetFieldChecked(const hxArray* array, size_t index, const char* name) {
  note_throwing("hxGetFieldChecked");
  return host::get_field_checked(array, index, name);
}

const hxArray* hxGetCell(const hxArray* array, size_t index) noexcept {
  note("hxGetCell");
  return host::get_cell(array, index);
}

const hxArray* hxGetCellChecked(const hxArray* array, size_t index) {
  note_throwing("hxGetCellChecked");
  return host::get_cell_checked(array, index);
}

void hxSetCell(hxArray* array, size_t slot, hxArrayPtr value) {
  note_throwing("hxSetCell");
  host::set_cell(array, slot, std::move(value));
}

void hxReplaceCell(hxArray* array, size_t slot, hxArrayPtr value) {
  note_throwing("hxReplaceCell");
  host::set_cell(array, slot, std::move(value));
}

void hxSetField(hxArray* array, size_t index, const char* name, hxArrayPtr value) {
  note_throwing("hxSetField");
  host::set_field(array, index, name, std::move(value));
}

void hxThrowIfInterruptPending() {
  note_throwing("hxThrowIfInterruptPending");
  host::throw_if_interrupt_pending();
}

std::unique_ptr<hxStringArray> hxMakeStringArray(std::span<const size_t> dims) {
  note_throwing("hxMakeStringArray");
  return created("hxMakeStringArray", host::make_string_array(dims));
}

hxArrayPtr hxCreateStringArrayFrom(std::unique_ptr<hxStringArray> strings) {
  note_throwing("hxCreateStringArrayFrom");
  return created("hxCreateStringArrayFrom", host::create_string_array_from(std::move(strings)));
}

bool hxIsStringArray(const hxArray* array) noexcept {
  note("hxIsStringArray");
  return host::is_string_array(array);
}

const hxStringArray& hxGetStringArray(const hxArray* array) {
  note_throwing("hxGetStringArray");
  return host::get_string_array(array);
}

class hxUTF8ToUTF16::Implementation {};
hxUTF8ToUTF16::~hxUTF8ToUTF16() = default;
class hxUTF16ToUTF8::Implementation {};
hxUTF16ToUTF8::~hxUTF16ToUTF8() = default;

hxUTF8ToUTF16::hxUTF8ToUTF16(const char* encoding) {
  note_throwing("hxUTF8ToUTF16");
  host::check_encoding(encoding);
}

std::u16string hxUTF8ToUTF16::convert(std::string_view text) const {
  note_throwing("hxUTF8ToUTF16::convert");
  return host::decode_utf8(text);
}

hxUTF16ToUTF8::hxUTF16ToUTF8(const char* encoding) {
  note_throwing("hxUTF16ToUTF8");
  host::check_encoding(encoding);
}

std::string hxUTF16ToUTF8::convert(const char16_t* text, size_t length) const {
  note_throwing("hxUTF16ToUTF8::convert");
  const std::u16string input = codec_input({text, length});
  return host::encode_utf8(input.data(), input.size());
}

void hxErrorMaxLhs() {
  note_throwing("hxErrorMaxLhs");
  host::error_max_lhs();
}

void hxErrorMinRhs() {
  note_throwing("hxErrorMinRhs");
  host::error_min_rhs();
}

void hxErrorMaxRhs() {
  note_throwing("hxErrorMaxRhs");
  host::error_max_rhs();
}
