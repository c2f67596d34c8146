#include <arrow/extension_type.h>
#include <arrow/type.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "numera/extras/intake/gather.h"
#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

std::int64_t run_end(const ::arrow::ArrayData& ends, std::int64_t run) {
  const std::int64_t i = ends.offset + run;
  switch (ends.type->id()) {
    case ::arrow::Type::INT16:
      return load<std::int16_t>(*ends.buffers[1], i);
    case ::arrow::Type::INT32:
      return load<std::int32_t>(*ends.buffers[1], i);
    default:
      return load<std::int64_t>(*ends.buffers[1], i);
  }
}

/// The first run that ends after element `index`.
std::int64_t run_of(const ::arrow::ArrayData& ends, std::int64_t index) {
  std::int64_t low = 0;
  std::int64_t high = ends.length;
  while (low < high) {
    const std::int64_t middle = low + (high - low) / 2;
    if (run_end(ends, middle) <= index) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

}  // namespace

DataResult cast_run_end_encoded(Work& work, const std::string& path,
                                const ::arrow::ArrayData& array) {
  const ::arrow::ArrayData& ends = *array.child_data[0];
  const std::int64_t first = array.length == 0 ? 0 : run_of(ends, array.offset);
  std::vector<std::int64_t> places(static_cast<size_t>(array.length));
  std::int64_t run = first;
  for (std::int64_t i = 0; i < array.length; ++i) {
    if (run_end(ends, run) <= array.offset + i) ++run;
    places[static_cast<size_t>(i)] = run - first;
  }
  const std::int64_t runs = array.length == 0 ? 0 : run + 1 - first;
  const Data cut = array.child_data[1]->Slice(first, runs);
  ARROW_ASSIGN_OR_RAISE(const Data values, take_in_data(work, path + "<values>", *cut));
  return gather(work, *values, places);
}

DataResult cast_extension(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  const Data storage = array.Copy();
  storage->type = static_cast<const ::arrow::ExtensionType&>(*array.type).storage_type();
  return take_in_data(work, path + "<storage>", *storage);
}

}  // namespace numera::extras::intake
