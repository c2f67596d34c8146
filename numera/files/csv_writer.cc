#include <arrow/array/array_base.h>
#include <arrow/array/array_dict.h>
#include <arrow/array/array_primitive.h>
#include <arrow/compute/cast.h>
#include <arrow/csv/options.h>
#include <arrow/csv/writer.h>
#include <arrow/extension_type.h>
#include <arrow/ipc/writer.h>
#include <arrow/type_traits.h>

#include <utility>

#include "numera/files/encoder.h"
#include "numera/files/time_text.h"

namespace numera::files {
namespace {

using ::arrow::Type;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// The type that Arrow's writer gets for a type. Dictionaries give their values, extensions their
/// storage, and timestamps with a zone are in UTC, so that no database of time zones is needed.
TypePtr written_type(const TypePtr& type) {
  switch (type->id()) {
    case Type::DICTIONARY:
      return written_type(static_cast<const ::arrow::DictionaryType&>(*type).value_type());
    case Type::EXTENSION:
      return written_type(static_cast<const ::arrow::ExtensionType&>(*type).storage_type());
    case Type::STRING_VIEW:
      return ::arrow::large_utf8();
    case Type::TIMESTAMP: {
      const auto& timestamp = static_cast<const ::arrow::TimestampType&>(*type);
      return timestamp.timezone().empty() ? type : ::arrow::timestamp(timestamp.unit(), "UTC");
    }
    default:
      return type;
  }
}

bool is_written(Type::type type) {
  return type == Type::NA || type == Type::DURATION || ::arrow::is_decimal(type) ||
         ::arrow::is_string(type) || (::arrow::is_primitive(type) && !::arrow::is_interval(type));
}

/// The values in the type of `written_type`.
::arrow::Result<ArrayPtr> written_values(const ArrayPtr& array) {
  const auto cast = [&array](const TypePtr& type) {
    return ::arrow::compute::Cast(*array, type, ::arrow::compute::CastOptions::Safe());
  };
  switch (array->type_id()) {
    case Type::DICTIONARY: {
      const auto& type = static_cast<const ::arrow::DictionaryType&>(*array->type());
      ARROW_ASSIGN_OR_RAISE(const auto values, cast(type.value_type()));
      return written_values(values);
    }
    case Type::EXTENSION:
      return written_values(static_cast<const ::arrow::ExtensionArray&>(*array).storage());
    case Type::STRING_VIEW:
      return cast(::arrow::large_utf8());
    case Type::TIMESTAMP:
      return array->View(written_type(array->type()));
    default:
      return array;
  }
}

class CsvWriter {
 public:
  CsvWriter(const Encoding& encoding, Output output)
      : delimiter_(encoding.delimiter), output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) {
    if (writer_ == nullptr) ARROW_RETURN_NOT_OK(open(*batch->schema()));
    ::arrow::ArrayVector columns = batch->columns();
    for (int i = 0; i < batch->num_columns(); ++i) {
      ARROW_RETURN_NOT_OK(
          at_column(batch->column_name(i), prepare(columns[static_cast<size_t>(i)])));
    }
    return writer_->WriteRecordBatch(
        *::arrow::RecordBatch::Make(schema_, batch->num_rows(), std::move(columns)));
  }

  ::arrow::Status close() { return writer_->Close(); }

 private:
  static ::arrow::Status prepare(ArrayPtr& column) {
    ARROW_ASSIGN_OR_RAISE(column, written_values(column));
    return has_time_text(*column->type()) ? check_times(*column) : ::arrow::Status::OK();
  }

  /// Writes the heading.
  ::arrow::Status open(const ::arrow::Schema& schema) {
    if (schema.num_fields() == 0) {
      return ::arrow::Status::Invalid("a table without columns has no form in CSV");
    }
    ::arrow::FieldVector fields;
    for (const auto& field : schema.fields()) {
      ARROW_RETURN_NOT_OK(check_name(field->name()));
      fields.push_back(field->WithType(written_type(field->type())));
      if (is_written(fields.back()->type()->id())) continue;
      return at_column(field->name(),
                       ::arrow::Status::Invalid("found type ", *field->type(),
                                                ", expected one that has a form in CSV"));
    }
    schema_ = ::arrow::schema(std::move(fields));
    auto options = ::arrow::csv::WriteOptions::Defaults();
    options.delimiter = delimiter_;
    return ::arrow::csv::MakeCSVWriter(output_, schema_, options).Value(&writer_);
  }

  char delimiter_;
  Output output_;
  std::shared_ptr<::arrow::Schema> schema_;  ///< of what is written
  std::shared_ptr<::arrow::ipc::RecordBatchWriter> writer_;
};

}  // namespace

Encoder make_csv_encoder(const Encoding& encoding, Output output) {
  return encoder_of(std::make_shared<CsvWriter>(encoding, std::move(output)));
}

}  // namespace numera::files
