#pragma once

#include <arrow/array/array_base.h>
#include <arrow/status.h>
#include <arrow/type.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace numera::files {

/// Whether `append_json` writes the type, if it writes the types within it.
bool has_json_form(::arrow::Type::type type);

/// Appends a text with quotation marks.
void append_json_text(std::string_view text, std::string& json);

/// Appends an element of a valid array whose type has a form in JSON at every depth. NaN and
/// infinities are null. Needs stack for every level of the type. Returns Invalid for a time without
/// a text.
::arrow::Status append_json(const ::arrow::Array& array, std::int64_t row, std::string& json);

}  // namespace numera::files
