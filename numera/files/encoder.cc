#include "numera/files/encoder.h"

#include <arrow/array/array_base.h>
#include <arrow/extension_type.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>

#include <algorithm>

namespace numera::files {
namespace {

constexpr int kMostLevels = 1024;

/// Whether types nest at most `levels` deep, this one included.
bool is_within(const ::arrow::DataType& type, int levels) {
  using ::arrow::Type;
  if (levels == 0) return false;
  if (type.id() == Type::DICTIONARY) {
    return is_within(*static_cast<const ::arrow::DictionaryType&>(type).value_type(), levels - 1);
  }
  if (type.id() == Type::EXTENSION) {
    return is_within(*static_cast<const ::arrow::ExtensionType&>(type).storage_type(), levels - 1);
  }
  return std::ranges::all_of(
      type.fields(), [levels](const auto& field) { return is_within(*field->type(), levels - 1); });
}

/// Whether every content of buffers that are long enough is safe to read. Arrow's full validation
/// would refuse some of it, such as a time of 24 hours.
bool is_always_sound(::arrow::Type::type type) {
  return ::arrow::is_primitive(type) || ::arrow::is_decimal(type) || type == ::arrow::Type::NA;
}

::arrow::Status check_column(const ::arrow::Array& column) {
  return is_always_sound(column.type_id()) ? column.Validate() : column.ValidateFull();
}

class CheckedEncoder {
 public:
  explicit CheckedEncoder(Encoder encoder) : encoder_(std::move(encoder)) {}

  ::arrow::Status write(const Batch& batch) {
    ARROW_RETURN_NOT_OK(schema_ == nullptr ? check_first(*batch) : check_schema(*batch));
    for (int i = 0; i < batch->num_columns(); ++i) {
      ARROW_RETURN_NOT_OK(at_column(batch->column_name(i), check_column(*batch->column(i))));
    }
    ARROW_RETURN_NOT_OK(batch->Validate());
    return encoder_.write(batch);
  }

  ::arrow::Status close() {
    if (schema_ == nullptr) return ::arrow::Status::Invalid("no batch was written");
    return encoder_.close();
  }

 private:
  ::arrow::Status check_first(const ::arrow::RecordBatch& batch) {
    for (const auto& field : batch.schema()->fields()) {
      if (is_within(*field->type(), kMostLevels)) continue;
      return ::arrow::Status::Invalid("column '", field->name(), "': found more than ", kMostLevels,
                                      " levels, expected at most ", kMostLevels);
    }
    schema_ = batch.schema();
    return ::arrow::Status::OK();
  }

  ::arrow::Status check_schema(const ::arrow::RecordBatch& batch) const {
    if (batch.schema()->Equals(*schema_, false)) return ::arrow::Status::OK();
    return ::arrow::Status::Invalid("found a batch with another schema than the first");
  }

  Encoder encoder_;
  std::shared_ptr<::arrow::Schema> schema_;  ///< of the first batch; null before
};

::arrow::Result<Encoder> make_unchecked(const Encoding& encoding, const Output& output) {
  switch (encoding.format) {
    case Format::kParquet:
      return make_parquet_encoder(encoding, output);
    case Format::kIpcFile:
    case Format::kIpcStream:
      return make_ipc_encoder(encoding, output);
    case Format::kCsv:
    case Format::kJsonLines:
      return make_text_encoder(encoding, output);
  }
  return ::arrow::Status::Invalid("format: found a value without a name");
}

}  // namespace

::arrow::Status at_column(const std::string& name, const ::arrow::Status& status) {
  return status.ok() ? status : status.WithMessage("column '", name, "': ", status.message());
}

Encoder checked(Encoder encoder) {
  return encoder_of(std::make_shared<CheckedEncoder>(std::move(encoder)));
}

::arrow::Result<Encoder> make_encoder(const Encoding& encoding, const Output& output) {
  ARROW_ASSIGN_OR_RAISE(Encoder encoder, make_unchecked(encoding, output));
  return checked(std::move(encoder));
}

}  // namespace numera::files
