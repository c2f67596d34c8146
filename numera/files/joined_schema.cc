#include "numera/files/joined_schema.h"

#include <algorithm>
#include <utility>

#include "numera/files/merged_schema.h"

namespace numera::files {
namespace {

using SchemaPtr = std::shared_ptr<::arrow::Schema>;

::arrow::Status check_names(const ::arrow::Schema& schema) {
  for (const auto& name : schema.field_names()) {
    const size_t columns = schema.GetAllFieldIndices(name).size();
    if (columns > 1) {
      return ::arrow::Status::Invalid(columns, " columns have the name '", name,
                                      "', so that they cannot be joined with other files");
    }
  }
  return ::arrow::Status::OK();
}

/// The columns that are asked for, in the order of the file.
SchemaPtr wanted_of(const ::arrow::Schema& schema, const std::vector<std::string>& columns) {
  ::arrow::FieldVector fields;
  for (const auto& field : schema.fields()) {
    const bool is_wanted =
        columns.empty() || std::ranges::find(columns, field->name()) != columns.end();
    if (is_wanted) fields.push_back(field);
  }
  return ::arrow::schema(std::move(fields), schema.metadata());
}

}  // namespace

::arrow::Status in_file(const Location& location, const ::arrow::Status& failure) {
  return failure.WithMessage(location.name, ": ", failure.message());
}

bool have_equal_schemas(const std::vector<Member>& members) {
  return std::ranges::all_of(members, [&](const Member& member) {
    return member.schema->Equals(*members.front().schema) && member.location.keys.empty();
  });
}

::arrow::Result<SchemaPtr> join_schemas(const std::vector<Member>& members,
                                        const std::vector<std::string>& columns,
                                        const ::arrow::FieldVector& keys) {
  SchemaPtr joined = wanted_of(*members.front().schema, columns);
  for (const Member& member : members) {
    const SchemaPtr wanted = wanted_of(*member.schema, columns);
    ::arrow::Status status = check_names(*wanted);
    if (status.ok()) status = merge_schemas(joined, *wanted).Value(&joined);
    if (!status.ok()) return in_file(member.location, status);
  }
  for (const auto& key : keys) {
    if (joined->GetFieldIndex(key->name()) >= 0) {
      return ::arrow::Status::Invalid("the column '", key->name(),
                                      "' is in a file and in the name of a folder");
    }
    ARROW_ASSIGN_OR_RAISE(joined, joined->AddField(joined->num_fields(), key));
  }
  return joined;
}

}  // namespace numera::files
