#pragma once

/// \file
/// Makes the codes of dictionary arrays safe for `::arrow::DictionaryArray::Transpose`. That
/// function looks up the code of every slot, null slots included, without a range check.

#include <arrow/array/array_dict.h>
#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/result.h>

#include <memory>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

/// A copy of a dictionary array over the same buffers, made safe for Arrow: it has the offset and
/// length of the view, its nulls are counted, and missing buffers are null.
std::shared_ptr<::arrow::ArrayData> copy_of_codes(const ArrayView& chunk);

/// An array of the same values with every code inside its dictionary. If that is already true, it
/// shares the memory of the chunk. Else it is a copy in which codes outside the dictionary, at null
/// slots, are 0. Invalid if the code of a valid slot is outside the dictionary. Cost: one pass over
/// the codes.
::arrow::Result<std::shared_ptr<::arrow::DictionaryArray>> codes_within_dictionary(
    const ArrayView& chunk);

/// A transpose map (int32 values) that has an entry for code 0 even if the dictionary is empty.
::arrow::Result<std::shared_ptr<::arrow::Buffer>> nonempty_map(
    const std::shared_ptr<::arrow::Buffer>& map);

}  // namespace numera::io::arrow::core
