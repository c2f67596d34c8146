#include "numera/core/types/list.h"

#include <arrow/array/array_nested.h>
#include <arrow/type.h>

#include <cstring>
#include <utility>

#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/types/nested.h"
#include "numera/core/types/numeric.h"

namespace numera::io::arrow::core {
namespace {

::arrow::Status check_start_offsets(const hxArray* offsets) {
  if (offsets == nullptr || hxGetClassID(offsets) != hxClassID::UInt64) {
    return messages::wrong_value("StartOffsets", offsets, "a uint64 array");
  }
  ARROW_RETURN_NOT_OK(check_plain(offsets, "StartOffsets"));
  if (hxIsEmpty(offsets)) {
    return messages::no_elements("StartOffsets", "one more than there are lists");
  }
  return ::arrow::Status::OK();
}

}  // namespace

ArrayResult ListToArrow(const EnvelopeFields& envelope, int level) {
  ARROW_ASSIGN_OR_RAISE(auto validity, validity_to_arrow(envelope.valid));
  const hxArray* offsets = hxGetFieldChecked(envelope.data, 0, "StartOffsets");
  ARROW_RETURN_NOT_OK(check_start_offsets(offsets));
  ARROW_ASSIGN_OR_RAISE(auto values,
                        element_to_arrow(hxGetFieldChecked(envelope.data, 0, "Values"), 0, level));
  auto type = ::arrow::large_list(values->type());
  const auto length = static_cast<std::int64_t>(hxGetNumberOfElements(offsets)) - 1;
  return std::make_shared<::arrow::LargeListArray>(
      std::move(type), length, borrow_elements(offsets), std::move(values), std::move(validity),
      ::arrow::kUnknownNullCount, 0);
}

::arrow::Result<hxArrayPtr> ListToHost(const ColumnView& chunked) {
  const bool wide = chunked.type()->id() == ::arrow::Type::LARGE_LIST;
  const auto write = [wide](hxArray* data, size_t index, const ArrayView& chunk) {
    ARROW_RETURN_NOT_OK(store_child({data, index, "Values"}, chunk.whole_child(0)));
    return wide ? store_start_offsets<std::int64_t>(data, index, chunk)
                : store_start_offsets<std::int32_t>(data, index, chunk);
  };
  return write_chunks(chunked, {"Values", "StartOffsets"}, write);
}

// Never inlined, so that its frame does not lie under those of the children.
template <class Offset>
[[gnu::noinline]] ::arrow::Status store_start_offsets(hxArray* data, size_t index,
                                                      const ArrayView& chunk) {
  ARROW_ASSIGN_OR_RAISE(const auto bytes, stored_offsets(chunk, sizeof(Offset)));
  hxArrayPtr offsets = make_column(kNumericClass<Offset>, bytes.size() / sizeof(Offset));
  std::memcpy(elements<Offset>(offsets), bytes.data(), bytes.size());
  hxSetField(data, index, "StartOffsets", std::move(offsets));
  return ::arrow::Status::OK();
}

template ::arrow::Status store_start_offsets<std::int32_t>(hxArray*, size_t, const ArrayView&);
template ::arrow::Status store_start_offsets<std::int64_t>(hxArray*, size_t, const ArrayView&);

}  // namespace numera::io::arrow::core
