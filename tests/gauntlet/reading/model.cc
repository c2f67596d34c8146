#include "tests/gauntlet/reading/model.h"

#include <arrow/array.h>

#include <utility>

#include "tests/gauntlet/reading/checks.h"
#include "tests/gauntlet/reading/model_plain.h"

namespace numera::gauntlet::reading {
namespace {

using ::arrow::Status;

constexpr int kMostLevels = 1024;

/// `outer`: the number of lists and structs around it.
ArrayTree element(const hxArray* encoded, size_t index, int outer);

ArrayTree list(const hxArray* encoded, size_t index, int level) {
  const Validity validity = validity_of(hxGetFieldChecked(encoded, index, "Valid"));
  const hxArray* data = hxGetFieldChecked(encoded, index, "Data");
  const hxArray* starts = hxGetFieldChecked(data, 0, "StartOffsets");
  if (starts == nullptr || hxGetClassID(starts) != hxClassID::UInt64) {
    refuse_type("Field 'StartOffsets': found ", description(starts), ", expected a uint64 array.");
  }
  require_plain(starts, "StartOffsets");
  if (hxIsEmpty(starts)) {
    refuse_invalid(
        "Field 'StartOffsets': found no elements, expected one more than there are lists.");
  }
  ArrayTree values = element(hxGetFieldChecked(data, 0, "Values"), 0, level);
  auto type = ::arrow::large_list(values.type);
  const auto entries = static_cast<std::int64_t>(hxGetNumberOfElements(starts));
  ArrayTree lists = leaf(std::move(type), entries - 1, validity, {memory_of(starts)});
  lists.children.push_back(std::move(values));
  return lists;
}

/// The status that Arrow returns for children that make no struct, in Arrow's current wording.
Status refusal_of_arrow(const ::arrow::ArrayVector& children) {
  const std::vector<std::string> names(children.size(), "x");
  return ::arrow::StructArray::Make(children, names).status();
}

std::shared_ptr<::arrow::Array> array_of_length(std::int64_t length) {
  return std::make_shared<::arrow::Int8Array>(length, nullptr);
}

void require_one_length(const std::vector<ArrayTree>& children) {
  static const Status kNoChildren = refusal_of_arrow({});
  static const Status kUnequal = refusal_of_arrow({array_of_length(1), array_of_length(2)});
  static const Status kNegative = refusal_of_arrow({array_of_length(-1)});
  if (children.empty()) throw Refusal{kNoChildren};
  for (const ArrayTree& child : children) {
    if (child.length != children.front().length) throw Refusal{kUnequal};
  }
  if (children.front().length < 0) throw Refusal{kNegative};
}

size_t count_cells(const hxArray* cells) {
  return cells == nullptr ? 0 : hxGetNumberOfElements(cells);
}

ArrayTree structure(const hxArray* encoded, size_t index, int level) {
  const Validity validity = validity_of(hxGetFieldChecked(encoded, index, "Valid"));
  const hxArray* data = hxGetFieldChecked(encoded, index, "Data");
  const hxArray* names = hxGetFieldChecked(data, 0, "FieldName");
  const hxArray* children = hxGetFieldChecked(data, 0, "FieldData");
  if (count_cells(names) != count_cells(children)) {
    refuse_invalid("Expect FieldData and FieldName to have the same number of elements");
  }
  ArrayTree tree{.buffers = {validity}};
  ::arrow::FieldVector fields;
  for (size_t i = 0; i < count_cells(names); ++i) {
    tree.children.push_back(element(hxGetCellChecked(children, i), 0, level));
    fields.push_back(
        ::arrow::field(text_of(hxGetCellChecked(names, i)), tree.children.back().type));
  }
  require_one_length(tree.children);
  tree.type = ::arrow::struct_(fields);
  tree.length = tree.children.front().length;
  if (!validity) tree.null_count = 0;
  return tree;
}

/// All four checks run; then the first failure is the answer. A field that the struct lacks throws
/// during the checks, so it comes before all failures.
void require_envelope(const hxArray* encoded) {
  const Status results[] = {
      check(encoded, "Data", hxClassID::Unknown), check(encoded, "ArrowType", hxClassID::Char),
      check(encoded, "Type", hxClassID::Char), check(encoded, "Valid", hxClassID::Struct)};
  for (const Status& result : results) {
    if (!result.ok()) throw Refusal{result};
  }
}

ArrayTree element(const hxArray* encoded, size_t index, int outer) {
  require_envelope(encoded);
  const std::string kind = text_of(hxGetFieldChecked(encoded, index, "ArrowType"));
  if (kind == "list_array" || kind == "struct") {
    if (outer == kMostLevels) {
      refuse_invalid("Nested value: found more than 1024 levels, expected at most 1024.");
    }
    return kind == "struct" ? structure(encoded, index, outer + 1)
                            : list(encoded, index, outer + 1);
  }
  if (kind != "array") {
    refuse_type("Expected 'array' input type, received '", kind, "' instead.");
  }
  const std::string type_name = text_of(hxGetFieldChecked(encoded, index, "Type"));
  const hxArray* data = hxGetFieldChecked(encoded, index, "Data");
  const Validity validity = validity_of(hxGetFieldChecked(encoded, index, "Valid"));
  return plain_array(data, type_name, validity);
}

const std::type_info& object_of(::arrow::Type::type id) {
  switch (id) {
    case ::arrow::Type::DOUBLE:
      return typeid(::arrow::DoubleArray);
    case ::arrow::Type::FLOAT:
      return typeid(::arrow::FloatArray);
    case ::arrow::Type::INT8:
      return typeid(::arrow::Int8Array);
    case ::arrow::Type::UINT8:
      return typeid(::arrow::UInt8Array);
    case ::arrow::Type::INT16:
      return typeid(::arrow::Int16Array);
    case ::arrow::Type::UINT16:
      return typeid(::arrow::UInt16Array);
    case ::arrow::Type::INT32:
      return typeid(::arrow::Int32Array);
    case ::arrow::Type::UINT32:
      return typeid(::arrow::UInt32Array);
    case ::arrow::Type::INT64:
      return typeid(::arrow::Int64Array);
    case ::arrow::Type::UINT64:
      return typeid(::arrow::UInt64Array);
    case ::arrow::Type::BOOL:
      return typeid(::arrow::BooleanArray);
    case ::arrow::Type::TIME32:
      return typeid(::arrow::Time32Array);
    case ::arrow::Type::TIME64:
      return typeid(::arrow::Time64Array);
    case ::arrow::Type::TIMESTAMP:
      return typeid(::arrow::TimestampArray);
    case ::arrow::Type::LARGE_STRING:
      return typeid(::arrow::LargeStringArray);
    case ::arrow::Type::LARGE_BINARY:
      return typeid(::arrow::LargeBinaryArray);
    case ::arrow::Type::DICTIONARY:
      return typeid(::arrow::DictionaryArray);
    case ::arrow::Type::LARGE_LIST:
      return typeid(::arrow::LargeListArray);
    case ::arrow::Type::STRUCT:
      return typeid(::arrow::StructArray);
    default:
      return typeid(void);
  }
}

ArrayTree outermost(const hxArray* encoded, size_t index) {
  ArrayTree tree = element(encoded, index, 0);
  tree.object = &object_of(tree.type->id());
  return tree;
}

/// Arrow counts the nulls of a column when it makes a table, so the bitmap must be long enough.
void count_nulls(ArrayTree& column) {
  const std::optional<Region>& bitmap = column.buffers.front();
  if (!bitmap) return;
  if (column.length < 0) {
    refuse_invalid("Array: found offset 0 and length ", column.length,
                   ", expected neither negative and their sum within 64 bits.");
  }
  if (column.length / 8 + (column.length % 8 == 0 ? 0 : 1) > bitmap->size) {
    refuse_invalid("Field 'Valid': found ", bitmap->size, " bytes, expected enough for ",
                   column.length, " elements.");
  }
  const auto* const bytes = static_cast<const std::uint8_t*>(bitmap->data);
  column.null_count = 0;
  for (std::int64_t i = 0; i < column.length; ++i) {
    column.null_count += (bytes[i / 8] >> (i % 8) & 1) == 0 ? 1 : 0;
  }
}

TableTree table(const hxArray* encoded) {
  require(encoded, "ArrowType", hxClassID::Char);
  require(encoded, "Names", hxClassID::Cell);
  require(encoded, "Columns", hxClassID::Struct);
  const hxArray* names = hxGetFieldChecked(encoded, 0, "Names");
  const hxArray* columns = hxGetFieldChecked(encoded, 0, "Columns");
  TableTree tree;
  for (size_t i = 0; i < hxGetDimensions(columns)[0]; ++i) {
    hxThrowIfInterruptPending();
    tree.names.push_back(text_of(hxGetCellChecked(names, i)));
    tree.columns.push_back(outermost(columns, i));
    count_nulls(tree.columns.back());
  }
  if (!tree.columns.empty()) tree.rows = tree.columns.front().length;
  return tree;
}

template <class Rule>
Outcome expected(Rule rule) {
  return outcome_of([&]() -> Outcome {
    try {
      return rule();
    } catch (const Refusal& refusal) {
      return refusal.status;
    }
  });
}

}  // namespace

Outcome expected_array(const hxArray* encoded, size_t index) {
  return expected([&] { return outermost(encoded, index); });
}

Outcome expected_buffer(const hxArray* encoded) {
  return expected([&] { return buffer_of(encoded); });
}

Outcome expected_table(const hxArray* encoded) {
  return expected([&] { return table(encoded); });
}

}  // namespace numera::gauntlet::reading
