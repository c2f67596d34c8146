#include <string>
#include <utility>

#include "numera/files/encoded_file.h"
#include "numera/files/locations.h"
#include "numera/files/write.h"

namespace numera::files {
namespace {

/// Names the target in errors, and keeps the first error.
class EncodedSink : public Sink {
 public:
  explicit EncodedSink(const std::string& path)
      : name_(path == kStandardStream ? "standard output" : path) {}

  ::arrow::Status open(const std::string& path, const WriteOptions& options) {
    return keep(start(path, options));
  }

  ::arrow::Status write(const Batch& batch) override {
    return failure_.ok() ? keep(encoder_.write(batch)) : failure_;
  }

  ::arrow::Status finish() override {
    if (!failure_.ok()) return failure_;
    ARROW_RETURN_NOT_OK(keep(encoder_.close()));
    static_cast<void>(keep(::arrow::Status::Invalid("it is finished")));
    return ::arrow::Status::OK();
  }

 private:
  ::arrow::Status start(const std::string& path, const WriteOptions& options) {
    ARROW_ASSIGN_OR_RAISE(const Encoding encoding, choose_encoding(path, options));
    const auto open = options.partition_by.empty() ? open_encoded_file : open_partitions;
    return open(path, encoding, options).Value(&encoder_);
  }

  ::arrow::Status keep(const ::arrow::Status& status) {
    if (status.ok()) return status;
    failure_ = status.WithMessage("cannot write ", name_, ": ", status.message());
    return failure_;
  }

  std::string name_;
  Encoder encoder_;
  ::arrow::Status failure_;
};

}  // namespace

Sink::~Sink() = default;

::arrow::Result<std::unique_ptr<Sink>> open_sink(const std::string& path,
                                                 const WriteOptions& options) {
  auto sink = std::make_unique<EncodedSink>(path);
  ARROW_RETURN_NOT_OK(sink->open(path, options));
  return sink;
}

}  // namespace numera::files
