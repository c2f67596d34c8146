#pragma once

/// \file
/// What `to_arrow` gives, said again from the fields of the envelope alone: types, lengths, and
/// buffers that are the host's own memory.

#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "numera/host/array.h"

namespace numera::gauntlet {

/// A buffer: where it is, and its bytes; none where the size is negative.
struct Region {
  const void* data = nullptr;
  std::int64_t size = -1;
};

struct ArrowModel {
  std::shared_ptr<::arrow::DataType> type;
  std::int64_t length = 0;
  std::vector<Region> buffers;
  std::vector<ArrowModel> children;
  std::vector<ArrowModel> dictionary;  ///< one or none
};

/// Of an envelope that is right in all of its fields.
ArrowModel model_to_arrow(const hxArray* envelope);

}  // namespace numera::gauntlet
