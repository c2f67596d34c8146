#pragma once

#include <arrow/memory_pool.h>
#include <arrow/status.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace numera::files {

/// The default memory pool with an upper limit. Files can state sizes that no memory has; such a
/// request is refused before the system is asked.
///
/// Buffers may outlive the source that read them. So the pool lives until its last owner is
/// gone and all of its memory is freed.
class LimitedPool final : public ::arrow::MemoryPool {
 public:
  /// `bytes` is the most that is allocated at any time. None: 2 GiB, which may be raised.
  static std::shared_ptr<LimitedPool> make(std::optional<std::int64_t> bytes);

  /// Raises the limit to four times the size of the file if it is less and was not given.
  void allow_file_of(std::int64_t bytes);

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
  explicit LimitedPool(std::optional<std::int64_t> bytes)
      : limit_(bytes.value_or(std::int64_t{1} << 31)), is_given_(bytes) {}

  ::arrow::Status check(std::int64_t more) const;
  void drop();

  ::arrow::MemoryPool* pool_ = ::arrow::default_memory_pool();
  std::atomic<std::int64_t> limit_;
  bool is_given_;
  ::arrow::internal::MemoryPoolStats stats_;
  std::atomic<std::int64_t> users_ = 1;  ///< the owners together, and each piece of memory
};

}  // namespace numera::files
