#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/result.h>

#include <memory>
#include <string>

namespace numera::files {

/// A text in another encoding, read as UTF-8. Invalid for an encoding that iconv(3) does not know.
/// Reading returns Invalid for bytes that are no text of the encoding, also at the end.
::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> transcode(
    const std::string& encoding, std::shared_ptr<::arrow::io::InputStream> text);

}  // namespace numera::files
