#pragma once

/// \file
/// Gigabytes that use memory only where they are written.

#include <arrow/array.h>
#include <arrow/buffer.h>
#include <sys/mman.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace numera::testing {

/// Zero bytes. All of them share one page until they are written.
class MappedBuffer : public ::arrow::MutableBuffer {
 public:
  explicit MappedBuffer(std::int64_t size) : MutableBuffer(map(size), size) {}
  ~MappedBuffer() override { ::munmap(mutable_data(), static_cast<size_t>(size())); }

 private:
  static std::uint8_t* map(std::int64_t size) {
    void* const block = ::mmap(nullptr, static_cast<size_t>(size), PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (block == MAP_FAILED) throw std::bad_alloc();
    return static_cast<std::uint8_t*>(block);
  }
};

/// Zero bytes except for the given pairs of position and value.
inline std::shared_ptr<::arrow::Buffer> Zeros(
    std::int64_t size, std::initializer_list<std::pair<std::int64_t, std::uint8_t>> others = {}) {
  auto buffer = std::make_shared<MappedBuffer>(size);
  for (const auto& [place, value] : others) buffer->mutable_data()[place] = value;
  return buffer;
}

inline constexpr std::int64_t kTwoTo31 = std::int64_t{1} << 31;
inline constexpr std::int64_t kTwoTo32 = std::int64_t{1} << 32;

inline std::shared_ptr<::arrow::Array> Made(std::shared_ptr<::arrow::DataType> type,
                                            std::int64_t length,
                                            std::vector<std::shared_ptr<::arrow::Buffer>> buffers,
                                            std::int64_t nulls = ::arrow::kUnknownNullCount) {
  return ::arrow::MakeArray(
      ::arrow::ArrayData::Make(std::move(type), length, std::move(buffers), nulls));
}

}  // namespace numera::testing
