#pragma once

/// \file
/// Arrow record batches, written to files.

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::files {

/// What a file is written as.
enum class Format : std::uint8_t {
  kParquet,    ///< with the Arrow schema; a row group of about 16 MiB is held in memory
  kIpcFile,    ///< an Arrow IPC file; one record batch per batch
  kIpcStream,  ///< an Arrow IPC stream; one record batch per batch
  kCsv,        ///< CSV with a heading
  kJsonLines,  ///< a JSON object per row and line
};

/// How a file is written.
struct WriteOptions {
  /// Paths that are read meanwhile, as `open_source` takes them. A sink that would replace one of
  /// their files is refused.
  std::vector<std::string> inputs = {};
  /// None: the end of the path decides.
  std::optional<Format> format = {};
  /// A name, and for some a level: "zstd", "zstd:9". "none" compresses nothing. Empty: "zstd:1" for
  /// Parquet, what the end of the path says for text, and else "none".
  ///
  /// - Parquet: none, zstd, lz4, snappy, gzip, brotli
  /// - Arrow IPC: none, zstd, lz4
  /// - text: none, zstd, lz4, gzip, bz2
  std::string compression = {};
  /// What separates the fields of a CSV file: a tab or a punctuation mark, but none of "+-.: and no
  /// space. None: a tab for ".tsv", else a comma.
  std::optional<char> csv_delimiter = {};
  /// Columns whose values name folders, from the outer one to the inner one: "year=2024". The path
  /// is then that of a new or empty folder, and the files do not have these columns. They may be
  /// integers, truth values, dates of 32 bits, texts and dictionaries of these.
  std::vector<std::string> partition_by = {};
  /// Columns of Parquet are encoded on the threads of Arrow's pool, all columns of a row group side
  /// by side, which takes more memory. If memory runs out in such a thread, the process may end.
  bool use_threads = false;
};

/// The names of formats: the ends of paths without the dot, such as "parquet", "csv" and "tsv".
NUMERA_EXPORT std::vector<std::string> format_names();

/// The names of compressions. Not every format has each of them.
NUMERA_EXPORT std::vector<std::string> compression_names();

/// Selects the format of a name, and the delimiter of CSV, whatever the end of the path says.
/// Invalid for a name that is not one of `format_names`.
NUMERA_EXPORT ::arrow::Status select_format(const std::string& name, WriteOptions& options);

/// A file that appears only when it is complete. It is written beside its target, under a name that
/// begins with a dot, and renamed at the end. Until then, and after any failure, an existing target
/// stays unchanged. If the target is a link, the link stays and the file that it leads to is
/// replaced. The destructor of a sink that was not finished removes the unfinished file. One thread
/// at a time may use a sink.
///
/// After an error, every further call returns the same error.
class NUMERA_EXPORT Sink {
 public:
  virtual ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  /// Writes a batch. Returns Invalid for a batch with another schema than the first, for a column
  /// that is not valid Arrow data, and for types that nest more than 1,024 levels deep.
  virtual ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch) = 0;
  /// Puts the file in place, with the permissions of the file that it replaces. Its data is on disk
  /// before. Returns Invalid if no batch was written; one without rows is enough.
  virtual ::arrow::Status finish() = 0;

 protected:
  Sink() = default;
};

/// Opens a file to write. The end of `path` selects the format, unless the options do:
///
/// | end of the path              | format     |
/// |------------------------------|------------|
/// | ".parquet"                   | Parquet    |
/// | ".arrow", ".feather", ".ipc" | IPC file   |
/// | ".arrows"                    | IPC stream |
/// | ".csv", ".tsv"               | CSV        |
/// | ".json", ".jsonl", ".ndjson" | JSON lines |
///
/// Behind the end of a text file, ".gz", ".zst", ".bz2" and ".lz4" compress the text.
///
/// With `partition_by`, a folder appears when all of its files are complete: Parquet, unless the
/// end of the path or the options say something else. At most 64 files are written at the same
/// time; a partition has another file whenever its last one was ended for that reason. Null is
/// "__HIVE_DEFAULT_PARTITION__", as Hive writes it, and a text that says so is refused. So is a
/// table without rows. `open_source` reads such a folder; keys come back as int32 or int64 if all
/// of their values are numbers, else as dictionaries.
///
/// Dictionaries of Arrow IPC are held in memory; they only grow from batch to batch.
///
/// The path "-" is standard output, and the options select its format. It gets the bytes as they
/// are made, and stays open. A write error, as for a closed pipe, is returned and raises no signal.
///
/// In CSV, a null is an empty field and a text has quotation marks, so `open_source` reads both as
/// they were. Dates and times are written as "2024-02-29 23:59:59.250", and dictionaries as their
/// values. The file does not say the types, so these do not come back as they were:
///
/// - a text column whose texts all look like numbers, truth values, dates or times: as such;
/// - a text column of nulls alone: as nulls;
/// - integers: as int64, and as double above its range; half floats, floats and decimals: as
/// double,
///   whole ones as int64; NaN: as null; durations: as int64;
/// - timestamps: in seconds or nanoseconds, with a zone in UTC; dates of 64 bits: as 32;
/// - times with a fraction, timestamps that nanoseconds do not reach, years below 0 and above 9999:
///   as text;
/// - a text with NUL: the file cannot be read.
/// - a column whose first MiB of the file suggests another type than the rest, as whole numbers
///   before fractions do: the file cannot be read.
///
/// The first `write` returns Invalid for a column that has no form in CSV: of bytes, lists,
/// structs, maps, unions, intervals and encoded runs; also for a table without columns and a name
/// that is not UTF-8. `write` returns Invalid for a year below -32767 or above 32767 and for a time
/// that is not within a day.
///
/// In JSON, structs are objects, lists are arrays, and maps are arrays of objects such as
/// {"key": 1, "value": 2}. Dictionaries are written as their values. Floating-point numbers have a
/// fraction or an exponent. NaN and infinities are null, since JSON has no number for them. Dates,
/// times and timestamps are texts as in CSV, decimals are texts, and durations are integers. A
/// table without rows is an empty file.
///
/// The first `write` returns Invalid for a column that has no form in JSON: of bytes, unions,
/// intervals and encoded runs, at any depth; also for a name that is not UTF-8 or that several
/// columns, or several fields of a struct, have. `write` returns Invalid for the same times as in
/// CSV.
///
/// Returns Invalid for a path without a known end, for a compression that the format does not have,
/// and for an input. Returns IOError for a target that is not a regular file, that is not writable,
/// or whose folder is not. Messages here and of the sink begin with "cannot write PATH: ", or with
/// "cannot write standard output: ".
NUMERA_EXPORT ::arrow::Result<std::unique_ptr<Sink>> open_sink(const std::string& path,
                                                               const WriteOptions& options = {});

}  // namespace numera::files
