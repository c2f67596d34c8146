#include "numera/files/decompress.h"

#include <arrow/buffer.h>

#include <cstdint>
#include <utility>

namespace numera::files {
namespace {

constexpr Compression kCompressions[] = {
    {"\x1F\x8B", "gzip", ::arrow::Compression::GZIP},
    {"\x28\xB5\x2F\xFD", "zstd", ::arrow::Compression::ZSTD},
    {"\x04\x22\x4D\x18", "lz4", ::arrow::Compression::LZ4_FRAME},
};

/// Text could start with the letters of bzip2 alone. What follows them is the mark of the first
/// block, or the mark of the end.
constexpr Compression kBzip2 = {"BZh", "bzip2", ::arrow::Compression::BZ2};
constexpr std::string_view kBzip2Blocks[] = {"1AY&SY", "\x17\x72\x45\x38\x50\x90"};

bool is_bzip2(std::string_view start) {
  if (!start.starts_with(kBzip2.magic) || start.size() <= kBzip2.magic.size()) return false;
  const std::string_view block = start.substr(kBzip2.magic.size() + 1);
  return block.starts_with(kBzip2Blocks[0]) || block.starts_with(kBzip2Blocks[1]);
}

/// Arrow's CompressedInputStream ends without an error where some compressed files are cut. This
/// stream ends only where the decompressor says that the compressed bytes are complete.
class Decompressed : public ::arrow::io::InputStream {
 public:
  Decompressed(const Compression& format, std::shared_ptr<::arrow::io::InputStream> compressed,
               std::shared_ptr<::arrow::util::Decompressor> decompressor)
      : format_(format),
        compressed_(std::move(compressed)),
        decompressor_(std::move(decompressor)) {}

  ::arrow::Result<std::int64_t> Read(std::int64_t size, void* out) override {
    std::int64_t written = 0;
    while (written < size) {
      if (input_ == nullptr || input_->size() == 0) {
        ARROW_ASSIGN_OR_RAISE(input_, compressed_->Read(kInputBytes));
      }
      if (decompressor_->IsFinished()) {
        if (input_->size() == 0) break;
        ARROW_RETURN_NOT_OK(start_next());
      }
      ARROW_ASSIGN_OR_RAISE(const std::int64_t more,
                            step(size - written, static_cast<std::uint8_t*>(out) + written));
      written += more;
    }
    position_ += written;
    return written;
  }

  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> Read(std::int64_t size) override {
    ARROW_ASSIGN_OR_RAISE(auto buffer, ::arrow::AllocateResizableBuffer(size));
    ARROW_ASSIGN_OR_RAISE(const std::int64_t written, Read(size, buffer->mutable_data()));
    ARROW_RETURN_NOT_OK(buffer->Resize(written));
    return std::shared_ptr<::arrow::Buffer>(std::move(buffer));
  }

  ::arrow::Result<std::int64_t> Tell() const override { return position_; }
  ::arrow::Status Close() override { return compressed_->Close(); }
  bool closed() const override { return compressed_->closed(); }

 private:
  static constexpr std::int64_t kInputBytes = std::int64_t{1} << 16;

  /// The decompressor of gzip would also take zlib data.
  ::arrow::Status start_next() {
    if (format_.codec == ::arrow::Compression::GZIP && input_->data()[0] != 0x1F) {
      return ::arrow::Status::IOError("other bytes follow the ", format_.name, " data");
    }
    return decompressor_->Reset();
  }

  /// Returns the number of bytes written, which is 0 if only input was read.
  ::arrow::Result<std::int64_t> step(std::int64_t size, std::uint8_t* out) {
    const auto result = decompressor_->Decompress(input_->size(), input_->data(), size, out);
    if (!result.ok()) {
      return ::arrow::Status::IOError("the ", format_.name,
                                      " data is damaged, or other bytes follow it (",
                                      result.status().message(), ")");
    }
    const bool had_input = input_->size() > 0;
    input_ = ::arrow::SliceBuffer(input_, result->bytes_read);
    if (result->bytes_read == 0 && result->bytes_written == 0 && !decompressor_->IsFinished()) {
      return ::arrow::Status::IOError("the ", format_.name, " data ",
                                      had_input ? "is damaged" : "is cut off");
    }
    return result->bytes_written;
  }

  Compression format_;
  std::shared_ptr<::arrow::io::InputStream> compressed_;
  std::shared_ptr<::arrow::util::Decompressor> decompressor_;
  std::shared_ptr<::arrow::Buffer> input_;  ///< not decompressed yet
  std::int64_t position_ = 0;
};

}  // namespace

const Compression* find_compression(std::string_view start) {
  for (const Compression& format : kCompressions) {
    if (start.starts_with(format.magic)) return &format;
  }
  return is_bzip2(start) ? &kBzip2 : nullptr;
}

::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> decompress(
    const Compression& format, std::shared_ptr<::arrow::io::InputStream> compressed) {
  if (!::arrow::util::Codec::IsAvailable(format.codec)) {
    return ::arrow::Status::Invalid("it is ", format.name, ", which this build does not read");
  }
  ARROW_ASSIGN_OR_RAISE(const auto codec, ::arrow::util::Codec::Create(format.codec));
  ARROW_ASSIGN_OR_RAISE(auto decompressor, codec->MakeDecompressor());
  return std::make_shared<Decompressed>(format, std::move(compressed), std::move(decompressor));
}

}  // namespace numera::files
