#include <arrow/io/compressed.h>
#include <arrow/util/compression.h>
#include <arrow/util/utf8.h>

#include <utility>

#include "numera/files/encoder.h"

namespace numera::files {
namespace {

/// Compresses what is written to it. Unless it was closed, its destructor drops the rest, which
/// Arrow's destructor would write.
struct CompressedText {
  ~CompressedText() {
    if (!stream->closed()) static_cast<void>(stream->Abort());
  }

  std::shared_ptr<::arrow::io::CompressedOutputStream> stream;
};

::arrow::Result<Output> compressed(const Encoding& encoding, const Output& output) {
  if (encoding.codec == ::arrow::Compression::UNCOMPRESSED) return output;
  ARROW_ASSIGN_OR_RAISE(const auto codec,
                        ::arrow::util::Codec::Create(encoding.codec, encoding.level));
  ARROW_ASSIGN_OR_RAISE(auto stream,
                        ::arrow::io::CompressedOutputStream::Make(codec.get(), output));
  const auto owner = std::make_shared<CompressedText>(std::move(stream));
  return Output(owner, owner->stream.get());
}

}  // namespace

::arrow::Status check_name(const std::string& name) {
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  if (::arrow::util::ValidateUTF8(name)) return ::arrow::Status::OK();
  return ::arrow::Status::Invalid("the name of a column is not UTF-8");
}

::arrow::Result<Encoder> make_text_encoder(const Encoding& encoding, const Output& output) {
  ARROW_ASSIGN_OR_RAISE(const Output text, compressed(encoding, output));
  const Encoder encoder =
      encoding.format == Format::kCsv ? make_csv_encoder(encoding, text) : make_json_encoder(text);
  return Encoder{encoder.write, [close = encoder.close, text] {
                   ARROW_RETURN_NOT_OK(close());
                   return text->Close();
                 }};
}

}  // namespace numera::files
