#include "numera/files/memory_limit.h"

namespace numera::files {

std::shared_ptr<LimitedPool> LimitedPool::make(std::optional<std::int64_t> bytes) {
  return {new LimitedPool(bytes), [](LimitedPool* pool) { pool->drop(); }};
}

/// One thread opens files at a time.
void LimitedPool::allow(std::int64_t bytes) {
  if (!is_given_ && bytes > limit_) limit_ = bytes;
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
