#pragma once

/// \file
/// Tables in files, read as streams of Arrow record batches.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(auto source, numera::files::open_source("rows.parquet"));
///   for (const auto& maybe_batch : *source) { ... }
/// \endcode
///
/// The library knows Arrow alone. `numera::extras::convert_to_host` takes the batches to the host.

#include <arrow/memory_pool.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::files {

/// How a file is read.
struct ReadOptions {
  /// Names of the columns to read, in the order of the result. Empty: all columns.
  std::vector<std::string> columns = {};
  /// The largest number of rows per batch. Not positive: `open_source` returns Invalid.
  std::int64_t batch_rows = 65536;
  /// What separates the fields of a CSV file. None: whichever of comma, tab, semicolon and vertical
  /// bar splits the heading into most columns.
  std::optional<char> csv_delimiter = {};
  /// Whether the first line of a CSV file names the columns. If not, they are called "f0", "f1" and
  /// so on.
  bool csv_heading = true;
  /// Further texts that are null in a CSV file, in columns of every type. In columns of texts, they
  /// have no quotation marks.
  std::vector<std::string> csv_nulls = {};
  /// The encoding of a CSV file, by a name that iconv(3) knows, such as "latin1". Empty: UTF-8, or
  /// UTF-16 if the file starts with the mark of its byte order.
  std::string csv_encoding = {};
  /// Whether all rows of a CSV file decide the types of its columns. It is read twice then.
  bool csv_types_of_all_rows = false;
  /// The most memory, in bytes, that reading and the batches that are still in use take at any
  /// time. None: 2 GiB, or four times the size of the largest file if that is more. A file that
  /// asks for more, because a batch is that large or because the file is damaged, fails with
  /// OutOfMemory.
  std::optional<std::int64_t> memory_limit = {};
  /// Where memory comes from. It must outlive the source and all batches. Null: Arrow's default
  /// pool, with `memory_limit`. A pool that is given has no limit beside its own.
  ::arrow::MemoryPool* pool = nullptr;
  /// Called by the thread that opens or reads: some ten times per second while it waits for a pipe,
  /// and once for each MiB of text and of a pipe that is copied. An error ends the opening or the
  /// reading. None: it goes on until there are bytes or the pipe ends.
  std::function<::arrow::Status()> while_waiting = {};
};

/// What a file states about its table.
struct StatedCounts {
  std::optional<std::int64_t> rows = {};                ///< of the whole table
  std::optional<std::int64_t> chunks = {};              ///< row groups, record batches or stripes
  std::vector<std::optional<std::int64_t>> nulls = {};  ///< of each column of the schema

  /// Whether both state the same.
  bool operator==(const StatedCounts&) const = default;
};

/// A file that is read batch by batch. Memory holds one batch and what the format needs: some pages
/// per column of a Parquet file, one record batch of an Arrow IPC file, some blocks of a text file.
///
/// `ReadNext` gives batches of at most `batch_rows` rows and null after the last one. Each has
/// passed `RecordBatch::Validate`, but not the full validation, which reads all values. After an
/// error, every further call returns the same error. A file that changed since it was opened is an
/// error at its end. Buffers of a batch stay valid after the source is gone. One thread at a time
/// may use a source; it may be another one for each call.
class NUMERA_EXPORT Source : public ::arrow::RecordBatchReader {
 public:
  ~Source() override;

  /// The number of rows of the whole file, if the file states it.
  virtual std::optional<std::int64_t> rows() const = 0;
  /// The number of row groups, record batches, stripes or blocks that were read so far.
  virtual std::int64_t chunks() const = 0;
  /// What the file states. Reads no values: Parquet states it in its footer and the statistics
  /// there, Arrow IPC in the metadata of its record batches, ORC in its footer without the nulls.
  /// CSV and JSON lines state nothing. A count of nulls is stated for columns of Parquet that are
  /// not nested. What cannot be right, as in a damaged file, is not stated.
  virtual StatedCounts stated() const;
  /// The size of the file in bytes, if it is known.
  virtual std::optional<std::int64_t> bytes() const;
  /// How many bytes of the file were read so far. Any thread may call this at any time.
  virtual std::int64_t bytes_read() const;
};

/// Opens one or several files as one table. Each path is
///
/// - a file or a named pipe;
/// - "-": standard input. Pipes of CSV and of Arrow IPC streams are read as the bytes come. What
///   cannot be read forwards is copied to a temporary file first, which has no name and never
///   stays: in the folder of the environment variable TMPDIR, else in "/tmp";
/// - a folder: all files below it, in the order of their paths. Names that begin with "." or "_"
///   are left out. Folders named "key=value" add a column per key, behind the columns of the files:
///   int32 or int64 if each value is such a number, else a dictionary of texts;
/// - a pattern with "*" or "?", which match within a name: the files, and the files below the
///   folders, that match, in the order of their paths;
/// - a URI of one of these, with a scheme that Arrow's file systems know, such as "file://",
///   "s3://" or "gs://". No other path touches a network. Call `arrow::fs::EnsureFinalized` at the
///   end of a process that has read one.
///
/// Several files are read one after another. Their columns are joined by name, and a file without a
/// column gives nulls. Where types differ, columns of nulls take the other type, and numbers, sizes
/// and units become wider if no value is lost; all else is refused. Messages begin with the name of
/// the file then.
///
/// The first bytes of a file tell its format, whatever its name:
///
/// - Parquet. Checksums of pages are verified. A column whose number of rows differs from the
///   footer is refused, and so is an encrypted column.
/// - Arrow IPC files, and Arrow IPC streams that have their end marker, of all versions since 0.8.
/// - ORC, if this build of Arrow has it. Timestamps are in nanoseconds; others are refused.
/// - CSV: text without NUL in its first 64 KiB. The first MiB decides the types, unless all rows
///   are asked to; then whole numbers become double in a column that has other numbers, dates
///   become timestamps in one that has these, and all else becomes text. A row may have 64 MiB. In
///   a column of texts, an empty field is null unless it has quotation marks; in other columns,
///   Arrow's spellings such as "NA" are null, too. In a file of one column, an empty line is a row.
/// - JSON lines: one object per line, which may have 64 MiB; an empty line is no row. All lines
///   decide the types: int64, or double where a number is none; text, or timestamp[s] where every
///   text is a moment in whole seconds, in UTC if it states an offset; structs and lists. Objects
///   have 1,024 levels and a file has 65,536 fields at most.
/// - CSV and JSON lines inside gzip, zstd, bzip2 or lz4 frames, of which several may follow one
///   another. Data that is cut off, damaged, or followed by other bytes is refused.
///
/// Returns IOError for a path that is no readable file, and Invalid for contents that are no table
/// of these formats, for a column that does not exist, that is named twice, or whose name several
/// columns have. The message says why in one line and does not name the file, if there is one path
/// and it names one. If the system gave the reason, the status has Arrow's detail with its number.
/// Takes time for the footer or the first block of each file alone, but reads JSON lines to their
/// end.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<Source>> open_source(
    const std::vector<std::string>& paths, const ReadOptions& options = {});

/// The same for one path.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<Source>> open_source(const std::string& path,
                                                                   const ReadOptions& options = {});

/// The path without the user of a URI and their password, as messages show it.
NUMERA_EXPORT std::string path_without_user(const std::string& path);

}  // namespace numera::files
