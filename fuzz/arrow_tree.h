#pragma once

/// \file
/// Arrow arrays built of bytes, of any type and nesting: most of them nearly right, with offsets,
/// buffers that are too short, too long, missing or at an odd address, and elements of any value.

#include <arrow/array/data.h>
#include <arrow/type_fwd.h>

#include <memory>

#include "fuzz/byte_source.h"

namespace numera::fuzz {

/// A type of at most a few levels.
std::shared_ptr<::arrow::DataType> read_arrow_type(ByteSource& source, int levels);

/// An array of a type. It has as many buffers and children as the type asks for. Each null count is
/// unknown, true, or any small number.
std::shared_ptr<::arrow::ArrayData> read_arrow_data(ByteSource& source,
                                                    const std::shared_ptr<::arrow::DataType>& type);

/// Whether Arrow makes an array of this. It makes a map together with its column, and ends the
/// process where it counts nulls in the entries or keys; and it trusts their bitmaps to be long
/// enough. What lies below a struct is made when somebody asks for it, so a struct around it helps.
bool is_made_by_arrow(const ::arrow::ArrayData& array);

}  // namespace numera::fuzz
