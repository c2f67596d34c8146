#pragma once

#include <arrow/array/array_base.h>
#include <arrow/type.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace numera::tools {

/// An element of a column as people read it, on one line; none for a null. The array has passed
/// `check_memory`.
///
/// Dictionaries, run-end encoded values and extension types show the value that they stand for. A
/// text stands as it is, but in quotation marks if it is "null", if it starts with a quotation
/// mark, and within other values. Floating-point numbers have as many digits as tell them from
/// others of their type. Timestamps with a zone are shown in UTC and end with "Z". Bytes are
/// hexadecimal. Unions and intervals have Arrow's own text.
///
/// Texts, bytes and nested values that are wider than `width` are cut, which "…" shows; numbers and
/// times never.
std::optional<std::string> value_text(const ::arrow::Array& array, std::int64_t row, size_t width);

/// The bytes of an element that is a text or binary data, or none for other types. The element is
/// not null, and the array has passed `check_memory`.
std::optional<std::string_view> bytes_of(const ::arrow::Array& array, std::int64_t row);

/// Whether values of this type are numbers or times, which are aligned to the right.
bool is_aligned_right(const ::arrow::DataType& type);

}  // namespace numera::tools
