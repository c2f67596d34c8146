#pragma once

/// \file
/// Builds Arrow arrays of any type and nesting from bytes. Most are almost correct. Arrays may have
/// offsets, and elements have any value. Buffers may be too short, too long, missing or misaligned.

#include <arrow/array/data.h>
#include <arrow/type_fwd.h>

#include <memory>

#include "fuzz/byte_source.h"

namespace numera::fuzz {

/// A type with at most `levels` levels of nesting.
std::shared_ptr<::arrow::DataType> read_arrow_type(ByteSource& source, int levels);

/// An array of `type`, with the number of buffers and children that the type needs. Each null count
/// is unknown, correct, or any small number.
std::shared_ptr<::arrow::ArrayData> read_arrow_data(ByteSource& source,
                                                    const std::shared_ptr<::arrow::DataType>& type);

/// Whether Arrow can make an array of this data. Arrow makes the entries of a map together with the
/// map. It aborts if it counts nulls in the entries or keys, and assumes that their bitmaps are
/// long enough. The children of a struct are only made on request, so wrapping the data in a struct
/// helps.
bool is_made_by_arrow(const ::arrow::ArrayData& array);

}  // namespace numera::fuzz
