#include "numera/core/arrow_types.h"

#include <arrow/extension_type.h>
#include <arrow/type.h>

#include <cstdint>
#include <iterator>

#include "numera/core/limits.h"
#include "numera/core/messages.h"
#include "numera/core/types/binary.h"
#include "numera/core/types/categorical.h"
#include "numera/core/types/datetime.h"
#include "numera/core/types/duration.h"
#include "numera/core/types/list.h"
#include "numera/core/types/map.h"
#include "numera/core/types/numeric.h"
#include "numera/core/types/string.h"
#include "numera/core/types/struct.h"
#include "numera/format/layout.h"
#include "numera/format/names.h"
#include "numera/format/number_classes.h"
#include "numera/format/values.h"
#include "numera/format/whole_type.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::Type;
using format::Layout;
using format::layout_of;

/// The null type has no values: "Data" is the number of elements.
::arrow::Result<hxArrayPtr> null_to_numera(const ColumnView& column) {
  return format::make_int64(column.length());
}

/// The row of a type whose values are numbers of a host class.
template <class T>
constexpr ArrowTypeRow number(Type::type id = format::kNumberClass<T>.arrow_type) {
  const char* const name = format::kNumberClass<T>.name;
  return {id, format::kArrayKind, name, name, numeric_to_numera<T>};
}

constexpr ArrowTypeRow refused(Type::type id) {
  return {id, format::kArrayKind, nullptr, nullptr, nullptr};
}

constexpr ArrowTypeRow kRows[] = {
    {Type::NA, format::kArrayKind, format::kNullType, "double", null_to_numera},
    {Type::BOOL, format::kArrayKind, format::kLogicalType, "logical", logical_to_numera},
    number<std::uint8_t>(),
    number<std::int8_t>(),
    number<std::uint16_t>(),
    number<std::int16_t>(),
    number<std::uint32_t>(),
    number<std::int32_t>(),
    number<std::uint64_t>(),
    number<std::int64_t>(),
    refused(Type::HALF_FLOAT),
    number<float>(),
    number<double>(),
    {Type::STRING, format::kArrayKind, format::kStringType, "string",
     ChunkedStringArrayToHost<::arrow::StringArray>},
    {Type::BINARY, format::kArrayKind, format::kBinaryType, "cell",
     BinaryChunksToHost<::arrow::BinaryArray>},
    {Type::FIXED_SIZE_BINARY, format::kArrayKind, format::kFixedBinaryType, "cell",
     FixedSizeBinaryChunksToHost},
    {Type::DATE32, format::kArrayKind, format::kDatetimeType, "datetime", date_to_numera},
    {Type::DATE64, format::kArrayKind, format::kDatetimeType, "datetime", date_to_numera},
    {Type::TIMESTAMP, format::kArrayKind, format::kDatetimeType, "datetime", timestamp_to_numera},
    {Type::TIME32, format::kArrayKind, format::kDurationType, "duration", time_to_numera},
    {Type::TIME64, format::kArrayKind, format::kDurationType, "duration", time_to_numera},
    refused(Type::INTERVAL_MONTHS),
    refused(Type::INTERVAL_DAY_TIME),
    refused(Type::DECIMAL128),
    refused(Type::DECIMAL256),
    {Type::LIST, format::kListKind, format::kListType, "cell", ListToHost},
    {Type::STRUCT, format::kStructKind, format::kStructType, "table", StructToHost},
    refused(Type::SPARSE_UNION),
    refused(Type::DENSE_UNION),
    {Type::DICTIONARY, format::kArrayKind, format::kCategoricalType, "categorical",
     DictionaryToHost},
    {Type::MAP, format::kMapKind, format::kMapType, "cell", MapToHost},
    refused(Type::EXTENSION),
    refused(Type::FIXED_SIZE_LIST),
    number<std::int64_t>(Type::DURATION),
    {Type::LARGE_STRING, format::kArrayKind, format::kStringType, "string",
     ChunkedStringArrayToHost<::arrow::LargeStringArray>},
    {Type::LARGE_BINARY, format::kArrayKind, format::kBinaryType, "cell",
     BinaryChunksToHost<::arrow::LargeBinaryArray>},
    {Type::LARGE_LIST, format::kListKind, format::kLargeListType, "cell", ListToHost},
    refused(Type::INTERVAL_MONTH_DAY_NANO),
    refused(Type::RUN_END_ENCODED),
    refused(Type::STRING_VIEW),
    refused(Type::BINARY_VIEW),
    refused(Type::LIST_VIEW),
    refused(Type::LARGE_LIST_VIEW),
    refused(Type::DECIMAL32),
    refused(Type::DECIMAL64),
};

