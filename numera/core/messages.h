#pragma once

/// \file
/// The errors whose wording is the library's own. All have the same form: the subject, what was
/// found, what was expected.

#include <arrow/status.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "numera/host/array.h"

namespace numera::io::arrow::core::messages {

/// TypeError: a complex or sparse value where plain numbers are required.
::arrow::Status not_plain(std::string_view field, const hxArray* found);

/// TypeError: a value whose class, shape or content does not fit the field.
::arrow::Status wrong_value(std::string_view field, const hxArray* found,
                            std::string_view expected);

/// Invalid: an array without elements where at least one is required.
::arrow::Status no_elements(std::string_view field, std::string_view expected);

/// TypeError: a number that is not a valid length.
::arrow::Status wrong_length(std::string_view field, double found);

/// Invalid: a time unit that does not fit the class of "Values".
::arrow::Status wrong_time_unit(const hxArray* values, std::string_view found);

/// Invalid: a buffer too short for its elements.
::arrow::Status short_buffer(std::string_view buffer, std::int64_t found_bytes,
                             std::int64_t expected_elements);

/// Invalid: an element whose offsets decrease or point outside the bytes of the values.
::arrow::Status wrong_range(size_t element, std::int64_t begin, std::int64_t end, size_t bytes);

/// Invalid: a valid slot whose code is not an index into the dictionary.
::arrow::Status wrong_code(std::string_view code, size_t slot, std::int64_t dictionary_length);

/// Invalid: a dictionary that is missing or does not have the type that its array states.
::arrow::Status wrong_dictionary(std::string_view found, const ::arrow::DataType& expected);

/// Invalid: an Arrow array with a negative offset or length, or with a sum of offset and length
/// that overflows.
::arrow::Status wrong_extent(std::int64_t offset, std::int64_t length);

/// Invalid: a chunked array whose length is not the sum of its chunk lengths.
::arrow::Status wrong_total(std::int64_t length);

/// Invalid: an Arrow array whose buffers or children do not match its type.
::arrow::Status wrong_layout(const ::arrow::DataType& type, std::string_view found,
                             std::string_view expected);

/// Invalid: a missing type.
::arrow::Status no_type();

/// Invalid: a chunk that is missing or does not have the type of its column.
::arrow::Status wrong_chunk(int chunk, std::string_view found, const ::arrow::DataType& column);

/// Invalid: a table without a schema.
::arrow::Status no_schema();

/// Invalid: a table with fewer or more columns than its schema has fields.
::arrow::Status wrong_column_count(std::int64_t found, std::int64_t fields);

/// Invalid: a buffer without memory, with a negative size, or in the memory of another device.
::arrow::Status not_readable();

/// Invalid: values nested deeper than `kMaxNestingLevels`.
::arrow::Status nested_too_deeply();

}  // namespace numera::io::arrow::core::messages
