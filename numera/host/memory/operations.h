#pragma once

/// \file
/// The operations of the in-memory host under its own names. For example, `create_cell_array`
/// implements `hxCreateCellArray`.
///
/// The interface functions are not defined here. A program can thus insert its own layer between
/// the interface and this host.

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "numera/host/array.h"
#include "numera/host/string_array.h"

namespace numera::host::memory {

hxArrayPtr create_numeric_array(std::span<const size_t> dims, hxClassID class_id,
                                hxComplexity complexity);
hxArrayPtr create_uninit_numeric_array(std::span<const size_t> dims, hxClassID class_id,
                                       hxComplexity complexity);
hxArrayPtr create_cell_array(std::span<const size_t> dims);
hxArrayPtr create_struct_array(std::span<const size_t> dims,
                               std::span<const char* const> field_names);
hxArrayPtr create_char_array(const char16_t* text, size_t length);
hxArrayPtr create_char_array(const char* text, size_t length);
hxArrayPtr shared_copy(const hxArray* array);
void destroy_array(hxArray* array) noexcept;

hxClassID get_class_id(const hxArray* array) noexcept;
const char* get_class_name(const hxArray* array) noexcept;
bool is_empty(const hxArray* array) noexcept;
bool is_numeric(const hxArray* array) noexcept;
bool is_complex(const hxArray* array) noexcept;
bool is_sparse(const hxArray* array) noexcept;
bool is_data_shared(const hxArray* array) noexcept;
size_t get_element_size(const hxArray* array) noexcept;
size_t get_number_of_elements(const hxArray* array) noexcept;
std::span<const size_t> get_dimensions(const hxArray* array) noexcept;
const void* get_data(const hxArray* array) noexcept;
void* get_data(hxArray* array);
std::string get_string(const hxArray* array);

int get_field_number(const hxArray* array, const char* name) noexcept;
int get_number_of_fields(const hxArray* array) noexcept;
const char* get_field_name(const hxArray* array, int number) noexcept;
const hxArray* get_field(const hxArray* array, size_t index, const char* name) noexcept;
const hxArray* get_field_checked(const hxArray* array, size_t index, const char* name);
const hxArray* get_cell(const hxArray* array, size_t index) noexcept;
const hxArray* get_cell_checked(const hxArray* array, size_t index);
void set_cell(hxArray* array, size_t slot, hxArrayPtr value);
void set_field(hxArray* array, size_t index, const char* name, hxArrayPtr value);

std::unique_ptr<hxStringArray> make_string_array(std::span<const size_t> dims);
hxArrayPtr create_string_array_from(std::unique_ptr<hxStringArray> strings);
bool is_string_array(const hxArray* array) noexcept;
const hxStringArray& get_string_array(const hxArray* array);

/// Throws `std::invalid_argument` if `encoding` is not "UTF-8".
void check_encoding(const char* encoding);
std::u16string decode_utf8(std::string_view text);
std::string encode_utf8(const char16_t* text, size_t length);

void throw_if_interrupt_pending();

[[noreturn]] void error_max_lhs();
[[noreturn]] void error_min_rhs();
[[noreturn]] void error_max_rhs();

}  // namespace numera::host::memory
