#pragma once

/// \file
/// Tags of the exceptions that `convertUTF16ToUTF8` throws, each as `hxTaggedException<Tag>`
/// with the identifier "catalog:key". The wording of a message belongs to the message catalogue of
/// the host. A tag without documented arguments has none.

#include "numera/export.h"

namespace NUMERA::io::arrow::unicode {

/// The input is neither a string array, a cell array nor a char array.
struct NUMERA_EXPORT InvalidTextInput {
  static constexpr const char* catalog = "NUMERA:io:arrow:unicode";  ///< before the last colon
  static constexpr const char* key = "InvalidTextInput";             ///< after the last colon
};

/// A char array does not have two dimensions.
struct NUMERA_EXPORT InvalidCharDimensions {
  static constexpr const char* catalog = "NUMERA:io:arrow:unicode";  ///< before the last colon
  static constexpr const char* key = "InvalidCharDimensions";        ///< after the last colon
};

/// A string array does not have two dimensions, or has more than one column.
struct NUMERA_EXPORT InvalidStringDimensions {
  static constexpr const char* catalog = "NUMERA:io:arrow:unicode";  ///< before the last colon
  static constexpr const char* key = "InvalidStringDimensions";      ///< after the last colon
};

/// A cell array does not have two dimensions, or has more than one column.
struct NUMERA_EXPORT InvalidCellstrDimensions {
  static constexpr const char* catalog = "NUMERA:io:arrow:unicode";  ///< before the last colon
  static constexpr const char* key = "InvalidCellstrDimensions";     ///< after the last colon
};

/// A cell is empty or does not hold a char row: its value has another class, more than two
/// dimensions, or more than one row.
struct NUMERA_EXPORT InvalidCellArray {
  static constexpr const char* catalog = "NUMERA:io:arrow:unicode";  ///< before the last colon
  static constexpr const char* key = "InvalidCellArray";             ///< after the last colon
};

/// A text is not valid UTF-16. Arguments: the number of the element, counted from 1
/// (`std::uint64_t`), and the message of the codec (`std::string`).
struct NUMERA_EXPORT UnrecognizedUTF16Character {
  static constexpr const char* catalog = "NUMERA:io:arrow:unicode";  ///< before the last colon
  static constexpr const char* key = "UnrecognizedUTF16Character";   ///< after the last colon
};

}  // namespace NUMERA::io::arrow::unicode

namespace numera::io::arrow::unicode {

using ::NUMERA::io::arrow::unicode::InvalidCellArray;
using ::NUMERA::io::arrow::unicode::InvalidCellstrDimensions;
using ::NUMERA::io::arrow::unicode::InvalidCharDimensions;
using ::NUMERA::io::arrow::unicode::InvalidStringDimensions;
using ::NUMERA::io::arrow::unicode::InvalidTextInput;
using ::NUMERA::io::arrow::unicode::UnrecognizedUTF16Character;

}  // namespace numera::io::arrow::unicode
