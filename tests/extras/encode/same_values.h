#pragma once

/// \file
/// Compares Arrow values element by element. Their types may differ as encoding changes them. Uses
/// no code under test.

#include <arrow/array.h>
#include <arrow/chunked_array.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace numera::testing {

inline bool same_element(const ::arrow::Array& a, std::int64_t i, const ::arrow::Array& b,
                         std::int64_t j);

inline bool same_range(const ::arrow::Array& a, std::int64_t i, std::int64_t count,
                       const ::arrow::Array& b, std::int64_t j) {
  for (std::int64_t k = 0; k < count; ++k) {
    if (!same_element(a, i + k, b, j + k)) return false;
  }
  return true;
}

/// The bytes of an element of a text or binary array. For a dictionary, the text of its code.
inline std::string_view bytes_of(const ::arrow::Array& array, std::int64_t i) {
  using ::arrow::Type;
  switch (array.type_id()) {
    case Type::STRING:
    case Type::BINARY:
      return static_cast<const ::arrow::BinaryArray&>(array).GetView(i);
    case Type::LARGE_STRING:
    case Type::LARGE_BINARY:
      return static_cast<const ::arrow::LargeBinaryArray&>(array).GetView(i);
    case Type::FIXED_SIZE_BINARY:
      return static_cast<const ::arrow::FixedSizeBinaryArray&>(array).GetView(i);
    case Type::DICTIONARY: {
      const auto& dictionary = static_cast<const ::arrow::DictionaryArray&>(array);
      return bytes_of(*dictionary.dictionary(), dictionary.GetValueIndex(i));
    }
    default:
      throw std::invalid_argument("neither text nor bytes: " + array.type()->ToString());
  }
}

/// The value of a date32 element or of a 64-bit element.
inline std::int64_t number_of(const ::arrow::Array& array, std::int64_t i) {
  if (array.type_id() == ::arrow::Type::DATE32) {
    return static_cast<const ::arrow::Date32Array&>(array).Value(i);
  }
  return array.data()->GetValues<std::int64_t>(1)[i];
}

template <class Lists>
bool same_list(const Lists& a, std::int64_t i, const ::arrow::LargeListArray& b, std::int64_t j) {
  return a.value_length(i) == b.value_length(j) &&
         same_range(*a.values(), a.value_offset(i), a.value_length(i), *b.values(),
                    b.value_offset(j));
}

inline bool same_struct(const ::arrow::StructArray& a, std::int64_t i,
                        const ::arrow::StructArray& b, std::int64_t j) {
  if (a.num_fields() != b.num_fields()) return false;
  for (int field = 0; field < a.num_fields(); ++field) {
    if (!same_element(*a.field(field), i, *b.field(field), j)) return false;
  }
  return true;
}

inline bool same_map(const ::arrow::MapArray& a, std::int64_t i, const ::arrow::LargeListArray& b,
                     std::int64_t j) {
  const auto& entries = static_cast<const ::arrow::StructArray&>(*b.values());
  const std::int64_t count = a.value_length(i);
  return count == b.value_length(j) &&
         same_range(*a.keys(), a.value_offset(i), count, *entries.field(0), b.value_offset(j)) &&
         same_range(*a.items(), a.value_offset(i), count, *entries.field(1), b.value_offset(j));
}

/// Whether the written element `i` and the returned element `j` mean the same.
inline bool same_element(const ::arrow::Array& a, std::int64_t i, const ::arrow::Array& b,
                         std::int64_t j) {
  using ::arrow::Type;
  if (a.IsNull(i) || b.IsNull(j)) return a.IsNull(i) && b.IsNull(j);
  switch (a.type_id()) {
    case Type::STRING:
    case Type::LARGE_STRING:
    case Type::BINARY:
    case Type::LARGE_BINARY:
    case Type::FIXED_SIZE_BINARY:
    case Type::DICTIONARY:
      return bytes_of(a, i) == bytes_of(b, j);
    case Type::DATE32:
      return number_of(a, i) * 86400 == number_of(b, j);
    case Type::DATE64:
    case Type::DURATION:
    case Type::TIMESTAMP:  // its time zone may be spelled differently
      return number_of(a, i) == number_of(b, j);
    case Type::LIST:
      return same_list(static_cast<const ::arrow::ListArray&>(a), i,
                       static_cast<const ::arrow::LargeListArray&>(b), j);
    case Type::LARGE_LIST:
      return same_list(static_cast<const ::arrow::LargeListArray&>(a), i,
                       static_cast<const ::arrow::LargeListArray&>(b), j);
    case Type::MAP:
      return same_map(static_cast<const ::arrow::MapArray&>(a), i,
                      static_cast<const ::arrow::LargeListArray&>(b), j);
    case Type::STRUCT:
      return same_struct(static_cast<const ::arrow::StructArray&>(a), i,
                         static_cast<const ::arrow::StructArray&>(b), j);
    default:
      return a.RangeEquals(b, i, i + 1, j, ::arrow::EqualOptions::Defaults().nans_equal(true));
  }
}

/// Whether a written column and the returned array mean the same, element by element.
inline ::testing::AssertionResult SameValues(const ::arrow::ChunkedArray& written,
                                             const ::arrow::Array& returned) {
  if (written.length() != returned.length()) {
    return ::testing::AssertionFailure()
           << written.length() << " elements returned as " << returned.length();
  }
  std::int64_t start = 0;
  for (const auto& chunk : written.chunks()) {
    const auto nans_equal = ::arrow::EqualOptions::Defaults().nans_equal(true);
    const bool same = chunk->type()->Equals(returned.type()) &&
                      chunk->RangeEquals(returned, 0, chunk->length(), start, nans_equal);
    for (std::int64_t i = 0; !same && i < chunk->length(); ++i) {
      if (same_element(*chunk, i, returned, start + i)) continue;
      return ::testing::AssertionFailure()
             << "element " << start + i << " was " << chunk->Slice(i, 1)->ToString() << " and is "
             << returned.Slice(start + i, 1)->ToString();
    }
    start += chunk->length();
  }
  return ::testing::AssertionSuccess();
}

}  // namespace numera::testing
