#pragma once

/// \file
/// Texts. Towards Arrow they are UTF-8 bytes and offsets, wrapped as they stand (see
/// values_and_offsets.h); towards the host they become a string array of UTF-16 texts.

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "numera/core/dispatch.h"
#include "numera/core/types/values_and_offsets.h"
#include "numera/host/array.h"
#include "numera/host/string_array.h"

namespace numera::io::arrow::core {

/// UTF-8 to UTF-16 by the host's strict codec. Any number of threads may convert. Throws
/// `hxCodecError`.
inline std::u16string Utf8ToUtf16(std::string_view utf8) { return hxUTF8Decoder().convert(utf8); }

/// An `::arrow::LargeStringArray` over the memory of "Values" and "StartOffsets". The bytes are not
/// looked at: whether they are UTF-8 is for the caller to know.
ArrayResult MakeLargeStringArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// An `::arrow::StringArray`; its offsets are a copy made by `NarrowOffsets`, with its errors.
ArrayResult MakeStringArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// Sets the elements of `store` from `start` on to the texts of `array`; those under null slots are
/// converted like any other. `store` has that many elements.
///
/// Text that is not UTF-8, and whatever is thrown while an element is converted or set, is Invalid
/// "Could not convert string in row R to UTF-16 string.\n"; R counts within `array`. Offsets that
/// fall or leave their buffers are Invalid too. After a failure the elements are unspecified.
///
/// The whole array is one call of the store. Where that throws, the elements are set one after
/// another: the first that throws is R, and where none does, the store holds all of them.
/// `ArrowArray` is `::arrow::StringArray` or
/// `::arrow::LargeStringArray`, here and below.
template <class ArrowArray>
::arrow::Status FillHostStrings(const ArrowArray& array, hxStringArray& store, size_t start);

/// One array to a string array of N-by-1 elements, none of them missing.
template <class ArrowArray>
::arrow::Result<hxArrayPtr> StringArrayToHost(const ArrowArray& array);

/// All chunks to one string array of N-by-1 elements. A row that a failure names counts within its
/// chunk.
template <class ArrowArray>
::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost(const ColumnView& column);

}  // namespace numera::io::arrow::core
