#include "numera/extras/intake/soundness.h"

#include <arrow/buffer.h>
#include <arrow/type.h>

#include <algorithm>
#include <cstddef>

#include "numera/core/limits.h"
#include "numera/format/layout.h"
#include "numera/format/whole_type.h"

namespace numera::extras::intake {
namespace {

using ::arrow::Status;

/// A map takes two levels of arrays, and each may be wrapped in an extension or a dictionary.
constexpr int kMaxLevels = 4 * io::arrow::core::kMaxNestingLevels;

Status check_buffer(const std::shared_ptr<::arrow::Buffer>& buffer) {
  if (buffer == nullptr) return Status::OK();
  if (!buffer->is_cpu()) {
    return Status::Invalid("Buffer: found memory of ", buffer->device()->ToString(),
                           ", expected memory of the CPU.");
  }
  if (buffer->size() < 0) {
    return Status::Invalid("Buffer: found a size of ", buffer->size(),
                           " bytes, expected 0 or more.");
  }
  if (buffer->size() > 0 && buffer->data() == nullptr) {
    return Status::Invalid("Buffer: found a null pointer, expected the address of ", buffer->size(),
                           " bytes.");
  }
  return Status::OK();
}

/// Arrow's validation of fixed-size lists ignores the offset.
Status check_fixed_size_list(const ::arrow::ArrayData& array) {
  if (array.type->id() != ::arrow::Type::FIXED_SIZE_LIST) return Status::OK();
  if (array.child_data.size() != 1 || array.child_data[0] == nullptr) return Status::OK();
  const std::int64_t size = static_cast<const ::arrow::FixedSizeListType&>(*array.type).list_size();
  const std::int64_t elements = array.child_data[0]->length;
  if (size <= 0 || array.offset + array.length <= elements / size) return Status::OK();
  return Status::Invalid("Array: found ", elements, " elements for ", array.offset + array.length,
                         " lists, expected ", size, " elements for each list.");
}

/// Arrow's validation of views reads their buffers without checking that they exist.
Status check_views(const ::arrow::ArrayData& array) {
  const auto id = array.type->id();
  if (id != ::arrow::Type::STRING_VIEW && id != ::arrow::Type::BINARY_VIEW) return Status::OK();
  const size_t buffers = array.buffers.size();
  for (size_t i = 1; i < std::max<size_t>(buffers, 2); ++i) {
    if (i < buffers && array.buffers[i] != nullptr) continue;
    return Status::Invalid("Array: found no buffer ", i,
                           ", expected one, because arrays of views use it.");
  }
  return Status::OK();
}

Status check(const ::arrow::ArrayData* array, int levels) {
  if (array == nullptr || array->type == nullptr) {
    return Status::Invalid("Array: found a null pointer, expected an array with a type.");
  }
  if (!format::is_whole(*array->type, kMaxLevels)) {
    return Status::Invalid("Array: found type ", array->type->name(), " with a null pointer ",
                           "instead of an inner type or with more than ", kMaxLevels,
                           " levels, expected a complete type of at most ", kMaxLevels, " levels.");
  }
  if (levels == 0) {
    return Status::Invalid("Arrays: found more than ", kMaxLevels,
                           " levels of nesting, expected at most ", kMaxLevels, ".");
  }
  if (!format::extent_is_valid(array->offset, array->length)) {
    return Status::Invalid("Array: found offset ", array->offset, " and length ", array->length,
                           ", expected both to be 0 or more and their sum to fit in 64 bits.");
  }
  ARROW_RETURN_NOT_OK(check_fixed_size_list(*array));
  ARROW_RETURN_NOT_OK(check_views(*array));
  for (const auto& buffer : array->buffers) ARROW_RETURN_NOT_OK(check_buffer(buffer));
  for (const auto& child : array->child_data) ARROW_RETURN_NOT_OK(check(child.get(), levels - 1));
  return array->dictionary == nullptr ? Status::OK() : check(array->dictionary.get(), levels - 1);
}

}  // namespace

Status check_soundness(const std::shared_ptr<::arrow::ArrayData>& array) {
  return check(array.get(), kMaxLevels);
}

}  // namespace numera::extras::intake
