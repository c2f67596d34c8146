#include "numera/files/write.h"

#include <unistd.h>

#include <cstdio>
#include <optional>
#include <utility>

#include "numera/files/descriptor_output.h"
#include "numera/files/encoder.h"
#include "numera/files/last_error.h"
#include "numera/files/part_file.h"

namespace numera::files {
namespace {

/// To a file or to standard output.
class EncodedSink : public Sink {
 public:
  explicit EncodedSink(std::string path) : path_(std::move(path)) {}

  /// Some encoders write an end when they are destroyed. It must not reach standard output, where
  /// it would make an unfinished table look complete.
  ~EncodedSink() override {
    if (output_ != nullptr) static_cast<void>(output_->Close());
  }

  ::arrow::Status open(const WriteOptions& options) { return keep(start(options)); }

  ::arrow::Status write(const Batch& batch) override {
    return failure_.ok() ? keep(encoder_.write(batch)) : failure_;
  }

  ::arrow::Status finish() override {
    if (!failure_.ok()) return failure_;
    ARROW_RETURN_NOT_OK(keep(end()));
    static_cast<void>(keep(::arrow::Status::Invalid("it is finished")));
    return ::arrow::Status::OK();
  }

 private:
  ::arrow::Status start(const WriteOptions& options) {
    ARROW_ASSIGN_OR_RAISE(const Encoding encoding, choose_encoding(path_, options));
    if (is_standard_output()) {
      ARROW_RETURN_NOT_OK(check_is_no_input(STDOUT_FILENO, options.inputs));
      if (std::fflush(stdout) != 0) return last_error();  // what was printed comes first
      output_ = std::make_shared<DescriptorOutput>(STDOUT_FILENO);
    } else {
      ARROW_RETURN_NOT_OK(part_.open(path_, options.inputs));
      output_ = std::make_shared<DescriptorOutput>(part_.descriptor());
    }
    return make_encoder(encoding, output_).Value(&encoder_);
  }

  ::arrow::Status end() {
    ARROW_RETURN_NOT_OK(encoder_.close());
    return is_standard_output() ? ::arrow::Status::OK() : part_.put_in_place();
  }

  bool is_standard_output() const { return path_ == "-"; }

  /// Names the target in an error, and keeps the error for all further calls.
  ::arrow::Status keep(const ::arrow::Status& status) {
    if (status.ok()) return status;
    failure_ = status.WithMessage("cannot write ", is_standard_output() ? "standard output" : path_,
                                  ": ", status.message());
    return failure_;
  }

  std::string path_;
  PartFile part_;
  std::shared_ptr<DescriptorOutput> output_;
  Encoder encoder_;
  ::arrow::Status failure_;
};

}  // namespace

Sink::~Sink() = default;

::arrow::Result<std::unique_ptr<Sink>> open_sink(const std::string& path,
                                                 const WriteOptions& options) {
  auto sink = std::make_unique<EncodedSink>(path);
  ARROW_RETURN_NOT_OK(sink->open(options));
  return sink;
}

}  // namespace numera::files
