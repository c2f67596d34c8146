#pragma once

#include <arrow/memory_pool.h>
#include <arrow/status.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace numera::files {

/// The default memory pool with an upper limit. Files can state sizes that no memory has; such a
/// request is refused before the system is asked.
///
/// Buffers may outlive the source that read them. So the pool lives until its handle is gone and
/// all of its memory is freed.
class LimitedPool final : public ::arrow::MemoryPool {
 public:
  struct Drop {
    void operator()(LimitedPool* pool) const { pool->drop(); }
  };
  using Handle = std::unique_ptr<LimitedPool, Drop>;

  /// `bytes` is the most that is allocated at any time.
  static Handle make(std::int64_t bytes);

  using MemoryPool::Allocate;
  using MemoryPool::Free;
  using MemoryPool::Reallocate;

  /// OutOfMemory beyond the limit.
  ::arrow::Status Allocate(std::int64_t size, std::int64_t alignment, std::uint8_t** out) override;
  ::arrow::Status Reallocate(std::int64_t old_size, std::int64_t new_size, std::int64_t alignment,
                             std::uint8_t** memory) override;
  void Free(std::uint8_t* memory, std::int64_t size, std::int64_t alignment) override;

  std::int64_t bytes_allocated() const override { return stats_.bytes_allocated(); }
  std::int64_t max_memory() const override { return stats_.max_memory(); }
  std::int64_t total_bytes_allocated() const override { return stats_.total_bytes_allocated(); }
  std::int64_t num_allocations() const override { return stats_.num_allocations(); }
  std::string backend_name() const override { return pool_->backend_name(); }

 private:
  explicit LimitedPool(std::int64_t bytes) : limit_(bytes) {}

  ::arrow::Status check(std::int64_t more) const;
  void drop();

  ::arrow::MemoryPool* pool_ = ::arrow::default_memory_pool();
  std::int64_t limit_;
  ::arrow::internal::MemoryPoolStats stats_;
  std::atomic<std::int64_t> users_ = 1;  ///< the handle, and each piece of memory
};

}  // namespace numera::files
