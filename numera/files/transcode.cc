#include "numera/files/transcode.h"

#include <arrow/buffer.h>
#include <arrow/buffer_builder.h>
#include <arrow/io/transform.h>
#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace numera::files {
namespace {

using BufferResult = ::arrow::Result<std::shared_ptr<::arrow::Buffer>>;

/// Converts a text piece by piece.
class Converter {
 public:
  explicit Converter(const std::string& encoding)
      : encoding_(encoding), state_(::iconv_open("UTF-8", encoding.c_str())) {}
  ~Converter() {
    if (is_known()) ::iconv_close(state_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv(3) states this value
  bool is_known() const { return state_ != reinterpret_cast<iconv_t>(-1); }

  /// The characters that end in this piece. An empty piece is the end of the text.
  BufferResult convert(const ::arrow::Buffer& piece) {
    if (piece.size() == 0 && !rest_.empty()) {
      return ::arrow::Status::Invalid("it ends within a character of ", encoding_);
    }
    rest_.append(std::string_view(piece));
    char* in = rest_.data();
    size_t left = rest_.size();
    ::arrow::BufferBuilder out;
    bool is_done = false;
    while (!is_done) {
      char room[4096];
      char* end = room;
      size_t free = sizeof room;
      is_done = ::iconv(state_, &in, &left, &end, &free) != static_cast<size_t>(-1) ||
                errno == EINVAL;  // the last character is not complete
      if (!is_done && errno != E2BIG) return no_text(left);
      ARROW_RETURN_NOT_OK(out.Append(room, end - room));
    }
    converted_ += static_cast<std::int64_t>(rest_.size() - left);
    rest_.erase(0, rest_.size() - left);
    return out.Finish();
  }

 private:
  ::arrow::Status no_text(size_t left) const {
    return ::arrow::Status::Invalid("byte ",
                                    converted_ + static_cast<std::int64_t>(rest_.size() - left),
                                    " is no text in ", encoding_);
  }

  std::string encoding_;
  iconv_t state_;
  std::string rest_;            ///< the start of a character
  std::int64_t converted_ = 0;  ///< bytes before `rest_`
};

}  // namespace

::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> transcode(
    const std::string& encoding, std::shared_ptr<::arrow::io::InputStream> text) {
  auto converter = std::make_shared<Converter>(encoding);
  if (!converter->is_known()) {
    return ::arrow::Status::Invalid("csv_encoding: there is no encoding '", encoding, "'");
  }
  auto convert = [converter](const std::shared_ptr<::arrow::Buffer>& piece) {
    return converter->convert(*piece);
  };
  return std::make_shared<::arrow::io::TransformInputStream>(std::move(text), std::move(convert));
}

}  // namespace numera::files
