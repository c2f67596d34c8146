#include "numera/core/types/map.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "numera/core/types/list.h"
#include "numera/core/types/nested.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> MapToHost(const ColumnView& chunked) {
  static constexpr const char* kChildren[] = {"Keys", "Values"};
  const auto write = [](hxArray* data, size_t index, const ArrayView& chunk) {
    const ::arrow::ArrayData& entries = *chunk.data->child_data[0];
    for (size_t i = 0; i < std::size(kChildren); ++i) {
      ARROW_RETURN_NOT_OK(store_child({data, index, kChildren[i]}, *entries.child_data[i]));
    }
    return store_start_offsets<std::int32_t>(data, index, chunk);
  };
  return write_chunks(chunked, {kChildren[0], kChildren[1], "StartOffsets"}, write);
}

}  // namespace numera::io::arrow::core
