#pragma once

/// \file
/// A buffer in the memory of a device other than the CPU. The process cannot read its bytes.

#include <arrow/buffer.h>
#include <arrow/device.h>

#include <memory>
#include <string>
#include <utility>

namespace numera::testing {

class OtherMemory final : public ::arrow::MemoryManager {
 public:
  explicit OtherMemory(const std::shared_ptr<::arrow::Device>& device) : MemoryManager(device) {}
  ::arrow::Result<std::shared_ptr<::arrow::io::RandomAccessFile>> GetBufferReader(
      std::shared_ptr<::arrow::Buffer>) override {
    return ::arrow::Status::NotImplemented("other device");
  }
  ::arrow::Result<std::shared_ptr<::arrow::io::OutputStream>> GetBufferWriter(
      std::shared_ptr<::arrow::Buffer>) override {
    return ::arrow::Status::NotImplemented("other device");
  }
  ::arrow::Result<std::unique_ptr<::arrow::Buffer>> AllocateBuffer(std::int64_t) override {
    return ::arrow::Status::NotImplemented("other device");
  }
};

class OtherDevice final : public ::arrow::Device {
 public:
  OtherDevice() : Device(/*is_cpu=*/false) {}
  const char* type_name() const override { return "other device"; }
  std::string ToString() const override { return "other device"; }
  bool Equals(const Device& other) const override { return this == &other; }
  ::arrow::DeviceAllocationType device_type() const override {
    return ::arrow::DeviceAllocationType::kEXT_DEV;
  }
  std::shared_ptr<::arrow::MemoryManager> default_memory_manager() override {
    return std::make_shared<OtherMemory>(shared_from_this());
  }
};

/// `size` bytes at an address that no process can read.
inline std::shared_ptr<::arrow::Buffer> BufferOfOtherDevice(std::int64_t size) {
  const auto device = std::make_shared<OtherDevice>();
  return std::make_shared<::arrow::Buffer>(std::uintptr_t{8}, size,
                                           device->default_memory_manager(), nullptr);
}

}  // namespace numera::testing
