#include "numera/extras/convert/exact_type.h"

#include <arrow/array/array_primitive.h>
#include <arrow/array/util.h>
#include <arrow/compare.h>
#include <arrow/compute/cast.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "numera/core/limits.h"
#include "numera/format/whole_type.h"

namespace numera::extras {
namespace {

using ::arrow::ArrayData;
using ::arrow::Type;
using Data = std::shared_ptr<ArrayData>;
using DataResult = ::arrow::Result<Data>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

DataResult exact(const Data& array, const ::arrow::Field& field, const std::string& path);

::arrow::Status at(const std::string& path, const ::arrow::Status& status) {
  return status.WithMessage(path, ": ", status.message());
}

::arrow::Status no_cast(const std::string& path, const ArrayData& array,
                        const ::arrow::DataType& type) {
  return ::arrow::Status::TypeError(path, ": found type ", array.type->ToString(), ", expected ",
                                    type.ToString(),
                                    " or a type that can be cast to it without loss.");
}

::arrow::Status check_nulls(const ArrayData& array, const ::arrow::Field& field,
                            const std::string& path) {
  if (field.nullable() || array.GetNullCount() == 0) return {};
  return ::arrow::Status::Invalid(path, ": found ", array.GetNullCount(),
                                  " nulls, expected none in a field that is not nullable.");
}

/// Casts with Arrow. Fails if the cast would change a value.
DataResult cast(const Data& array, const TypePtr& type, const std::string& path) {
  const auto values = ::arrow::MakeArray(array);
  const auto cast = ::arrow::compute::Cast(*values, type, ::arrow::compute::CastOptions::Safe());
  if (!cast.ok()) return at(path, cast.status());
  return (*cast)->data();
}

/// Dates have no time zone.
bool has_no_zone(const ::arrow::DataType& timestamp) {
  return static_cast<const ::arrow::TimestampType&>(timestamp).timezone().empty();
}

/// Casts timestamps to dates. Arrow's cast silently drops the time of day, so the result is cast
/// back and compared.
DataResult whole_days(const Data& times, const TypePtr& type, const std::string& path) {
  ARROW_ASSIGN_OR_RAISE(Data days, cast(times, type, path));
  ARROW_ASSIGN_OR_RAISE(const Data back, cast(days, times->type, path));
  if (::arrow::MakeArray(back)->Equals(::arrow::MakeArray(times))) return days;
  return ::arrow::Status::Invalid(path, ": found times of day, expected whole days for ",
                                  type->ToString(), ".");
}

DataResult nulls(const Data& array, const TypePtr& type, const std::string& path) {
  if (array->GetNullCount() != array->length) {
    return ::arrow::Status::Invalid(
        path, ": found values that are not null, expected only nulls for the null type.");
  }
  ARROW_ASSIGN_OR_RAISE(const auto made, ::arrow::MakeArrayOfNull(type, array->length));
  return made->data();
}

/// Casts values of types without children.
DataResult plain(const Data& array, const TypePtr& type, const std::string& path) {
  const Type::type from = array->type->id();
  switch (type->id()) {
    case Type::STRING:
    case Type::STRING_VIEW:
      if (from == Type::LARGE_STRING) return cast(array, type, path);
      break;
    case Type::BINARY:
    case Type::BINARY_VIEW:
    case Type::FIXED_SIZE_BINARY:
      if (from == Type::LARGE_BINARY) return cast(array, type, path);
      break;
    case Type::DATE32:
    case Type::DATE64:
      if (from == Type::TIMESTAMP && has_no_zone(*array->type)) {
        return whole_days(array, type, path);
      }
      break;
    case Type::DURATION:
      if (from == Type::INT64) return cast(array, type, path);
      break;
    case Type::NA:
      if (from == Type::DOUBLE) return nulls(array, type, path);
      break;
    default:
      break;
  }
  return no_cast(path, *array, *type);
}

DataResult dictionary(const Data& array, const TypePtr& type, const std::string& path) {
  const auto& wanted = static_cast<const ::arrow::DictionaryType&>(*type);
  const auto& found = static_cast<const ::arrow::DictionaryType&>(*array->type);
  const Data indices =
      ArrayData::Make(found.index_type(), array->length, array->buffers, array->null_count);
  ARROW_ASSIGN_OR_RAISE(const Data codes, wanted.index_type()->Equals(*found.index_type())
                                              ? DataResult(indices)
                                              : cast(indices, wanted.index_type(), path));
  const ::arrow::Field values("", wanted.value_type());
  ARROW_ASSIGN_OR_RAISE(Data texts, exact(array->dictionary, values, path + "<dictionary>"));
  Data made = ArrayData::Make(type, array->length, codes->buffers, codes->null_count);
  made->dictionary = std::move(texts);
  return made;
}

/// Casts the children of a struct or of map entries. The names of the children are not compared.
DataResult with_children(const Data& array, const TypePtr& type, const std::string& path) {
  if (array->type->num_fields() != type->num_fields()) return no_cast(path, *array, *type);
  std::vector<Data> children;
  for (int i = 0; i < type->num_fields(); ++i) {
    const ::arrow::Field& field = *type->field(i);
    ARROW_ASSIGN_OR_RAISE(Data child, exact(array->child_data[static_cast<size_t>(i)], field,
                                            path + "." + field.name()));
    children.push_back(std::move(child));
  }
  return ArrayData::Make(type, array->length, array->buffers, std::move(children),
                         array->null_count);
}

DataResult list(const Data& array, const TypePtr& type, const std::string& path) {
  std::shared_ptr<::arrow::Buffer> offsets = array->buffers[1];
  if (type->id() != Type::LARGE_LIST) {
    const Data wide = ArrayData::Make(::arrow::int64(), array->length + 1, {nullptr, offsets}, 0);
    ARROW_ASSIGN_OR_RAISE(const Data narrow, cast(wide, ::arrow::int32(), path));
    offsets = narrow->buffers[1];
  }
  const Data& values = array->child_data[0];
  const ::arrow::Field& field = *type->field(0);
  const bool is_map = type->id() == Type::MAP;
  if (is_map && values->type->id() != Type::STRUCT) return no_cast(path, *array, *type);
  ARROW_RETURN_NOT_OK(check_nulls(*values, field, path + "[]"));
  ARROW_ASSIGN_OR_RAISE(Data child, is_map ? with_children(values, field.type(), path + "[]")
                                           : exact(values, field, path + "[]"));
  return ArrayData::Make(type, array->length, {array->buffers[0], std::move(offsets)},
                         {std::move(child)}, array->null_count);
}

DataResult exact_type(const Data& array, const TypePtr& type, const std::string& path) {
  if (array->type->Equals(*type, /*check_metadata=*/true)) return array;
  const Type::type from = array->type->id();
  switch (type->id()) {
    case Type::LIST:
    case Type::LARGE_LIST:
    case Type::MAP:
      return from == Type::LARGE_LIST ? list(array, type, path) : no_cast(path, *array, *type);
    case Type::STRUCT:
      if (from != Type::STRUCT || !same_names(array->type->fields(), type->fields())) break;
      return with_children(array, type, path);
    case Type::DICTIONARY:
      if (from == Type::DICTIONARY) return dictionary(array, type, path);
      break;
    default:
      return plain(array, type, path);
  }
  return no_cast(path, *array, *type);
}

DataResult exact(const Data& array, const ::arrow::Field& field, const std::string& path) {
  ARROW_RETURN_NOT_OK(check_nulls(*array, field, path));
  return exact_type(array, field.type(), path);
}

}  // namespace

bool same_names(const ::arrow::FieldVector& one, const ::arrow::FieldVector& other) {
  return std::ranges::equal(one, other,
                            [](const auto& a, const auto& b) { return a->name() == b->name(); });
}

::arrow::Result<std::shared_ptr<::arrow::Array>> exact_field(
    const std::shared_ptr<::arrow::Array>& array, const ::arrow::Field& field,
    const std::string& path) {
  // No type of a converted host value is nested deeper, so a deeper type cannot be the result of a
  // cast.
  constexpr int kLevels = 2 * io::arrow::core::kMaxNestingLevels;
  if (field.type() == nullptr || !format::is_whole(*field.type(), kLevels)) {
    return ::arrow::Status::Invalid(
        path, ": found a null pointer instead of a type or more than ", kLevels,
        " levels of types, expected a complete type of at most ", kLevels, " levels.");
  }
  ARROW_ASSIGN_OR_RAISE(const Data data, exact(array->data(), field, path));
  return data == array->data() ? array : ::arrow::MakeArray(data);
}

}  // namespace numera::extras
