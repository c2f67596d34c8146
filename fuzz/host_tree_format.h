#pragma once

/// \file
/// The byte format of host trees: a value is an operation followed by its arguments.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "numera/host/array.h"

namespace numera::fuzz {

enum class Operation : std::uint8_t {
  kEmpty,    ///< an empty slot
  kForm,     ///< number of a form, number of elements, values in slot order
  kWord,     ///< number of a word: a char row
  kNumbers,  ///< number of a class, dimensions, filling
  kLogical,  ///< dimensions, filling
  kChars,    ///< dimensions, filling
  kAscii,    ///< length, bytes: a char row
  kStrings,  ///< dimensions, each text a length (255: missing) and its units
  kCell,     ///< dimensions, values
  kStruct,   ///< dimensions, names, values
  kObject,   ///< number of a word for its class name, then like a struct
  kShared,   ///< number of an earlier array
  kComplex,  ///< like numbers
  kSparse,   ///< number of a class, dimensions
  kCount
};

/// The dimensions: one of the common shapes, or all dimensions written out.
enum class Shape : std::uint8_t {
  kColumn,      ///< rows in one byte
  kRow,         ///< columns in one byte
  kOne,         ///< 1-by-1
  kNone,        ///< 0-by-0
  kLongColumn,  ///< rows in two bytes
  kGeneral,     ///< number of dimensions in a byte, each in two
  kHugeNone,    ///< the largest number of rows, by 0
  kCount
};

enum class Filling : std::uint8_t {
  kZeros,
  kBytes,  ///< the bytes of the elements
  kSmall,  ///< one signed byte per element
  kRamp,   ///< 0, 1, 2, ...
  kCount
};

/// The numeric classes. Their index is their number in the format.
inline constexpr std::array kNumberClasses = {
    hxClassID::Double, hxClassID::UInt8,  hxClassID::UInt64, hxClassID::Int64, hxClassID::Int32,
    hxClassID::Single, hxClassID::UInt32, hxClassID::Int8,   hxClassID::Int16, hxClassID::UInt16};

inline constexpr std::array<std::string_view, 32> kWords = {"array",
                                                            "buffer",
                                                            "list_array",
                                                            "struct",
                                                            "map",
                                                            "table",
                                                            "string",
                                                            "char",
                                                            "categorical",
                                                            "logical",
                                                            "datetime",
                                                            "duration",
                                                            "binary_array",
                                                            "double",
                                                            "seconds",
                                                            "milliseconds",
                                                            "microseconds",
                                                            "nanoseconds",
                                                            "Date",
                                                            "Timestamp",
                                                            "null",
                                                            "UTC",
                                                            "key",
                                                            "value",
                                                            "fixed_binary_array",
                                                            "large_list_array",
                                                            "time",
                                                            "",
                                                            "single",
                                                            "int64",
                                                            "Europe/Paris",
                                                            "x"};

/// The field names of encoded values. Each form ends at its first null.
inline constexpr std::array<std::array<const char*, 5>, 12> kForms = {{
    {"ArrowType", "Type", "Valid", "Data"},
    {"ArrowType", "Type", "Data", "Valid"},
    {"ArrowType", "Values", "Length"},
    {"Values", "Length", "ArrowType"},
    {"Values", "StartOffsets"},
    {"FieldName", "FieldData"},
    {"Categories", "Values", "Ordinal"},
    {"Values", "Units", "TimeZone", "DateType"},
    {"Values", "Units"},
    {"Values", "DateType"},
    {"Keys", "Values", "StartOffsets"},
    {"ArrowType", "Columns", "Names"},
}};

inline std::span<const char* const> names_of_form(size_t number) {
  const auto& names = kForms.at(number);
  return {names.begin(), std::ranges::find(names, nullptr)};
}

inline constexpr size_t kMostElements = 4096;
inline constexpr size_t kMissingText = 255;

}  // namespace numera::fuzz
