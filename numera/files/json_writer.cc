#include <arrow/extension_type.h>
#include <arrow/type.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "numera/files/encoder.h"
#include "numera/files/json_text.h"

namespace numera::files {
namespace {

/// The number of bytes that are collected before they are written.
constexpr size_t kCollectedBytes = size_t{1} << 20;

::arrow::Status check_distinct_names(const ::arrow::FieldVector& fields) {
  std::set<std::string_view> names;
  for (const auto& field : fields) {
    ARROW_RETURN_NOT_OK(check_name(field->name()));
    if (names.insert(field->name()).second) continue;
    return ::arrow::Status::Invalid("several fields of a JSON object would have the name '",
                                    field->name(), "'");
  }
  return ::arrow::Status::OK();
}

::arrow::Status check_json_type(const ::arrow::DataType& type) {
  using ::arrow::Type;
  if (!has_json_form(type.id())) {
    return ::arrow::Status::Invalid("found type ", type, ", expected one that has a form in JSON");
  }
  if (type.id() == Type::DICTIONARY) {
    return check_json_type(*static_cast<const ::arrow::DictionaryType&>(type).value_type());
  }
  if (type.id() == Type::EXTENSION) {
    return check_json_type(*static_cast<const ::arrow::ExtensionType&>(type).storage_type());
  }
  if (type.id() == Type::STRUCT) ARROW_RETURN_NOT_OK(check_distinct_names(type.fields()));
  for (const auto& field : type.fields()) ARROW_RETURN_NOT_OK(check_json_type(*field->type()));
  return ::arrow::Status::OK();
}

/// An object per row and line.
class JsonWriter {
 public:
  explicit JsonWriter(Output output) : output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) {
    if (keys_.empty()) ARROW_RETURN_NOT_OK(open(*batch->schema()));
    const ::arrow::ArrayVector columns = batch->columns();
    for (std::int64_t row = 0; row < batch->num_rows(); ++row) {
      for (size_t i = 0; i < columns.size(); ++i) {
        json_ += keys_[i];
        ARROW_RETURN_NOT_OK(at_column(batch->column_name(static_cast<int>(i)),
                                      append_json(*columns[i], row, json_)));
      }
      json_ += columns.empty() ? "{}\n" : "}\n";
      if (json_.size() >= kCollectedBytes) ARROW_RETURN_NOT_OK(flush());
    }
    return ::arrow::Status::OK();
  }

  ::arrow::Status close() { return flush(); }

 private:
  ::arrow::Status open(const ::arrow::Schema& schema) {
    ARROW_RETURN_NOT_OK(check_distinct_names(schema.fields()));
    for (const auto& field : schema.fields()) {
      ARROW_RETURN_NOT_OK(at_column(field->name(), check_json_type(*field->type())));
      std::string key = keys_.empty() ? "{" : ",";
      append_json_text(field->name(), key);
      keys_.push_back(key + ":");
    }
    return ::arrow::Status::OK();
  }

  ::arrow::Status flush() {
    ARROW_RETURN_NOT_OK(output_->Write(json_));
    json_.clear();
    return ::arrow::Status::OK();
  }

  Output output_;
  std::vector<std::string> keys_;  ///< what stands before each value
  std::string json_;               ///< not written yet
};

}  // namespace

Encoder make_json_encoder(Output output) {
  return encoder_of(std::make_shared<JsonWriter>(std::move(output)));
}

}  // namespace numera::files
