#include "numera/core/types/map.h"

#include <cstdint>

#include "numera/core/host_values.h"
#include "numera/core/types/list.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> MapToHost(const ColumnView& chunked) {
  hxArrayPtr data = make_struct(chunked.chunks().size(), {"Keys", "Values", "StartOffsets"});
  size_t c = 0;
  for (const ArrayView& chunk : chunked.chunks()) {
    const ArrayView entries = chunk.whole_child(0);
    ARROW_RETURN_NOT_OK(store_child(data.get(), c, "Keys", entries.whole_child(0)));
    ARROW_RETURN_NOT_OK(store_child(data.get(), c, "Values", entries.whole_child(1)));
    ARROW_RETURN_NOT_OK(store_start_offsets<std::int32_t>(data.get(), c, chunk));
    ++c;
  }
  return data;
}

}  // namespace numera::io::arrow::core
