#include "tools/memory_check.h"

#include <arrow/array/data.h>
#include <arrow/array/util.h>
#include <arrow/extension_type.h>
#include <arrow/type.h>

#include <memory>

namespace numera::tools {
namespace {

using ::arrow::Type;
using TypePointer = std::shared_ptr<::arrow::DataType>;

TypePointer plain(const TypePointer& type);

::arrow::FieldVector plain_fields(const ::arrow::DataType& type) {
  ::arrow::FieldVector fields;
  for (const auto& field : type.fields()) fields.push_back(field->WithType(plain(field->type())));
  return fields;
}

TypePointer plain_dictionary(const ::arrow::DictionaryType& type) {
  return ::arrow::dictionary(type.index_type(), plain(type.value_type()), type.ordered());
}

/// The same type with inner types made plain; of a type without inner types, itself.
TypePointer plain_nested(const TypePointer& type) {
  const ::arrow::FieldVector fields = plain_fields(*type);
  switch (type->id()) {
    case Type::LIST:
      return ::arrow::list(fields[0]);
    case Type::LARGE_LIST:
      return ::arrow::large_list(fields[0]);
    case Type::LIST_VIEW:
      return ::arrow::list_view(fields[0]);
    case Type::LARGE_LIST_VIEW:
      return ::arrow::large_list_view(fields[0]);
    case Type::FIXED_SIZE_LIST:
      return ::arrow::fixed_size_list(
          fields[0], static_cast<const ::arrow::FixedSizeListType&>(*type).list_size());
    case Type::STRUCT:
      return ::arrow::struct_(fields);
    case Type::MAP:
      return std::make_shared<::arrow::MapType>(fields[0]);
    case Type::SPARSE_UNION:
      return ::arrow::sparse_union(fields,
                                   static_cast<const ::arrow::UnionType&>(*type).type_codes());
    case Type::DENSE_UNION:
      return ::arrow::dense_union(fields,
                                  static_cast<const ::arrow::UnionType&>(*type).type_codes());
    case Type::DICTIONARY:
      return plain_dictionary(static_cast<const ::arrow::DictionaryType&>(*type));
    case Type::RUN_END_ENCODED:
      return ::arrow::run_end_encoded(fields[0]->type(), fields[1]->type());
    default:
      return type;
  }
}

/// A type of the same memory layout whose elements may have any bits.
TypePointer plain(const TypePointer& type) {
  switch (type->id()) {
    case Type::STRING:
      return ::arrow::binary();
    case Type::LARGE_STRING:
      return ::arrow::large_binary();
    case Type::STRING_VIEW:
      return ::arrow::binary_view();
    case Type::TIME32:
      return ::arrow::int32();
    case Type::TIME64:
    case Type::DATE64:
      return ::arrow::int64();
    case Type::DECIMAL32:
    case Type::DECIMAL64:
    case Type::DECIMAL128:
    case Type::DECIMAL256:
      return ::arrow::fixed_size_binary(type->byte_width());
    case Type::EXTENSION:
      return plain(static_cast<const ::arrow::ExtensionType&>(*type).storage_type());
    default:
      return plain_nested(type);
  }
}

std::shared_ptr<::arrow::ArrayData> plain_data(const ::arrow::ArrayData& data) {
  const auto copy = data.Copy();
  copy->type = plain(data.type);
  for (auto& child : copy->child_data) child = plain_data(*child);
  if (copy->dictionary != nullptr) copy->dictionary = plain_data(*copy->dictionary);
  return copy;
}

}  // namespace

::arrow::Status check_memory(const ::arrow::Array& array) {
  ARROW_RETURN_NOT_OK(array.Validate());  // every child is there and has its type
  return ::arrow::MakeArray(plain_data(*array.data()))->ValidateFull();
}

::arrow::Status check_memory(const ::arrow::RecordBatch& batch) {
  for (int i = 0; i < batch.num_columns(); ++i) {
    const ::arrow::Status status = check_memory(*batch.column(i));
    if (!status.ok()) return status.WithMessage(batch.column_name(i), ": ", status.message());
  }
  return ::arrow::Status::OK();
}

}  // namespace numera::tools
