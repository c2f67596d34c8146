#pragma once

/// \file
/// Making the codes of dictionary arrays fit for `::arrow::DictionaryArray::Transpose`, which looks
/// up the code of every slot, null slots included, and trusts all of them to be in range.

#include <arrow/array/array_dict.h>
#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/result.h>

#include <memory>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

/// A copy of a dictionary array over the same buffers, such as Arrow may be given: it has the
/// extent of the view, its nulls are counted, and a buffer that is missing is null.
::arrow::Result<std::shared_ptr<::arrow::ArrayData>> copy_of_codes(const ArrayView& chunk);

/// An array of the same values with every code inside its dictionary: of the same memory where
/// that is so already, else of a copy in which the codes of null slots that lie outside are 0.
/// Invalid where the code of a valid slot lies outside, or the codes end early. One pass over the
/// codes.
::arrow::Result<std::shared_ptr<::arrow::DictionaryArray>> codes_within_dictionary(
    const ArrayView& chunk);

/// A transpose map (int32 values) with an entry for the code 0 even where the dictionary is empty.
::arrow::Result<std::shared_ptr<::arrow::Buffer>> nonempty_map(
    const std::shared_ptr<::arrow::Buffer>& map);

}  // namespace numera::io::arrow::core
