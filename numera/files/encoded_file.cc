#include "numera/files/encoded_file.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "numera/files/descriptor_output.h"
#include "numera/files/last_error.h"
#include "numera/files/locations.h"
#include "numera/files/part_file.h"

namespace numera::files {
namespace {

class EncodedFile {
 public:
  explicit EncodedFile(const std::string& path) : is_standard_output_(path == kStandardStream) {}

  /// Some encoders write an end when they are destroyed. It must not reach standard output, where
  /// it would make an unfinished table look complete.
  ~EncodedFile() {
    if (output_ != nullptr) static_cast<void>(output_->Close());
  }

  EncodedFile(const EncodedFile&) = delete;
  EncodedFile& operator=(const EncodedFile&) = delete;

  ::arrow::Status open(const std::string& path, const Encoding& encoding,
                       const WriteOptions& options) {
    if (is_standard_output_) {
      ARROW_RETURN_NOT_OK(check_is_no_input(STDOUT_FILENO, options.inputs));
      if (std::fflush(stdout) != 0) return last_error();  // what was printed comes first
      output_ = std::make_shared<DescriptorOutput>(STDOUT_FILENO);
    } else {
      ARROW_RETURN_NOT_OK(part_.open(path, options.inputs));
      output_ = std::make_shared<DescriptorOutput>(part_.descriptor());
    }
    return make_encoder(encoding, output_).Value(&encoder_);
  }

  ::arrow::Status write(const Batch& batch) { return encoder_.write(batch); }

  ::arrow::Status close() {
    ARROW_RETURN_NOT_OK(encoder_.close());
    return is_standard_output_ ? ::arrow::Status::OK() : part_.put_in_place();
  }

 private:
  bool is_standard_output_;
  PartFile part_;
  std::shared_ptr<DescriptorOutput> output_;
  Encoder encoder_;
};

}  // namespace

::arrow::Result<Encoder> open_encoded_file(const std::string& path, const Encoding& encoding,
                                           const WriteOptions& options) {
  auto file = std::make_shared<EncodedFile>(path);
  ARROW_RETURN_NOT_OK(file->open(path, encoding, options));
  return encoder_of(std::move(file));
}

}  // namespace numera::files
