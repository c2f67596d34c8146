#pragma once

/// \file
/// Categorical arrays. On the host they are a 1-by-1 struct with the fields "Categories", "Values"
/// (integer codes, 0-based in both directions) and "Ordinal" (logical scalar); in Arrow they are
/// dictionary arrays. "Categories" is read as encoded UTF-8 (a struct with "Values" and
/// "StartOffsets") and written as a string array. What is missing is told by the validity alone.

#include <arrow/array/array_base.h>
#include <arrow/chunked_array.h>
#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <memory>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// A dictionary array over the memory of the struct. Its index type is that of "Values", its values
/// are large utf8, or utf8 where `useLargeStrings` is false, and "Ordinal" says whether it is
/// ordered. Codes are not compared with the number of categories.
///
/// Errors: what `VerifyHxStructContains` says of "Values", "Categories" (struct) and "Ordinal"
/// (logical); TypeError where "Ordinal" has not exactly one element; what the converters of numbers
/// and texts report; TypeError where "Values" holds floating-point numbers.
ArrayResult CategoricalToArrow(const hxArray* data, std::shared_ptr<::arrow::Buffer> validity,
                               bool useLargeStrings);

/// The same as a reader of the dispatch, which always makes large utf8.
inline ArrayResult categorical_to_arrow(const hxArray* data,
                                        std::shared_ptr<::arrow::Buffer> validity) {
  return CategoricalToArrow(data, std::move(validity), /*useLargeStrings=*/true);
}

/// What remains of the chunks of a dictionary column: one dictionary, and codes into it.
struct SingleDictionary {
  std::shared_ptr<::arrow::Array> dictionary;
  std::shared_ptr<::arrow::ChunkedArray> indices;
  std::shared_ptr<::arrow::DataType> type;
};

/// All chunks to the struct. Invalid "Invalid dictionary value type: T" where the values are
/// neither utf8 nor large utf8; else what the merge and the converters of texts and numbers report.
::arrow::Result<hxArrayPtr> DictionaryToHost(const ColumnView& column);

/// No chunk: an empty dictionary. One chunk: its own dictionary and codes, and `dictType`. More:
/// `UnifyDictionaryChunks`. Invalid where a chunk's dictionary is missing or not of the value type
/// of `dictType`.
::arrow::Result<SingleDictionary> DictionaryChunksToSingle(
    const ColumnView& column, const std::shared_ptr<::arrow::DataType>& dictType);

/// The values of all dictionaries in order of their first appearance, and all codes as indexes into
/// these. The type is Arrow's choice: the smallest signed index type that fits, never ordered.
///
/// Invalid names the first code of a valid slot that lies outside its dictionary; under a null such
/// a code counts as 0. Dictionaries that hold nulls are refused by Arrow: Invalid "Cannot yet unify
/// dictionaries with nulls".
::arrow::Result<SingleDictionary> UnifyDictionaryChunks(
    const ColumnView& column, const std::shared_ptr<::arrow::DataType>& dictType);

}  // namespace numera::io::arrow::core
