#pragma once

/// \file
/// The names of the encoded form. No other file under numera/ uses a field name as a literal to
/// access a field. Messages and comments may quote the names.

namespace numera::format {

/// \name Fields
/// @{
inline constexpr const char* kArrowType = "ArrowType";
inline constexpr const char* kCategories = "Categories";
inline constexpr const char* kColumns = "Columns";
inline constexpr const char* kData = "Data";
inline constexpr const char* kDateType = "DateType";
inline constexpr const char* kFieldData = "FieldData";
inline constexpr const char* kFieldName = "FieldName";
inline constexpr const char* kKeys = "Keys";
inline constexpr const char* kLength = "Length";
inline constexpr const char* kNames = "Names";
inline constexpr const char* kOrdinal = "Ordinal";
inline constexpr const char* kStartOffsets = "StartOffsets";
inline constexpr const char* kTimeZone = "TimeZone";
inline constexpr const char* kType = "Type";
inline constexpr const char* kUnits = "Units";
inline constexpr const char* kValid = "Valid";
inline constexpr const char* kValues = "Values";
/// @}

/// \name Kinds, the texts of "ArrowType"
/// @{
inline constexpr const char* kArrayKind = "array";
inline constexpr const char* kBufferKind = "buffer";
inline constexpr const char* kListKind = "list_array";
inline constexpr const char* kMapKind = "map";
inline constexpr const char* kStructKind = "struct";
inline constexpr const char* kTableKind = "table";
/// @}

/// \name Type names, the texts of "Type". Those of numbers are in number_classes.h.
/// @{
inline constexpr const char* kBinaryType = "binary_array";
inline constexpr const char* kCategoricalType = "categorical";
inline constexpr const char* kCharType = "char";  ///< another name for text; read, never written
inline constexpr const char* kDatetimeType = "datetime";
inline constexpr const char* kDurationType = "duration";
inline constexpr const char* kFixedBinaryType = "fixed_binary_array";
inline constexpr const char* kLargeListType = "large_list_array";
inline constexpr const char* kListType = "list_array";
inline constexpr const char* kLogicalType = "logical";
inline constexpr const char* kMapType = "map";
inline constexpr const char* kNullType = "null";
inline constexpr const char* kStringType = "string";
inline constexpr const char* kStructType = "struct";
/// @}

/// \name Field names of map entries, which are read as structs
/// @{
inline constexpr const char* kKey = "key";
inline constexpr const char* kValue = "value";
/// @}

/// \name Texts of "DateType"
/// @{
inline constexpr const char* kDate = "Date";
inline constexpr const char* kTimestamp = "Timestamp";
/// @}

}  // namespace numera::format
