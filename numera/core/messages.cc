#include "numera/core/messages.h"

#include <arrow/type.h>

#include "numera/core/limits.h"
#include "numera/format/values.h"

namespace numera::io::arrow::core::messages {

::arrow::Status not_plain(std::string_view field, const hxArray* found) {
  return wrong_value(field, found, "a real array that is not sparse");
}

::arrow::Status wrong_value(std::string_view field, const hxArray* found,
                            std::string_view expected) {
  return ::arrow::Status::TypeError("Field '", field, "': found ", format::describe(found),
                                    ", expected ", expected, ".");
}

::arrow::Status no_elements(std::string_view field, std::string_view expected) {
  return ::arrow::Status::Invalid("Field '", field, "': found no elements, expected ", expected,
                                  ".");
}

::arrow::Status wrong_length(std::string_view field, double found) {
  return ::arrow::Status::TypeError("Field '", field, "': found ", found,
                                    ", expected a number of elements within 64 bits.");
}

::arrow::Status wrong_time_unit(const hxArray* values, std::string_view found) {
  const bool wide = hxGetClassID(values) == hxClassID::Int64;
  return ::arrow::Status::Invalid(
      "Field 'Units': found '", found, "' with 'Values' of class ", hxGetClassName(values),
      ", expected ", wide ? "'microseconds' or 'nanoseconds'." : "'seconds' or 'milliseconds'.");
}

::arrow::Status short_buffer(std::string_view buffer, std::int64_t found_bytes,
                             std::int64_t expected_elements) {
  return ::arrow::Status::Invalid(buffer, ": found ", found_bytes, " bytes, expected enough for ",
                                  expected_elements, " elements.");
}

::arrow::Status wrong_range(size_t element, std::int64_t begin, std::int64_t end, size_t bytes) {
  return ::arrow::Status::Invalid("Element ", element, ": found offsets ", begin, " and ", end,
                                  ", expected a range that rises within ", bytes, " bytes.");
}

::arrow::Status wrong_code(std::string_view code, size_t slot, std::int64_t dictionary_length) {
  return ::arrow::Status::Invalid("Dictionary code: found ", code, " at slot ", slot,
                                  ", expected an index into a dictionary of ", dictionary_length,
                                  " values.");
}

::arrow::Status wrong_dictionary(std::string_view found, const ::arrow::DataType& expected) {
  return ::arrow::Status::Invalid("Dictionary: found ", found, ", expected an array of type ",
                                  expected.ToString(), ".");
}

::arrow::Status wrong_extent(std::int64_t offset, std::int64_t length) {
  return ::arrow::Status::Invalid("Array: found offset ", offset, " and length ", length,
                                  ", expected neither negative and their sum within 64 bits.");
}

::arrow::Status wrong_total(std::int64_t length) {
  return ::arrow::Status::Invalid("Chunked array: found length ", length,
                                  ", expected the lengths of its chunks together.");
}

::arrow::Status wrong_layout(const ::arrow::DataType& type, std::string_view found,
                             std::string_view expected) {
  return ::arrow::Status::Invalid("Array of type ", type.name(), ": found ", found, ", expected ",
                                  expected, ".");
}

::arrow::Status no_type() {
  return ::arrow::Status::Invalid(
      "Type: found a null pointer, expected a type, with the types of all its fields and values.");
}

::arrow::Status wrong_chunk(int chunk, std::string_view found, const ::arrow::DataType& column) {
  return ::arrow::Status::Invalid("Chunk ", chunk, ": found ", found, ", expected ",
                                  column.ToString(), ", the type of the column.");
}

::arrow::Status no_schema() {
  return ::arrow::Status::Invalid("Table: found no schema, expected one.");
}

::arrow::Status wrong_column_count(std::int64_t found, std::int64_t fields) {
  return ::arrow::Status::Invalid("Table: found ", found, " columns, expected ", fields,
                                  ", one for each field of the schema.");
}

::arrow::Status not_readable() {
  return ::arrow::Status::Invalid(
      "Buffer: found bytes that cannot be read here, expected main memory.");
}

::arrow::Status nested_too_deeply() {
  return ::arrow::Status::Invalid("Nested value: found more than ", kMaxNestingLevels,
                                  " levels, expected at most ", kMaxNestingLevels, ".");
}

}  // namespace numera::io::arrow::core::messages
