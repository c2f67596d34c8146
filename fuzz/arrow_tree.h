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

/// An array of a type. It has as many buffers and children as the type asks for, and the null
/// counts of the parts of a map are 0, since Arrow ends the process of whom makes others.
std::shared_ptr<::arrow::ArrayData> read_arrow_data(ByteSource& source,
                                                    const std::shared_ptr<::arrow::DataType>& type);

}  // namespace numera::fuzz
