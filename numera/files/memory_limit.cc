#include "numera/files/memory_limit.h"

#include <algorithm>
#include <limits>

namespace numera::files {

std::shared_ptr<LimitedPool> LimitedPool::make(std::optional<std::int64_t> bytes) {
  return {new LimitedPool(bytes), [](LimitedPool* pool) { pool->drop(); }};
}

/// One thread opens files at a time. A sparse file may have a size that no memory has.
void LimitedPool::allow_file_of(std::int64_t bytes) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max() / 4;
  if (!is_given_) limit_ = std::max(limit_.load(), 4 * std::min(bytes, kLargest));
}

::arrow::Status LimitedPool::Allocate(std::int64_t size, std::int64_t alignment,
                                      std::uint8_t** out) {
  ARROW_RETURN_NOT_OK(check(size));
  ARROW_RETURN_NOT_OK(pool_->Allocate(size, alignment, out));
  stats_.DidAllocateBytes(size);
  ++users_;
  return ::arrow::Status::OK();
}

::arrow::Status LimitedPool::Reallocate(std::int64_t old_size, std::int64_t new_size,
                                        std::int64_t alignment, std::uint8_t** memory) {
  ARROW_RETURN_NOT_OK(check(new_size - old_size));
  ARROW_RETURN_NOT_OK(pool_->Reallocate(old_size, new_size, alignment, memory));
  stats_.DidReallocateBytes(old_size, new_size);
  return ::arrow::Status::OK();
}

void LimitedPool::Free(std::uint8_t* memory, std::int64_t size, std::int64_t alignment) {
  pool_->Free(memory, size, alignment);
  stats_.DidFreeBytes(size);
  drop();
}

/// Threads that allocate at the same moment may exceed the limit by what they ask for.
::arrow::Status LimitedPool::check(std::int64_t more) const {
  const std::int64_t used = bytes_allocated();
  if (more <= limit_ - used) return ::arrow::Status::OK();
  return ::arrow::Status::OutOfMemory("reading it needs ", more, " bytes beside ", used,
                                      " in use, and the memory limit is ", limit_.load(), " bytes");
}

void LimitedPool::drop() {
  if (--users_ == 0) delete this;
}

}  // namespace numera::files
