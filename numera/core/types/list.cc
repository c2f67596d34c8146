#include "numera/core/types/list.h"

#include <arrow/array/array_nested.h>
#include <arrow/type.h>

#include <cstring>
#include <utility>

#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/types/nested.h"
#include "numera/core/types/numeric.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

::arrow::Status check_start_offsets(const hxArray* offsets) {
  if (offsets == nullptr || hxGetClassID(offsets) != hxClassID::UInt64) {
    return messages::wrong_value(format::kStartOffsets, offsets, "a uint64 array");
  }
  ARROW_RETURN_NOT_OK(check_plain(offsets, format::kStartOffsets));
  if (hxIsEmpty(offsets)) {
    return messages::no_elements(format::kStartOffsets, "one more than there are lists");
  }
  return ::arrow::Status::OK();
}

struct ListParts {
  std::shared_ptr<::arrow::Buffer> validity;
  const hxArray* offsets = nullptr;
  const hxArray* values = nullptr;
};

[[gnu::noinline]] ::arrow::Status read_parts(const EnvelopeFields& envelope, ListParts& parts) {
  ARROW_ASSIGN_OR_RAISE(parts.validity, validity_to_arrow(envelope.valid));
  parts.offsets = hxGetFieldChecked(envelope.data, 0, format::kStartOffsets);
  ARROW_RETURN_NOT_OK(check_start_offsets(parts.offsets));
  parts.values = hxGetFieldChecked(envelope.data, 0, format::kValues);
  return ::arrow::Status::OK();
}

/// Replaces the values in `data` by the list array that contains them.
[[gnu::noinline]] void enclose(ListParts& parts, DataPtr& data) {
  const auto length = static_cast<std::int64_t>(hxGetNumberOfElements(parts.offsets)) - 1;
  auto type = ::arrow::large_list(data->type);
  data = ::arrow::ArrayData::Make(std::move(type), length,
                                  {std::move(parts.validity), borrow_elements(parts.offsets)},
                                  {std::move(data)});
}

}  // namespace

::arrow::Status ListToArrow(const EnvelopeFields& envelope, int level, DataPtr& data) {
  ListParts parts;
  ARROW_RETURN_NOT_OK(read_parts(envelope, parts));
  ARROW_RETURN_NOT_OK(child_to_arrow(parts.values, level, data));
  enclose(parts, data);
  return ::arrow::Status::OK();
}

::arrow::Result<hxArrayPtr> ListToHost(const ColumnView& chunked) {
  const bool wide = chunked.type()->id() == ::arrow::Type::LARGE_LIST;
  const auto write = [wide](hxArray* data, size_t index, const ArrayView& chunk) {
    ARROW_RETURN_NOT_OK(store_child({data, index, format::kValues}, chunk.whole_child(0)));
    return wide ? store_start_offsets<std::int64_t>(data, index, chunk)
                : store_start_offsets<std::int32_t>(data, index, chunk);
  };
  return write_chunks(chunked, format::kLists, write);
}

// noinline keeps the stack frame of the caller small while children are converted.
template <class Offset>
[[gnu::noinline]] ::arrow::Status store_start_offsets(hxArray* data, size_t index,
                                                      const ArrayView& chunk) {
  const Bytes bytes = stored_offsets(chunk, sizeof(Offset));
  hxArrayPtr offsets =
      format::make_column(format::kNumericClass<Offset>, bytes.size() / sizeof(Offset));
  std::memcpy(format::elements<Offset>(offsets), bytes.data(), bytes.size());
  hxSetField(data, index, format::kStartOffsets, std::move(offsets));
  return ::arrow::Status::OK();
}

template ::arrow::Status store_start_offsets<std::int32_t>(hxArray*, size_t, const ArrayView&);
template ::arrow::Status store_start_offsets<std::int64_t>(hxArray*, size_t, const ArrayView&);

}  // namespace numera::io::arrow::core
