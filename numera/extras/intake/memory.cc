#include "numera/extras/intake/memory.h"
#include "numera/format/layout.h"

#include <arrow/type.h>
#include <arrow/util/bit_util.h>
#include <arrow/util/bitmap_ops.h>

#include <limits>
#include <utility>

#include "numera/format/bitmap.h"

namespace numera::extras::intake {
namespace {

using format::Layout;
using format::layout_of;

std::shared_ptr<::arrow::Buffer> cut_bytes(const std::shared_ptr<::arrow::Buffer>& buffer,
                                           std::int64_t begin, std::int64_t size) {
  if (begin == 0 && size == buffer->size()) return buffer;
  return ::arrow::SliceBuffer(buffer, begin, size);
}

::arrow::FieldVector with_types(::arrow::FieldVector fields, const ::arrow::ArrayData& array) {
  for (size_t i = 0; i < fields.size(); ++i) {
    fields[i] = fields[i]->WithType(array.child_data[i]->type);
  }
  return fields;
}

}  // namespace

BufferResult allocate(Work& work, std::int64_t count, std::int64_t width) {
  if (count > (std::numeric_limits<std::int64_t>::max() - 64) / width) {
    return ::arrow::Status::CapacityError("Cast: found ", count, " elements of ", width,
                                          " bytes, expected a total size that fits in 64 bits.");
  }
  ARROW_ASSIGN_OR_RAISE(auto buffer, ::arrow::AllocateBuffer(count * width, work.pool));
  return std::shared_ptr<::arrow::Buffer>(std::move(buffer));
}

BufferResult cut_bits(Work& work, const std::shared_ptr<::arrow::Buffer>& bits, std::int64_t offset,
                      std::int64_t length) {
  if (bits == nullptr) return nullptr;
  if (offset % 8 == 0) return cut_bytes(bits, offset / 8, format::bitmap_bytes(length));
  return ::arrow::internal::CopyBitmap(work.pool, bits->data(), offset, length);
}

std::shared_ptr<::arrow::Buffer> cut_elements(const std::shared_ptr<::arrow::Buffer>& buffer,
                                              std::int64_t offset, std::int64_t length,
                                              std::int64_t width) {
  if (buffer == nullptr || offset == 0) return buffer;
  return cut_bytes(buffer, offset * width, length * width);
}

DataResult without_offset(Work& work, const ::arrow::ArrayData& array) {
  Data out = array.Copy();
  out->offset = 0;
  if (array.type->id() == ::arrow::Type::NA) {
    out->null_count = array.length;
  } else if (out->buffers[0] == nullptr) {
    out->null_count = 0;
  } else if (array.offset % 8 != 0 && array.null_count.load() == 0) {
    out->buffers[0] = nullptr;
  } else {
    ARROW_ASSIGN_OR_RAISE(out->buffers[0],
                          cut_bits(work, array.buffers[0], array.offset, array.length));
  }
  return out;
}

bool is_null(const ::arrow::ArrayData& array, std::int64_t index) {
  if (array.type->id() == ::arrow::Type::NA) return true;
  return array.buffers[0] != nullptr &&
         !::arrow::bit_util::GetBit(array.buffers[0]->data(), static_cast<std::uint64_t>(index));
}

std::shared_ptr<::arrow::DataType> with_child_types(const std::shared_ptr<::arrow::DataType>& type,
                                                    const ::arrow::ArrayData& array) {
  bool same = true;
  for (int i = 0; i < type->num_fields(); ++i) {
    same = same && type->field(i)->type() == array.child_data[static_cast<size_t>(i)]->type;
  }
  if (same) return type;
  ::arrow::FieldVector fields = with_types(type->fields(), array);
  switch (layout_of(type->id())) {
    case Layout::kList:
      return ::arrow::list(fields[0]);
    case Layout::kLargeList:
      return ::arrow::large_list(fields[0]);
    case Layout::kMap:
      return std::make_shared<::arrow::MapType>(
          fields[0], static_cast<const ::arrow::MapType&>(*type).keys_sorted());
    case Layout::kStruct:
      return ::arrow::struct_(fields);
    case Layout::kNoHostForm:
    case Layout::kNoValues:
    case Layout::kBits:
    case Layout::kFixedWidth:
    case Layout::kText:
    case Layout::kLargeText:
      break;  // no children
  }
  return type;
}

}  // namespace numera::extras::intake
