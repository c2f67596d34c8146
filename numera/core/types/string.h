#pragma once

/// \file
/// Texts. Towards Arrow, UTF-8 bytes and offsets are wrapped without a copy (see
/// values_and_offsets.h). Towards the host, they become a string array of UTF-16 texts.

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

/// UTF-8 to UTF-16 with the host's strict codec. Any number of threads may convert at the same
/// time. Throws `hxCodecError`.
inline std::u16string Utf8ToUtf16(std::string_view utf8) { return hxUTF8Decoder().convert(utf8); }

/// An `::arrow::LargeStringArray` over the memory of "Values" and "StartOffsets". The bytes are not
/// checked: the caller must know that they are UTF-8.
ArrayResult MakeLargeStringArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// An `::arrow::StringArray`. `NarrowOffsets` copies the offsets and states the errors.
ArrayResult MakeStringArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// Sets the elements of `store`, from `start` on, to the texts of `array`. Texts at null slots
/// are converted like all others. `store` must have enough elements.
///
/// Invalid "Could not convert string in row R to UTF-16 string.\n" if a text is not UTF-8 or if
/// converting or setting it throws; R counts within `array`. Also Invalid if offsets decrease or
/// point outside the bytes. The buffer of offsets must be long enough: `check_column` has checked
/// it. After a failure the elements are unspecified.
///
/// The whole array is set in one call of the store. If that call throws, the elements are set one
/// by one: R is the first that throws. If none throws, the store holds all of them. `ArrowArray` is
/// `::arrow::StringArray` or `::arrow::LargeStringArray`, here and below.
template <class ArrowArray>
::arrow::Status FillHostStrings(const ArrowArray& array, hxStringArray& store, size_t start);

/// Converts one array to an N-by-1 string array without missing elements.
template <class ArrowArray>
::arrow::Result<hxArrayPtr> StringArrayToHost(const ArrowArray& array);

/// Converts all chunks to one N-by-1 string array. The row in an error message counts within its
/// chunk.
template <class ArrowArray>
::arrow::Result<hxArrayPtr> ChunkedStringArrayToHost(const ColumnView& column);

}  // namespace numera::io::arrow::core
