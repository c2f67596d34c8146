#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>

namespace numera::files {

/// Writes to an open file, pipe or terminal. `Close` ends the writing; the descriptor stays open.
/// A closed pipe is an error and raises no signal.
class DescriptorOutput : public ::arrow::io::OutputStream {
 public:
  explicit DescriptorOutput(int descriptor);

  ::arrow::Status Close() override;
  bool closed() const override { return is_closed_; }
  /// The number of bytes written. A pipe has no position of its own.
  ::arrow::Result<std::int64_t> Tell() const override { return written_; }
  ::arrow::Status Write(const void* data, std::int64_t bytes) override;
  using ::arrow::io::OutputStream::Write;

 private:
  int descriptor_;
  bool may_raise_signal_;
  bool is_closed_ = false;
  std::int64_t written_ = 0;
};

}  // namespace numera::files
