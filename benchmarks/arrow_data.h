#pragma once

/// \file
/// The Arrow values that the benchmarks convert.

#include <arrow/array.h>
#include <arrow/chunked_array.h>
#include <arrow/status.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace numera::benchmarks {

using ArrayPtr = std::shared_ptr<::arrow::Array>;
using ColumnPtr = std::shared_ptr<::arrow::ChunkedArray>;

/// Ends the run where the data of a row cannot be made.
void require(const ::arrow::Status& status);

/// 0, 0.5, 1, 1.5, ...; with nulls, every tenth is one.
std::shared_ptr<::arrow::DoubleArray> doubles(std::int64_t length, bool nulls = false);

/// Bits without a pattern that a whole byte would show.
std::shared_ptr<::arrow::BooleanArray> booleans(std::int64_t length);

/// The same text, time and again.
std::shared_ptr<::arrow::StringArray> texts(std::int64_t length, const std::string& text);
std::shared_ptr<::arrow::BinaryArray> byte_strings(std::int64_t length, const std::string& bytes);

/// 12 bytes of ASCII; 29 bytes of Latin, Chinese and Greek.
inline const std::string kAsciiText = "plain ASCII.";
inline const std::string kMixedText = "Zürich, 東京, Αθήνα !";

/// int32 codes into 100 categories, of which `first` comes first.
std::shared_ptr<::arrow::DictionaryArray> categories(std::int64_t length, std::int64_t first = 0);

/// Lists of `width` doubles each.
std::shared_ptr<::arrow::ListArray> lists(std::int64_t length, std::int32_t width);

/// The array as a column, cut into chunks of equal length.
ColumnPtr column_of(const ArrayPtr& array, std::int64_t chunks = 1);

}  // namespace numera::benchmarks
