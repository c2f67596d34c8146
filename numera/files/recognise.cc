#include "numera/files/recognise.h"

#include <arrow/buffer.h>
#include <arrow/io/memory.h>
#include <arrow/util/utf8.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "numera/files/decompress.h"
#include "numera/files/json_lines.h"
#include "numera/files/row_blocks.h"
#include "numera/files/transcode.h"

namespace numera::files {
namespace {

using Open = ::arrow::Result<Stream> (*)(const File&, const ReadOptions&);
using OpenAsText = ::arrow::Result<Stream> (*)(const OpenText&, const ReadOptions&);

struct KnownFormat {
  std::string_view magic;  ///< the first bytes of a file
  const char* name;
  Open open;                    ///< null if the format is not read
  bool is_at_end = false;       ///< the magic is also at the end; text could start with it, too
  bool reads_forwards = false;  ///< from the first byte to the last
};

/// How text is read.
struct TextFormat {
  OpenAsText open;
  bool reads_forwards;
};
constexpr TextFormat kCsv = {open_csv, true};
constexpr TextFormat kJsonLines = {open_json, false};

/// An IPC stream starts with the continuation marker of its first message.
constexpr KnownFormat kFormats[] = {
    {"PAR1", "Parquet", open_parquet},
    {"PARE", "Parquet with an encrypted footer", nullptr, true},
    {"ARROW1", "an Arrow IPC file", open_ipc_file},
    {"\xFF\xFF\xFF\xFF", "an Arrow IPC stream", open_ipc_stream, false, true},
    {"ORC", "ORC", open_orc, true},
    {"FEA1", "Feather of version 1", nullptr, true},
    {"Obj\x01", "Avro", nullptr},
    {{"SQLite format 3\0", 16}, "an SQLite database", nullptr},
    {"PK\x03\x04", "a ZIP archive, as Excel workbooks are", nullptr},
    {"\x89HDF\r\n\x1A\n", "HDF5", nullptr},
    {"%PDF-", "PDF", nullptr},
    {"\xFD\x37zXZ", "xz", nullptr},
};
constexpr KnownFormat kOldIpcStream = {"", "an Arrow IPC stream", open_ipc_stream, false, true};

constexpr std::int64_t kLookedAt = 65536;

/// The start of the contents of a file, decompressed.
struct Start {
  std::shared_ptr<::arrow::Buffer> buffer;
  bool is_whole;
  std::string_view end = {};  ///< the last bytes, if the file has a size and is not compressed

