#include "numera/files/json_text.h"

#include <arrow/array/array_binary.h>
#include <arrow/array/array_decimal.h>
#include <arrow/array/array_dict.h>
#include <arrow/array/array_nested.h>
#include <arrow/array/array_primitive.h>
#include <arrow/extension_type.h>
#include <arrow/util/float16.h>

#include <array>
#include <charconv>
#include <cmath>

#include "numera/files/time_text.h"

namespace numera::files {
namespace {

using ::arrow::Array;
using ::arrow::Status;
using ::arrow::Type;

template <class Number>
std::string_view shortest(Number number, std::array<char, 32>& digits) {
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

Status append_boolean(const Array& array, std::int64_t row, std::string& json) {
  json += static_cast<const ::arrow::BooleanArray&>(array).Value(row) ? "true" : "false";
  return Status::OK();
}

template <class Numbers>
Status append_integer(const Array& array, std::int64_t row, std::string& json) {
  std::array<char, 32> digits;
  json += shortest(static_cast<const Numbers&>(array).Value(row), digits);
  return Status::OK();
}

/// A whole number gets a fraction, so that it is read as a floating-point number again.
template <class Number>
Status append_floating(Number number, std::string& json) {
  std::array<char, 32> digits;
  const std::string_view text = std::isfinite(number) ? shortest(number, digits) : "null";
  json += text;
  if (text.find_first_not_of("-0123456789") == std::string_view::npos) json += ".0";
  return Status::OK();
}

template <class Numbers>
Status append_float(const Array& array, std::int64_t row, std::string& json) {
  return append_floating(static_cast<const Numbers&>(array).Value(row), json);
}

Status append_half_float(const Array& array, std::int64_t row, std::string& json) {
  const auto bits = static_cast<const ::arrow::HalfFloatArray&>(array).Value(row);
  return append_floating(::arrow::util::Float16::FromBits(bits).ToFloat(), json);
}

template <class Texts>
Status append_string(const Array& array, std::int64_t row, std::string& json) {
  append_json_text(static_cast<const Texts&>(array).GetView(row), json);
  return Status::OK();
}

template <class Decimals>
Status append_decimal(const Array& array, std::int64_t row, std::string& json) {
  json += '"' + static_cast<const Decimals&>(array).FormatValue(row) + '"';
  return Status::OK();
}

Status append_quoted_time(const Array& array, std::int64_t row, std::string& json) {
  json += '"';
  ARROW_RETURN_NOT_OK(append_time(array, row, json));
  json += '"';
  return Status::OK();
}

template <class Lists>
Status append_list(const Array& array, std::int64_t row, std::string& json) {
  const auto& lists = static_cast<const Lists&>(array);
  const Array& values = *lists.values();
  const std::int64_t start = lists.value_offset(row);
  json += '[';
  for (std::int64_t i = 0; i < lists.value_length(row); ++i) {
    if (i > 0) json += ',';
    ARROW_RETURN_NOT_OK(append_json(values, start + i, json));
  }
  json += ']';
  return Status::OK();
}

Status append_struct(const Array& array, std::int64_t row, std::string& json) {
  const auto& structs = static_cast<const ::arrow::StructArray&>(array);
  json += '{';
  for (int i = 0; i < structs.num_fields(); ++i) {
    if (i > 0) json += ',';
    append_json_text(structs.type()->field(i)->name(), json);
    json += ':';
    ARROW_RETURN_NOT_OK(append_json(*structs.field(i), row, json));
  }
  json += '}';
  return Status::OK();
}

Status append_map(const Array& array, std::int64_t row, std::string& json) {
  const auto& maps = static_cast<const ::arrow::MapArray&>(array);
  const auto& entries = static_cast<const ::arrow::StructArray&>(*maps.values());
  const std::int64_t start = maps.value_offset(row);
  json += '[';
  for (std::int64_t i = 0; i < maps.value_length(row); ++i) {
    json += i > 0 ? ",{\"key\":" : "{\"key\":";
    ARROW_RETURN_NOT_OK(append_json(*entries.field(0), start + i, json));
    json += ",\"value\":";
    ARROW_RETURN_NOT_OK(append_json(*entries.field(1), start + i, json));
    json += '}';
  }
  json += ']';
  return Status::OK();
}

Status append_dictionary(const Array& array, std::int64_t row, std::string& json) {
  const auto& dictionary = static_cast<const ::arrow::DictionaryArray&>(array);
  return append_json(*dictionary.dictionary(), dictionary.GetValueIndex(row), json);
}

Status append_extension(const Array& array, std::int64_t row, std::string& json) {
  return append_json(*static_cast<const ::arrow::ExtensionArray&>(array).storage(), row, json);
}

using Append = Status (*)(const Array&, std::int64_t, std::string&);

struct Form {
  Type::type type;
  Append append;
};

constexpr Form kForms[] = {{Type::NA, append_boolean},  // never called, since each element is null
                           {Type::BOOL, append_boolean},
                           {Type::INT8, append_integer<::arrow::Int8Array>},
                           {Type::INT16, append_integer<::arrow::Int16Array>},
                           {Type::INT32, append_integer<::arrow::Int32Array>},
                           {Type::INT64, append_integer<::arrow::Int64Array>},
                           {Type::UINT8, append_integer<::arrow::UInt8Array>},
                           {Type::UINT16, append_integer<::arrow::UInt16Array>},
                           {Type::UINT32, append_integer<::arrow::UInt32Array>},
                           {Type::UINT64, append_integer<::arrow::UInt64Array>},
                           {Type::DURATION, append_integer<::arrow::DurationArray>},
                           {Type::HALF_FLOAT, append_half_float},
                           {Type::FLOAT, append_float<::arrow::FloatArray>},
                           {Type::DOUBLE, append_float<::arrow::DoubleArray>},
                           {Type::STRING, append_string<::arrow::StringArray>},
                           {Type::LARGE_STRING, append_string<::arrow::LargeStringArray>},
                           {Type::STRING_VIEW, append_string<::arrow::StringViewArray>},
                           {Type::DECIMAL32, append_decimal<::arrow::Decimal32Array>},
                           {Type::DECIMAL64, append_decimal<::arrow::Decimal64Array>},
                           {Type::DECIMAL128, append_decimal<::arrow::Decimal128Array>},
                           {Type::DECIMAL256, append_decimal<::arrow::Decimal256Array>},
                           {Type::DATE32, append_quoted_time},
                           {Type::DATE64, append_quoted_time},
                           {Type::TIME32, append_quoted_time},
                           {Type::TIME64, append_quoted_time},
                           {Type::TIMESTAMP, append_quoted_time},
                           {Type::LIST, append_list<::arrow::ListArray>},
                           {Type::LARGE_LIST, append_list<::arrow::LargeListArray>},
                           {Type::LIST_VIEW, append_list<::arrow::ListViewArray>},
                           {Type::LARGE_LIST_VIEW, append_list<::arrow::LargeListViewArray>},
                           {Type::FIXED_SIZE_LIST, append_list<::arrow::FixedSizeListArray>},
                           {Type::STRUCT, append_struct},
                           {Type::MAP, append_map},
                           {Type::DICTIONARY, append_dictionary},
                           {Type::EXTENSION, append_extension}};

constexpr auto kAppendById = [] {
  std::array<Append, Type::MAX_ID> by_id = {};
  for (const Form& form : kForms) by_id[form.type] = form.append;
  return by_id;
}();

}  // namespace

bool has_json_form(Type::type type) { return kAppendById[type] != nullptr; }

void append_json_text(std::string_view text, std::string& json) {
  constexpr std::string_view kNamed = "\"\"\\\\\bb\ff\nn\rr\tt";  // each with what stands for it
  constexpr std::string_view kHex = "0123456789abcdef";
  json += '"';
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && character != '"' && character != '\\') {
      json += character;
      continue;
    }
    size_t named = 0;
    while (named < kNamed.size() && kNamed[named] != character) named += 2;
    json += '\\';
    if (named < kNamed.size()) {
      json += kNamed[named + 1];
    } else {
      json += {'u', '0', '0', kHex[byte >> 4U], kHex[byte & 15U]};
    }
  }
  json += '"';
}

::arrow::Status append_json(const Array& array, std::int64_t row, std::string& json) {
  if (array.IsValid(row)) return kAppendById[array.type_id()](array, row, json);
  json += "null";
  return Status::OK();
}

}  // namespace numera::files
