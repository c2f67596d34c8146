#include "numera/core/types/values_and_offsets.h"
#include "numera/format/names.h"

#include <arrow/buffer_builder.h>
#include <arrow/memory_pool.h>

#include <span>

namespace numera::io::arrow::core {

::arrow::Result<ValuesAndStartOffsets> ReadValuesAndStartOffsets(const hxArray* s) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* values, checked_field(s, format::kValues, hxClassID::UInt8));
  ARROW_ASSIGN_OR_RAISE(const hxArray* offsets,
                        checked_field(s, format::kStartOffsets, hxClassID::UInt64));
  ARROW_RETURN_NOT_OK(check_plain(values, format::kValues));
  ARROW_RETURN_NOT_OK(check_plain(offsets, format::kStartOffsets));
  return ValuesAndStartOffsets{values, offsets};
}

::arrow::Result<std::shared_ptr<::arrow::Buffer>> NarrowOffsets(const hxArray* offsets) {
  constexpr std::uint64_t kFirstRefused = 2147483647;
  constexpr std::int64_t kAlignment = 64;
  const std::span wide(static_cast<const std::uint64_t*>(hxGetData(offsets)),
                       hxGetNumberOfElements(offsets));
  ::arrow::BufferBuilder builder(::arrow::default_memory_pool(), kAlignment);
  ARROW_RETURN_NOT_OK(
      builder.Resize(static_cast<std::int64_t>(wide.size() * sizeof(std::int32_t))));
  for (const std::uint64_t offset : wide) {
    if (offset >= kFirstRefused) {
      return ::arrow::Status::Invalid(
          "Cannot construct arrow::StringArray or arrow::BinaryArray with ", offset, " offset.");
    }
    const auto narrow = static_cast<std::int32_t>(offset);
    builder.UnsafeAppend(&narrow, sizeof(narrow));
  }
  return builder.Finish();
}

}  // namespace numera::io::arrow::core
