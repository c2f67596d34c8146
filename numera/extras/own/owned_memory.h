#pragma once

/// \file
/// Turns borrowed Arrow values into owners of the host value that they borrow from.

#include <arrow/array/data.h>
#include <arrow/buffer.h>

#include <memory>

#include "numera/host/array.h"

namespace numera::extras::own {

/// A host value with any number of owners. The last one destroys it.
using Owner = std::shared_ptr<const hxArray>;

/// The same bytes in a buffer that shares ownership of the host value. Null stays null.
std::shared_ptr<::arrow::Buffer> owned(std::shared_ptr<::arrow::Buffer> borrowed,
                                       const Owner& owner);

/// The same array with owned buffers, including those of children and dictionaries.
std::shared_ptr<::arrow::ArrayData> owned(const ::arrow::ArrayData& borrowed, const Owner& owner);

}  // namespace numera::extras::own
