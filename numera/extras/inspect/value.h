#pragma once

/// \file
/// Shared by printing and comparing: what a value holds, and the texts of its parts. No pointer may
/// be null.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// What can be read from a value.
enum class Content : std::uint8_t { kNumbers, kChars, kStrings, kCells, kFields, kNothing };

/// Truth values count as numbers. Nothing can be read from sparse arrays: the interface does not
/// say how their elements are stored.
Content content_of(const hxArray* array);

/// "double", "sparse complex single", `object "Point"`, "class 16".
std::string class_text(const hxArray* array);
/// "3x1"
std::string size_text(const hxArray* array);

/// Whether all elements lie along one of two dimensions.
bool is_vector(std::span<const size_t> dims);
/// Whether a char array is one text.
bool is_row(std::span<const size_t> dims);
/// The indexes of an element: "4" in a vector, else "1,0".
std::string index_text(std::span<const size_t> dims, size_t element);

/// The code units of a char array in storage order.
std::u16string_view code_units(const hxArray* array);

/// The value in a slot, borrowed; null if the slot is empty. Slots of a struct or an object are
/// ordered element by element. Fields are read by name. If several fields have the same name, all
/// but the first give null: otherwise two such fields per level would make 2^n visits in n levels.
const hxArray* slot_value(const hxArray* container, size_t slot);
size_t slot_count(const hxArray* container);
size_t field_count(const hxArray* array);

}  // namespace numera::extras::inspect
