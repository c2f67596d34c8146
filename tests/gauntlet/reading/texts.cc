#include "tests/gauntlet/reading/texts.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "numera/host/memory.h"
#include "numera/host/text_codec.h"

namespace numera::gauntlet::reading {
namespace {

constexpr std::string_view kAnswers[] = {
    "value: double",
    "value: float",
    "value: int8",
    "value: uint8",
    "value: int16",
    "value: uint16",
    "value: int32",
    "value: uint32",
    "value: int64",
    "value: uint64",
    "value: bool",
    "value: time32[s]",
    "value: time32[ms]",
    "value: time64[us]",
    "value: time64[ns]",
    "value: timestamp[s]",
    "value: timestamp[ms]",
    "value: timestamp[us]",
    "value: timestamp[ns]",
    "value: timestamp[s, tz=Europe/Paris]",
    "value: large_string",
    "value: large_binary",
    "value: dictionary<values=large_string, indices=int8, ordered=0>",
    "value: dictionary<values=large_string, indices=uint64, ordered=1>",
    "value: large_list",
    "value: struct",
    "value: buffer",
    "value: table of 0 columns",
    "value: table of 3 columns",

    "Type error: Struct array required for input",
    "Type error: Missing field 'Data' in input struct array",
    "Type error: Missing field 'ArrowType' in input struct array",
    "Type error: Missing field 'Type' in input struct array",
    "Type error: Missing field 'Valid' in input struct array",
    "Type error: Missing field 'Values' in input struct array",
    "Type error: Missing field 'StartOffsets' in input struct array",
    "Type error: Missing field 'Length' in input struct array",
    "Type error: Missing field 'Units' in input struct array",
    "Type error: Missing field 'TimeZone' in input struct array",
    "Type error: Missing field 'Categories' in input struct array",
    "Type error: Missing field 'Ordinal' in input struct array",
    "Type error: Missing field 'Names' in input struct array",
    "Type error: Missing field 'Columns' in input struct array",
    "Type error: Incorrect type '*' for struct array field 'ArrowType'",
    "Type error: Incorrect type '*' for struct array field 'Type'",
    "Type error: Incorrect type 'my.Value' for struct array field 'Valid'",
    "Type error: Incorrect type 'cell' for struct array field 'Valid'",
    "Type error: Incorrect type '*' for struct array field 'Values'",
    "Type error: Incorrect type '*' for struct array field 'StartOffsets'",
    "Type error: Incorrect type '*' for struct array field 'Length'",
    "Type error: Incorrect type '*' for struct array field 'Units'",
    "Type error: Incorrect type '*' for struct array field 'TimeZone'",
    "Type error: Incorrect type '*' for struct array field 'Categories'",
    "Type error: Incorrect type '*' for struct array field 'Ordinal'",
    "Type error: Incorrect type '*' for struct array field 'Names'",
    "Type error: Incorrect type '*' for struct array field 'Columns'",
    "Type error: Expected 'array' input type, received '*' instead.",
    "Type error: Expected 'buffer' input type, received '*' instead.",
    "Invalid: Invalid type for NUMERA to Arrow conversion.",
    "Invalid: Invalid type for numeric NUMERA to Arrow conversion.",
    "Type error: The values field must be either an int32 array or an int64 array.",
    "Invalid: Expect FieldData and FieldName to have the same number of elements",

    "Type error: Field 'Data': found a complex *, expected a real array that is not sparse.",
    "Type error: Field 'Data': found a sparse *, expected a real array that is not sparse.",
    "Type error: Field 'Values': found a complex *, expected a real array that is not sparse.",
    "Type error: Field 'Values': found a sparse *, expected a real array that is not sparse.",
    "Type error: Field 'StartOffsets': found a complex *, expected a real array that is not "
    "sparse.",
    "Type error: Field 'StartOffsets': found a sparse *, expected a real array that is not "
    "sparse.",
    "Type error: Field 'Length': found a complex *, expected a real array that is not sparse.",
    "Type error: Field 'Length': found a sparse *, expected a real array that is not sparse.",
    "Type error: Field 'Ordinal': found a sparse *, expected a real array that is not sparse.",
    "Type error: Field 'Length': found a * double array, expected a double of one element.",
    "Type error: Field 'Length': found *, expected a number of elements within 64 bits.",
    "Type error: Field 'Ordinal': found a * logical array, expected a logical array of one "
    "element.",
    "Type error: Field 'Values': found a * double array, expected an array of an integer class.",
    "Type error: Field 'Values': found a * single array, expected an array of an integer class.",
    "Type error: Field 'StartOffsets': found a *, expected a uint64 array.",
    "Type error: Field 'StartOffsets': found no value, expected a uint64 array.",
    "Invalid: Field 'StartOffsets': found no elements, expected one more than there are lists.",
    "Invalid: Field 'Units': found 'microseconds' with 'Values' of class int32, expected "
    "'seconds' or 'milliseconds'.",
    "Invalid: Field 'Units': found 'nanoseconds' with 'Values' of class int32, expected "
    "'seconds' or 'milliseconds'.",
    "Invalid: Field 'Units': found 'seconds' with 'Values' of class int64, expected "
    "'microseconds' or 'nanoseconds'.",
    "Invalid: Field 'Units': found 'milliseconds' with 'Values' of class int64, expected "
    "'microseconds' or 'nanoseconds'.",
    "Invalid: Nested value: found more than 1024 levels, expected at most 1024.",
    "Invalid: Field 'Valid': found * bytes, expected enough for * elements.",
    "Invalid: Array: found offset 0 and length -*, expected neither negative and their sum "
    "within 64 bits.",

    "Invalid: Can't infer struct array length with 0 child arrays",
    "Invalid: Mismatching child array lengths",
    "Index error: Offset greater than length of child arrays",

    "std::invalid_argument: Array is not struct array.",
    "std::invalid_argument: Wrong field name.",
    "std::invalid_argument: Array is not cell array.",
    "std::out_of_range: Struct index is out of range.",
    "std::out_of_range: Cell index is out of range.",
    "hxCodecError: *",
    "InterruptException: The computation was interrupted.",
};

std::string array_answer(const ::arrow::DataType& type) {
  return "value: " + (type.num_fields() > 0 ? type.name() : type.ToString());
}

std::string exception_name(const std::string& type) {
  if (type == typeid(std::invalid_argument).name()) return "std::invalid_argument";
  if (type == typeid(std::out_of_range).name()) return "std::out_of_range";
  if (type == typeid(hxCodecError).name()) return "hxCodecError";
  if (type == typeid(host::memory::InterruptException).name()) return "InterruptException";
  return type;
}

/// Whether the whole text matches the pattern, in which `*` stands for any text.
bool matches(std::string_view text, std::string_view pattern) {
  const size_t star = pattern.find('*');
  if (star == std::string_view::npos) return text == pattern;
  if (!text.starts_with(pattern.substr(0, star))) return false;
  pattern.remove_prefix(star + 1);
  for (text.remove_prefix(star);; text.remove_prefix(1)) {
    if (matches(text, pattern)) return true;
    if (text.empty()) return false;
  }
}

}  // namespace

std::string answer_of(const Outcome& outcome) {
  if (const auto* array = std::get_if<ArrayTree>(&outcome)) return array_answer(*array->type);
  if (const auto* status = std::get_if<::arrow::Status>(&outcome)) return status->ToString();
  if (const auto* thrown = std::get_if<Thrown>(&outcome)) {
    return exception_name(thrown->type) + ": " + thrown->what;
  }
  if (const auto* table = std::get_if<TableTree>(&outcome)) {
    return "value: table of " + std::to_string(table->columns.size()) + " columns";
  }
  return "value: buffer";
}

std::vector<std::string> answers_missing(const std::set<std::string>& seen) {
  std::vector<std::string> missing;
  for (const std::string_view pattern : kAnswers) {
    if (std::ranges::none_of(seen, [&](const auto& text) { return matches(text, pattern); })) {
      missing.emplace_back(pattern);
    }
  }
  return missing;
}

}  // namespace numera::gauntlet::reading
