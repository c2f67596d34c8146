#include "numera/core/types/map.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "numera/core/types/list.h"
#include "numera/core/types/nested.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> MapToHost(const ColumnView& chunked) {
  static constexpr std::array kChildren = {format::kKeys, format::kValues};
  const auto write = [](hxArray* data, size_t index, const ArrayView& chunk) {
    const ::arrow::ArrayData& entries = *chunk.data->child_data[0];
    for (size_t i = 0; i < kChildren.size(); ++i) {
      ARROW_RETURN_NOT_OK(store_child({data, index, kChildren[i]}, *entries.child_data[i]));
    }
    return store_start_offsets<std::int32_t>(data, index, chunk);
  };
  return write_chunks(chunked, format::kMaps, write);
}

}  // namespace numera::io::arrow::core
