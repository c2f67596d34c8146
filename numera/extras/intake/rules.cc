#include "numera/extras/intake/rules.h"

#include <arrow/extension_type.h>

#include <iterator>

#include "numera/core/limits.h"
#include "numera/extras/intake/takes.h"
#include "numera/extras/intake/type_text.h"
#include "numera/format/layout.h"
#include "numera/format/whole_type.h"

namespace numera::extras::intake {
namespace {

using ::arrow::Type;
using format::Layout;
using format::layout_of;

constexpr Take take_of(Layout layout) {
  switch (layout) {
    case Layout::kNoHostForm:
      return nullptr;
    case Layout::kNoValues:
      return take_null;
    case Layout::kBits:
      return take_bits;
    case Layout::kFixedWidth:
      return take_fixed_width;
    case Layout::kText:
      return take_text<std::int32_t>;
    case Layout::kLargeText:
      return take_text<std::int64_t>;
    case Layout::kList:
    case Layout::kMap:
      return take_list<std::int32_t>;
    case Layout::kLargeList:
      return take_list<std::int64_t>;
    case Layout::kStruct:
      return take_struct;
  }
  return nullptr;
}

constexpr Rule kept(Type::type id, const char* type) {
  return {id, type, Fate::kKept, "", take_of(layout_of(id))};
}

constexpr Rule cast(Type::type id, const char* type, const char* to, Take take) {
  return {id, type, Fate::kCast, to, take};
}

constexpr Rule refused(Type::type id, const char* type) {
  return {id, type, Fate::kRefused, "", nullptr};
}

constexpr Rule kRules[] = {
    kept(Type::NA, "null"),
    kept(Type::BOOL, "bool"),
    kept(Type::UINT8, "uint8"),
    kept(Type::INT8, "int8"),
    kept(Type::UINT16, "uint16"),
    kept(Type::INT16, "int16"),
    kept(Type::UINT32, "uint32"),
    kept(Type::INT32, "int32"),
    kept(Type::UINT64, "uint64"),
    kept(Type::INT64, "int64"),
    cast(Type::HALF_FLOAT, "halffloat", "double", cast_half_float),
    kept(Type::FLOAT, "float"),
    kept(Type::DOUBLE, "double"),
    kept(Type::STRING, "utf8"),
    kept(Type::BINARY, "binary"),
    kept(Type::FIXED_SIZE_BINARY, "fixed_size_binary"),
    kept(Type::DATE32, "date32"),
    kept(Type::DATE64, "date64"),
    kept(Type::TIMESTAMP, "timestamp"),
    kept(Type::TIME32, "time32"),
    kept(Type::TIME64, "time64"),
    cast(Type::INTERVAL_MONTHS, "month_interval", "utf8", cast_month_interval),
    cast(Type::INTERVAL_DAY_TIME, "day_time_interval", "utf8", cast_day_time_interval),
    cast(Type::DECIMAL128, "decimal128", "double", cast_decimal),
    cast(Type::DECIMAL256, "decimal256", "double", cast_decimal),
    kept(Type::LIST, "list"),
    kept(Type::STRUCT, "struct"),
    refused(Type::SPARSE_UNION, "sparse_union"),
    refused(Type::DENSE_UNION, "dense_union"),
    {Type::DICTIONARY, "dictionary", Fate::kKeptOfText, "its values", take_dictionary},
    kept(Type::MAP, "map"),
    cast(Type::EXTENSION, "extension", "its storage", cast_extension),
    cast(Type::FIXED_SIZE_LIST, "fixed_size_list", "list", cast_fixed_size_list),
    kept(Type::DURATION, "duration"),
    kept(Type::LARGE_STRING, "large_utf8"),
    kept(Type::LARGE_BINARY, "large_binary"),
    kept(Type::LARGE_LIST, "large_list"),
    cast(Type::INTERVAL_MONTH_DAY_NANO, "month_day_nano_interval", "utf8",
         cast_month_day_nano_interval),
    cast(Type::RUN_END_ENCODED, "run_end_encoded", "its values", cast_run_end_encoded),
    cast(Type::STRING_VIEW, "utf8_view", "utf8", cast_view),
    cast(Type::BINARY_VIEW, "binary_view", "binary", cast_view),
    cast(Type::LIST_VIEW, "list_view", "list", cast_list_view<std::int32_t>),
    cast(Type::LARGE_LIST_VIEW, "large_list_view", "large_list", cast_list_view<std::int64_t>),
    cast(Type::DECIMAL32, "decimal32", "double", cast_decimal),
    cast(Type::DECIMAL64, "decimal64", "double", cast_decimal),
};

constexpr bool rules_are_complete() {
  for (size_t i = 0; i < std::size(kRules); ++i) {
    const Rule& rule = kRules[i];
    if (static_cast<size_t>(rule.id) != i) return false;
    const bool is_kept = rule.fate == Fate::kKept || rule.fate == Fate::kKeptOfText;
    if (is_kept != (layout_of(rule.id) != Layout::kNoHostForm)) return false;
  }
  return true;
}
static_assert(std::size(kRules) == Type::MAX_ID, "every type has a rule");
static_assert(rules_are_complete(), "a rule is found by its id, and kept types have a layout");

std::string place_of(const std::string& path) { return path.empty() ? "" : path + ": "; }

::arrow::Status refuse(const std::string& path, const ::arrow::DataType& type, const char* cure) {
  return ::arrow::Status::TypeError(place_of(path), "found type ", type_text(type),
                                    ", expected one that has a host form", cure, ".");
}

constexpr const char* kAskForCasts = "; casts were not asked for";

/// Whether a dictionary of this value type is kept: text, or text views if views may be cast.
bool is_text(const ::arrow::DataType& type, AllowedCasts allowed) {
  return type.id() == Type::STRING || type.id() == Type::LARGE_STRING ||
         (type.id() == Type::STRING_VIEW && allowed.views);
}

bool is_view(Type::type id) {
  return id == Type::STRING_VIEW || id == Type::BINARY_VIEW || id == Type::LIST_VIEW ||
         id == Type::LARGE_LIST_VIEW;
}

bool may_cast(Type::type id, AllowedCasts allowed) {
  return allowed.all || (allowed.views && is_view(id));
}

bool holds_types(const ::arrow::DataType& type) {
  return type.num_fields() > 0 || type.id() == Type::STRUCT || type.id() == Type::DICTIONARY ||
         type.id() == Type::EXTENSION;
}

::arrow::Status check(const std::string& path, const ::arrow::DataType& type, AllowedCasts allowed,
                      int levels);

::arrow::Status check_fields(const std::string& path, const ::arrow::DataType& type,
                             AllowedCasts allowed, int levels) {
  for (const auto& field : type.fields()) {
    ARROW_RETURN_NOT_OK(check(type.id() == Type::STRUCT            ? field_path(path, field->name())
                              : type.id() == Type::RUN_END_ENCODED ? path + "<values>"
                                                                   : path + "[]",
                              *field->type(), allowed, levels));
  }
  return ::arrow::Status::OK();
}

/// The value type of a dictionary or the storage type of an extension; null for every other type.
const ::arrow::DataType* represented_type(const ::arrow::DataType& type) {
  if (type.id() == Type::DICTIONARY) {
    return static_cast<const ::arrow::DictionaryType&>(type).value_type().get();
  }
  if (type.id() == Type::EXTENSION) {
    return static_cast<const ::arrow::ExtensionType&>(type).storage_type().get();
  }
  return nullptr;
}

/// Allows `levels` more levels of nesting. A dictionary or an extension of a plain type is not a
/// level.
::arrow::Status check(const std::string& path, const ::arrow::DataType& type, AllowedCasts allowed,
                      int levels) {
  if (!format::has_inner_types(type)) {
    return ::arrow::Status::Invalid(
        place_of(path), "found type ", type.name(),
        " with a null pointer instead of an inner type, expected a complete type.");
  }
  const auto id = static_cast<size_t>(type.id());
  if (id >= std::size(kRules) || kRules[id].fate == Fate::kRefused) return refuse(path, type, "");
  if (kRules[id].fate == Fate::kCast && !may_cast(type.id(), allowed))
    return refuse(path, type, kAskForCasts);
  if (!holds_types(type)) return ::arrow::Status::OK();
  const ::arrow::DataType* represented = represented_type(type);
  const bool is_level = represented == nullptr || holds_types(*represented);
  if (is_level && --levels < 0) {
    return ::arrow::Status::Invalid("Types: found more than ", io::arrow::core::kMaxNestingLevels,
                                    " levels of nesting, expected at most ",
                                    io::arrow::core::kMaxNestingLevels, ".");
  }
  if (represented != nullptr) {
    const bool is_dictionary = type.id() == Type::DICTIONARY;
    if (is_dictionary && !allowed.all && !is_text(*represented, allowed))
      return refuse(path, type, kAskForCasts);
    return check(path + (is_dictionary ? "<dictionary>" : "<storage>"), *represented, allowed,
                 levels);
  }
  if (type.id() != Type::MAP) return check_fields(path, type, allowed, levels);
  const auto& map = static_cast<const ::arrow::MapType&>(type);
  ARROW_RETURN_NOT_OK(check(path + "{key}", *map.key_type(), allowed, levels));
  return check(path + "{item}", *map.item_type(), allowed, levels);
}

}  // namespace

std::span<const Rule> rules() { return kRules; }

std::string field_path(const std::string& path, const std::string& name) {
  return path + "." + name;
}

::arrow::Status check_type(const std::string& path, const ::arrow::DataType& type,
                           AllowedCasts allowed) {
  return check(path, type, allowed, io::arrow::core::kMaxNestingLevels);
}

DataResult take_in_data(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  const Rule& rule = kRules[array.type->id()];
  ARROW_ASSIGN_OR_RAISE(Data taken, rule.take(work, path, array));
  if (rule.fate == Fate::kCast) work.note(path, array.type, taken->type);
  return taken;
}

}  // namespace numera::extras::intake
