#pragma once

/// \file
/// Categorical arrays. On the host they are a 1-by-1 struct with the fields "Categories", "Values"
/// (integer codes, 0-based in both directions) and "Ordinal" (logical scalar). In Arrow they are
/// dictionary arrays. "Categories" is read as encoded UTF-8 (a struct with "Values" and
/// "StartOffsets") and written as a string array. Only the validity bitmap marks missing values.

#include <arrow/array/array_base.h>
#include <arrow/chunked_array.h>
#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <memory>
#include <utility>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// A dictionary array over the memory of the struct. Its index type is that of "Values". Its values
/// are large utf8, or utf8 if `useLargeStrings` is false. "Ordinal" decides whether it is ordered.
/// Codes are not compared with the number of categories.
///
/// Errors:
/// - those of `VerifyHxStructContains` for "Values", "Categories" (struct) and "Ordinal" (logical)
/// - "Ordinal" does not have exactly one element: TypeError
/// - those of the converters of numbers and texts
/// - "Values" has floating-point numbers: TypeError
ArrayResult CategoricalToArrow(const hxArray* data, std::shared_ptr<::arrow::Buffer> validity,
                               bool useLargeStrings);

/// The same with the signature of a `Reader`. The categories are always large utf8.
inline ArrayResult categorical_to_arrow(const hxArray* data,
                                        std::shared_ptr<::arrow::Buffer> validity) {
  return CategoricalToArrow(data, std::move(validity), /*useLargeStrings=*/true);
}

/// A dictionary column with one dictionary for all chunks, and the codes into it.
struct SingleDictionary {
  std::shared_ptr<::arrow::Array> dictionary;
  std::shared_ptr<::arrow::ChunkedArray> indices;
  std::shared_ptr<::arrow::DataType> type;
};

/// Converts all chunks to the struct. Invalid "Invalid dictionary value type: T" if the values are
/// neither utf8 nor large utf8. Other errors are those of the merge and of the converters of texts
/// and numbers.
::arrow::Result<hxArrayPtr> DictionaryToHost(const ColumnView& column);

/// Without chunks: an empty dictionary and no codes. With one chunk: its own dictionary and codes,
/// and type `dictType`. With several: the result of `UnifyDictionaryChunks`. Invalid if the
/// dictionary of a chunk is missing or does not have the value type of `dictType`.
::arrow::Result<SingleDictionary> DictionaryChunksToSingle(
    const ColumnView& column, const std::shared_ptr<::arrow::DataType>& dictType);

/// Merges all dictionaries, in order of first appearance of their values, and maps all codes to the
/// result. Arrow chooses the type: the smallest signed index type that fits, never ordered.
///
/// Invalid if the code of a valid slot is outside its dictionary; the message names the first one.
/// At a null slot such a code counts as 0. Arrow refuses dictionaries that contain nulls: Invalid
/// "Cannot yet unify dictionaries with nulls".
::arrow::Result<SingleDictionary> UnifyDictionaryChunks(
    const ColumnView& column, const std::shared_ptr<::arrow::DataType>& dictType);

}  // namespace numera::io::arrow::core