constexpr bool rows_are_complete() {
  for (size_t i = 0; i < std::size(kRows); ++i) {
    const ArrowTypeRow& row = kRows[i];
    if (static_cast<size_t>(row.id) != i) return false;
    if ((row.encoded_name == nullptr) != (layout_of(row.id) == Layout::kNoHostForm)) return false;
  }
  return true;
}
static_assert(std::size(kRows) == Type::MAX_ID, "every type has a row");
static_assert(rows_are_complete(), "a row is found by its id, and types with a name have a layout");

enum class TypeFault : std::uint8_t { None, NoType, TooDeep };

/// Whether a type contains no other types.
bool is_flat(const ::arrow::DataType& type) {
  return type.num_fields() == 0 && type.id() != Type::STRUCT && type.id() != Type::DICTIONARY;
}

/// `levels` is the number of nesting levels still allowed, including that of `type`. A map takes
/// one level, although Arrow stores its keys and items in a struct. A dictionary takes none, unless
/// its value type contains other types. This function is recursive, so its stack frame is kept
/// small.
TypeFault fault_of(const ::arrow::DataType* type, int levels) {
  if (type != nullptr && type->id() == Type::EXTENSION) {
    // Extensions are refused. Their storage only has to be complete: the message may show it.
    while (type != nullptr && type->id() == Type::EXTENSION) {
      type = static_cast<const ::arrow::ExtensionType*>(type)->storage_type().get();
    }
    const bool is_complete = fault_of(type, levels) != TypeFault::NoType;
    return is_complete ? TypeFault::None : TypeFault::NoType;
  }
  if (type == nullptr || !format::has_inner_types(*type)) return TypeFault::NoType;
  if (is_flat(*type)) return TypeFault::None;
  if (type->id() == Type::DICTIONARY) {
    type = static_cast<const ::arrow::DictionaryType&>(*type).value_type().get();
    if (is_flat(*type)) return fault_of(type, levels);
    return levels == 0 ? TypeFault::TooDeep : fault_of(type, levels - 1);
  }
  if (levels == 0) return TypeFault::TooDeep;
  const ::arrow::DataType& parent = type->id() == Type::MAP ? *type->field(0)->type() : *type;
  for (const auto& field : parent.fields()) {
    const TypeFault fault = fault_of(field->type().get(), levels - 1);
    if (fault != TypeFault::None) return fault;
  }
  return TypeFault::None;
}

}  // namespace

const ArrowTypeRow& arrow_type_row(Type::type id) {
  static constexpr ArrowTypeRow kUnknown = refused(Type::MAX_ID);
  const auto i = static_cast<size_t>(id);
  return i < std::size(kRows) ? kRows[i] : kUnknown;
}

::arrow::Status check_type(const ::arrow::DataType* type) {
  switch (fault_of(type, kMaxNestingLevels)) {
    case TypeFault::None:
      return ::arrow::Status::OK();
    case TypeFault::NoType:
      return messages::no_type();
    case TypeFault::TooDeep:
      return messages::nested_too_deeply();
  }
  return ::arrow::Status::OK();
}

}  // namespace numera::io::arrow::core
