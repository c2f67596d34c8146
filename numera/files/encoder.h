#pragma once

/// \file
/// One writer per format.

#include <arrow/io/interfaces.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "numera/files/encoding.h"

namespace numera::files {

using Batch = std::shared_ptr<::arrow::RecordBatch>;
using Output = std::shared_ptr<::arrow::io::OutputStream>;

/// Writes batches of one schema in one format.
struct Encoder {
  std::function<::arrow::Status(const Batch&)> write;
  /// Writes the end of the file. At least one batch was written before.
  std::function<::arrow::Status()> close;
};

/// An encoder that checks each batch before it is written: its schema, that its columns are valid
/// Arrow data, and that types nest at most 1,024 levels deep. Its `close` returns Invalid if no
/// batch was written.
Encoder checked(Encoder encoder);

/// The checked encoder of a format.
::arrow::Result<Encoder> make_encoder(const Encoding& encoding, const Output& output);

/// \name One writer per format, for batches that were checked
/// @{
Encoder make_parquet_encoder(const Encoding& encoding, Output output);
Encoder make_ipc_encoder(const Encoding& encoding, Output output);
/// Text, compressed if the encoding says so. Its `close` closes `output`.
::arrow::Result<Encoder> make_text_encoder(const Encoding& encoding, const Output& output);
/// Text that is not compressed.
Encoder make_csv_encoder(const Encoding& encoding, Output output);
Encoder make_json_encoder(Output output);
/// @}

/// Invalid if the name is not UTF-8.
::arrow::Status check_name(const std::string& name);

/// The status with the name of the column in front of its message.
::arrow::Status at_column(const std::string& name, const ::arrow::Status& status);

/// The encoder that has the functions `write` and `close` of a writer.
template <class Writer>
Encoder encoder_of(std::shared_ptr<Writer> writer) {
  return {[writer](const Batch& batch) { return writer->write(batch); },
          [writer] { return writer->close(); }};
}

}  // namespace numera::files
