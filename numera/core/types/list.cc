#include "numera/core/types/list.h"

#include <arrow/array/array_nested.h>
#include <arrow/type.h>

#include <cstring>
#include <utility>

#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/messages.h"
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

template <class ListArray>
::arrow::Result<hxArrayPtr> write_lists(const ::arrow::ChunkedArray& chunked) {
  hxArrayPtr data =
      make_struct(static_cast<size_t>(chunked.num_chunks()), {"Values", "StartOffsets"});
  size_t c = 0;
  for (const auto& chunk : chunked.chunks()) {
    const auto& lists = static_cast<const ListArray&>(*chunk);
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr values, column_to_numera(*single_chunk(lists.values())));
    hxSetField(data.get(), c, "Values", std::move(values));
    using Offset = typename ListArray::offset_type;
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr offsets, start_offsets_to_numera<Offset>(*lists.data()));
    hxSetField(data.get(), c, "StartOffsets", std::move(offsets));
    ++c;
  }
  return data;
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

::arrow::Result<hxArrayPtr> ListToHost(const ::arrow::ChunkedArray& chunked) {
  return chunked.type()->id() == ::arrow::Type::LARGE_LIST
             ? write_lists<::arrow::LargeListArray>(chunked)
             : write_lists<::arrow::ListArray>(chunked);
}

template <class Offset>
::arrow::Result<hxArrayPtr> start_offsets_to_numera(const ::arrow::ArrayData& chunk) {
  ARROW_ASSIGN_OR_RAISE(const auto bytes, stored_offsets(chunk, sizeof(Offset)));
  hxArrayPtr offsets = make_column(kNumericClass<Offset>, bytes.size() / sizeof(Offset));
  std::memcpy(elements<Offset>(offsets), bytes.data(), bytes.size());
  return offsets;
}

template ::arrow::Result<hxArrayPtr> start_offsets_to_numera<std::int32_t>(
    const ::arrow::ArrayData&);
template ::arrow::Result<hxArrayPtr> start_offsets_to_numera<std::int64_t>(
    const ::arrow::ArrayData&);

}  // namespace numera::io::arrow::core