  std::string_view bytes() const { return std::string_view(*buffer); }
};

/// Whether it is UTF-8 without NUL. Unless it is whole, it may end within a character.
bool is_text(const Start& start) {
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  const std::string_view bytes = start.bytes();
  if (bytes.find('\0') != std::string_view::npos) return false;
  for (size_t cut = 0; cut < 4 && cut <= bytes.size(); ++cut) {
    const auto text = bytes.substr(0, bytes.size() - cut);
    if (::arrow::util::ValidateUTF8(text)) return true;
    if (start.is_whole) return false;
  }
  return false;
}

/// Whether the magic is where the format repeats it. One byte may follow, as in ORC.
bool ends_with_magic(const Start& start, std::string_view magic) {
  std::string_view end = start.end;
  if (end.ends_with(magic)) return true;
  end.remove_suffix(std::min<size_t>(end.size(), 1));
  return end.ends_with(magic);
}

/// The format of contents that are no text, or null. `file` has the contents from their start.
::arrow::Result<const KnownFormat*> find_format(const Start& start, const File& file) {
  for (const KnownFormat& format : kFormats) {
    if (!start.bytes().starts_with(format.magic)) continue;
    if (!format.is_at_end || ends_with_magic(start, format.magic) || !is_text(start)) {
      return &format;
    }
  }
  ARROW_ASSIGN_OR_RAISE(const bool is_old, is_old_ipc_stream(file));
  return is_old ? &kOldIpcStream : nullptr;
}

/// How text is opened, or null for contents that are no text. Invalid for JSON that is no table.
::arrow::Result<const TextFormat*> find_text(const Start& start) {
  std::string_view text = start.bytes();
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (text.starts_with('{')) {
    const size_t length = length_of_line(text);
    const bool is_cut = length == text.size() && !start.is_whole;
    if (is_cut || JsonFields().scan(text.substr(0, length)).ok()) return &kJsonLines;
  }
  if (!is_text(start)) return nullptr;
  if (!text.starts_with('{') && !text.starts_with('[')) return &kCsv;
  return ::arrow::Status::Invalid(
      "it is JSON, but no table: of JSON, only files with one object per line are read");
}

/// Opens the bytes of a file from the first to the last.
OpenText from_start(const File& file) {
  constexpr std::int64_t kToItsEnd = std::numeric_limits<std::int64_t>::max();
  return [file] { return ::arrow::io::RandomAccessFile::GetStream(file, 0, kToItsEnd); };
}

Recognised as_text(const TextFormat& format, OpenText text) {
  return {[open = format.open, text = std::move(text)](const ReadOptions& options) {
            return open(text, options);
          },
          format.reads_forwards};
}

OpenText transcoded(OpenText open, std::string encoding) {
  return [open = std::move(open),
          encoding =
              std::move(encoding)]() -> ::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> {
    ARROW_ASSIGN_OR_RAISE(auto text, open());
    return transcode(encoding, std::move(text));
  };
}

bool is_utf16(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

/// Whether the bytes could be text in an encoding such as Latin-1.
bool is_other_text(std::string_view bytes) {
  return std::ranges::none_of(bytes, [](unsigned char byte) {
    return byte < ' ' && byte != '\t' && byte != '\r' && byte != '\n' && byte != '\f';
  });
}

/// `refusal` is for what is no text.
::arrow::Result<Recognised> recognise_text(const Start& start, OpenText open, std::string encoding,
                                           const std::string& refusal) {
  if (encoding.empty() && is_utf16(start.bytes())) encoding = "UTF-16";
  if (!encoding.empty()) return as_text(kCsv, transcoded(std::move(open), std::move(encoding)));
  ARROW_ASSIGN_OR_RAISE(const TextFormat* text, find_text(start));
  if (text != nullptr) return as_text(*text, std::move(open));
  return ::arrow::Status::Invalid(
      is_other_text(start.bytes()) ? "it is text that is not UTF-8, and its encoding was not named"
                                   : refusal);
}

::arrow::Result<Recognised> recognise_compressed(const Compression& format, const File& file,
                                                 const std::string& encoding) {
  const OpenText open = [&format,
                         file]() -> ::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> {
    ARROW_ASSIGN_OR_RAISE(const auto stream, from_start(file)());
    return decompress(format, stream);
  };
  ARROW_ASSIGN_OR_RAISE(const auto stream, open());
  ARROW_ASSIGN_OR_RAISE(const auto buffer, stream->Read(kLookedAt));
  const Start start{buffer, buffer->size() < kLookedAt};
  const std::string inside = std::string(" inside ") + format.name;
  if (buffer->size() == 0) return ::arrow::Status::Invalid("it is empty", inside);
  ARROW_ASSIGN_OR_RAISE(const KnownFormat* found,
                        find_format(start, std::make_shared<::arrow::io::BufferReader>(buffer)));
  const Compression* again = find_compression(start.bytes());
  if (found != nullptr || again != nullptr) {
    return ::arrow::Status::Invalid("it is ", found != nullptr ? found->name : again->name, inside,
                                    "; decompress it first");
  }
  return recognise_text(start, open, encoding, "it is no CSV and no JSON lines" + inside);
}

}  // namespace

::arrow::Result<Recognised> recognise(const File& file, std::optional<std::int64_t> size,
                                      const std::string& encoding) {
  ARROW_ASSIGN_OR_RAISE(const auto buffer, file->ReadAt(0, kLookedAt));
  if (buffer->size() == 0) return ::arrow::Status::Invalid("it is empty");
  Start start{buffer, buffer->size() < kLookedAt || buffer->size() == size};
  std::shared_ptr<::arrow::Buffer> end;
  if (size) {
    ARROW_ASSIGN_OR_RAISE(end, file->ReadAt(std::max<std::int64_t>(*size - 8, 0), 8));
    start.end = std::string_view(*end);
  }
  if (const Compression* format = find_compression(start.bytes())) {
    return recognise_compressed(*format, file, encoding);
  }
  ARROW_ASSIGN_OR_RAISE(const KnownFormat* format, find_format(start, file));
  if (format != nullptr && format->open == nullptr) {
    return ::arrow::Status::Invalid("it is ", format->name, ", which is not read");
  }
  if (format != nullptr) {
    return Recognised{[=](const ReadOptions& options) { return format->open(file, options); },
                      format->reads_forwards};
  }
  return recognise_text(
      start, from_start(file), encoding,
      "it is no table in a known format (Parquet, Arrow IPC, ORC, CSV, JSON lines)");
}

}  // namespace numera::files
