#pragma once

/// \file
/// What printing and comparing share: what a value holds, and the texts of its parts. No pointer
/// is null here.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// What can be read out of a value.
enum class Content : std::uint8_t { kNumbers, kChars, kStrings, kCells, kFields, kNothing };

/// Truth values are numbers. Of sparse arrays nothing can be read: the interface does not say how
/// their elements lie.
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

/// The value in a slot, borrowed; null where it is empty. Slots of a struct or an object lie
/// element by element. Fields are read by their names: null for a second one of a name, since what
/// the first one holds would be visited twice on every level, and so 2^n times in n of them.
const hxArray* slot_value(const hxArray* container, size_t slot);
size_t slot_count(const hxArray* container);
size_t field_count(const hxArray* array);

}  // namespace numera::extras::inspect
