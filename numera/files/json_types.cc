#include "numera/files/json_types.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace numera::files {
namespace {

using TypePtr = std::shared_ptr<::arrow::DataType>;

bool are(const TypePtr& one, const TypePtr& other, ::arrow::Type::type id,
         ::arrow::Type::type other_id) {
  return (one->id() == id && other->id() == other_id) ||
         (one->id() == other_id && other->id() == id);
}

::arrow::Result<TypePtr> widen(const TypePtr& before, const TypePtr& found,
                               const std::string& path);

/// Fields keep the order in which they were found.
::arrow::Result<TypePtr> widen_structs(const ::arrow::StructType& before,
                                       const ::arrow::StructType& found, const std::string& path) {
  ::arrow::FieldVector fields = before.fields();
  for (const auto& field : found.fields()) {
    const int i = before.GetFieldIndex(field->name());
    if (i < 0) {
      fields.push_back(field);
      continue;
    }
    auto& widened = fields[static_cast<size_t>(i)];
    ARROW_ASSIGN_OR_RAISE(auto type, widen(widened->type(), field->type(),
                                           path + (path.empty() ? "" : ".") + field->name()));
    widened = widened->WithType(type);
  }
  return ::arrow::struct_(fields);
}

::arrow::Result<TypePtr> widen(const TypePtr& before, const TypePtr& found,
                               const std::string& path) {
  using enum ::arrow::Type::type;
  if (found->id() == NA || found->Equals(*before)) return before;
  if (before->id() == NA) return found;
  if (are(before, found, INT64, DOUBLE)) return ::arrow::float64();
  if (are(before, found, TIMESTAMP, STRING)) return ::arrow::utf8();
  if (are(before, found, STRUCT, STRUCT)) {
    return widen_structs(static_cast<const ::arrow::StructType&>(*before),
                         static_cast<const ::arrow::StructType&>(*found), path);
  }
  if (are(before, found, LIST, LIST)) {
    ARROW_ASSIGN_OR_RAISE(auto elements,
                          widen(before->field(0)->type(), found->field(0)->type(), path + "[]"));
    return ::arrow::list(before->field(0)->WithType(elements));
  }
  return ::arrow::Status::Invalid("column '", path, "': found ", *found, ", expected ", *before,
                                  " as before");
}

}  // namespace

::arrow::Result<TypePtr> widen_rows(const TypePtr& before, const TypePtr& found) {
  return widen(before, found, "");
}

}  // namespace numera::files
