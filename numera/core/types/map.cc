#include "numera/core/types/map.h"

#include <arrow/array/array_nested.h>

#include <utility>

#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/types/list.h"

namespace numera::io::arrow::core {

::arrow::Result<hxArrayPtr> MapToHost(const ::arrow::ChunkedArray& chunked) {
  hxArrayPtr data =
      make_struct(static_cast<size_t>(chunked.num_chunks()), {"Keys", "Values", "StartOffsets"});
  size_t c = 0;
  for (const auto& chunk : chunked.chunks()) {
    const auto& maps = static_cast<const ::arrow::MapArray&>(*chunk);
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr keys, column_to_numera(*single_chunk(maps.keys())));
    hxSetField(data.get(), c, "Keys", std::move(keys));
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr items, column_to_numera(*single_chunk(maps.items())));
    hxSetField(data.get(), c, "Values", std::move(items));
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr offsets, start_offsets_to_numera<std::int32_t>(*maps.data()));
    hxSetField(data.get(), c, "StartOffsets", std::move(offsets));
    ++c;
  }
  return data;
}

}  // namespace numera::io::arrow::core
