#include "numera/files/merged_schema.h"

#include <arrow/array/array_dict.h>
#include <arrow/array/util.h>
#include <arrow/compute/cast.h>
#include <arrow/scalar.h>
#include <arrow/util/utf8.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace numera::files {
namespace {

using ArrayResult = ::arrow::Result<std::shared_ptr<::arrow::Array>>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

::arrow::Field::MergeOptions merge_options() {
  auto options = ::arrow::Field::MergeOptions::Defaults();
  options.promote_integer_to_float = true;
  options.promote_integer_sign = true;
  options.promote_numeric_width = true;
  options.promote_decimal = true;
  options.promote_binary = true;
  options.promote_temporal_unit = true;
  options.promote_list = true;
  return options;
}

bool are_all(const TypePtr& type, const std::vector<PartitionKey>& keys) {
  return std::ranges::all_of(keys, [&](const PartitionKey& key) {
    return !key.value || ::arrow::Scalar::Parse(type, *key.value).ok();
  });
}

TypePtr type_of(const std::vector<PartitionKey>& keys) {
  for (const TypePtr& type : {::arrow::int32(), ::arrow::int64()}) {
    if (are_all(type, keys)) return type;
  }
  return ::arrow::dictionary(::arrow::int32(), ::arrow::utf8());
}

/// A column of a key with one value.
ArrayResult column_of(const PartitionKey& key, const TypePtr& type, std::int64_t rows,
                      ::arrow::MemoryPool* pool) {
  if (!key.value) return ::arrow::MakeArrayOfNull(type, rows, pool);
  if (type->id() != ::arrow::Type::DICTIONARY) {
    ARROW_ASSIGN_OR_RAISE(const auto value, ::arrow::Scalar::Parse(type, *key.value));
    return ::arrow::MakeArrayFromScalar(*value, rows, pool);
  }
  ARROW_ASSIGN_OR_RAISE(const auto code,
                        ::arrow::MakeArrayFromScalar(::arrow::Int32Scalar(0), rows, pool));
  ARROW_ASSIGN_OR_RAISE(const auto text,
                        ::arrow::MakeArrayFromScalar(::arrow::StringScalar(*key.value), 1, pool));
  return ::arrow::DictionaryArray::FromArrays(type, code, text);
}

ArrayResult with_type(const std::shared_ptr<::arrow::Array>& column, const TypePtr& type,
                      ::arrow::MemoryPool* pool) {
  if (column->type()->Equals(*type)) return column;
  if (column->type_id() == ::arrow::Type::NA) {
    return ::arrow::MakeArrayOfNull(type, column->length(), pool);
  }
  ::arrow::compute::ExecContext context(pool);
  return ::arrow::compute::Cast(*column, type, ::arrow::compute::CastOptions::Safe(), &context);
}

}  // namespace

::arrow::Result<std::shared_ptr<::arrow::Schema>> merge_schemas(
    const std::shared_ptr<::arrow::Schema>& before, const ::arrow::Schema& more) {
  auto merged = before;
  for (const auto& field : before->fields()) {
    if (more.GetFieldIndex(field->name()) >= 0) continue;
    ARROW_ASSIGN_OR_RAISE(
        merged, merged->SetField(merged->GetFieldIndex(field->name()), field->WithNullable(true)));
  }
  for (const auto& field : more.fields()) {
    const int i = merged->GetFieldIndex(field->name());
    if (i < 0) {
      ARROW_ASSIGN_OR_RAISE(merged,
                            merged->AddField(merged->num_fields(), field->WithNullable(true)));
      continue;
    }
    const auto both = merged->field(i)->MergeWith(field, merge_options());
    if (!both.ok()) {
      return ::arrow::Status::Invalid(
          "column '", field->name(), "': found type ", field->type()->ToString(), ", and ",
          merged->field(i)->type()->ToString(), " in the files before it");
    }
    ARROW_ASSIGN_OR_RAISE(merged, merged->SetField(i, *both));
  }
  return merged;
}

::arrow::Result<::arrow::FieldVector> fields_of_keys(const std::vector<Location>& locations) {
  ::arrow::util::InitializeUTF8();
  std::vector<std::vector<PartitionKey>> columns;
  for (const Location& location : locations) {
    for (const PartitionKey& key : location.keys) {
      if (!::arrow::util::ValidateUTF8(key.name) ||
          !::arrow::util::ValidateUTF8(key.value.value_or(""))) {
        return ::arrow::Status::Invalid(location.name, ": the name of a folder is not UTF-8");
      }
      const auto has_name = [&](const auto& keys) { return keys.front().name == key.name; };
      auto column = std::ranges::find_if(columns, has_name);
      if (column == columns.end()) column = columns.emplace(column);
      column->push_back(key);
    }
  }
  ::arrow::FieldVector fields;
  for (const auto& keys : columns) {
    fields.push_back(::arrow::field(keys.front().name, type_of(keys)));
  }
  return fields;
}

::arrow::Result<std::shared_ptr<::arrow::RecordBatch>> conform(
    const ::arrow::RecordBatch& batch, const std::vector<PartitionKey>& keys,
    const std::shared_ptr<::arrow::Schema>& schema, ::arrow::MemoryPool* pool) {
  ::arrow::ArrayVector columns;
  for (const auto& field : schema->fields()) {
    const auto key = std::ranges::find(keys, field->name(), &PartitionKey::name);
    const auto column = batch.GetColumnByName(field->name());
    auto made = key != keys.end() ? column_of(*key, field->type(), batch.num_rows(), pool)
                : column != nullptr
                    ? with_type(column, field->type(), pool)
                    : ::arrow::MakeArrayOfNull(field->type(), batch.num_rows(), pool);
    if (!made.ok()) {
      return made.status().WithMessage("column '", field->name(), "': ", made.status().message());
    }
    columns.push_back(*std::move(made));
  }
  return ::arrow::RecordBatch::Make(schema, batch.num_rows(), std::move(columns));
}

}  // namespace numera::files
