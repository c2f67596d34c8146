#include "tools/compare.h"

#include <arrow/array/array_binary.h>
#include <arrow/array/array_dict.h>
#include <arrow/array/array_nested.h>
#include <arrow/array/array_primitive.h>
#include <arrow/array/util.h>
#include <arrow/compare.h>
#include <arrow/type.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace numera::tools {
namespace {

using ::arrow::Array;
using ::arrow::Type;
using Row = std::optional<std::int64_t>;

/// The first row that is null on one side only, or for which `same(i)` is false.
template <class Same>
Row first_row(const Array& went, const Array& came, const Same& same) {
  for (std::int64_t i = 0; i < went.length(); ++i) {
    if (went.IsNull(i) != came.IsNull(i)) return i;
    if (!went.IsNull(i) && !same(i)) return i;
  }
  return std::nullopt;
}

bool is_text_or_bytes(Type::type id) {
  return ::arrow::is_base_binary_like(id) || id == Type::FIXED_SIZE_BINARY;
}

/// The text or bytes of a row. Looks up the values of a dictionary.
std::string_view bytes_at(const Array& array, std::int64_t i) {
  switch (array.type_id()) {
    case Type::STRING:
    case Type::BINARY:
      return static_cast<const ::arrow::BinaryArray&>(array).GetView(i);
    case Type::LARGE_STRING:
    case Type::LARGE_BINARY:
      return static_cast<const ::arrow::LargeBinaryArray&>(array).GetView(i);
    case Type::FIXED_SIZE_BINARY:
      return static_cast<const ::arrow::FixedSizeBinaryArray&>(array).GetView(i);
    case Type::DICTIONARY: {
      const auto& categories = static_cast<const ::arrow::DictionaryArray&>(array);
      return bytes_at(*categories.dictionary(), categories.GetValueIndex(i));
    }
    default:  // callers pass no other types
      return {};
  }
}

Row compare_bytes(const Array& went, const Array& came) {
  return first_row(went, came,
                   [&](std::int64_t i) { return bytes_at(went, i) == bytes_at(came, i); });
}

template <class Went, class Came>
Row compare_lists(const Array& went_array, const Array& came_array) {
  const auto& went = static_cast<const Went&>(went_array);
  const auto& came = static_cast<const Came&>(came_array);
  return first_row(went, came, [&](std::int64_t i) {
    return went.value_length(i) == came.value_length(i) &&
           !first_differing_row(*went.value_slice(i), *came.value_slice(i));
  });
}

bool same_fields(const ::arrow::StructArray& went, const ::arrow::StructArray& came) {
  for (int field = 0; field < went.num_fields(); ++field) {
    if (first_differing_row(*went.field(field), *came.field(field))) return false;
  }
  return true;
}

/// Ignores the values of the fields in rows where the struct is null.
Row compare_structs(const Array& went_array, const Array& came_array) {
  const auto& went = static_cast<const ::arrow::StructArray&>(went_array);
  const auto& came = static_cast<const ::arrow::StructArray&>(came_array);
  const bool same_everywhere = same_fields(went, came);
  return first_row(went, came, [&](std::int64_t i) {
    return same_everywhere ||
           same_fields(static_cast<const ::arrow::StructArray&>(*went.Slice(i, 1)),
                       static_cast<const ::arrow::StructArray&>(*came.Slice(i, 1)));
  });
}

template <class Date>
Row compare_dates(const Array& went_array, const Array& came_array, std::int64_t ticks) {
  const auto& went = static_cast<const ::arrow::NumericArray<Date>&>(went_array);
  const auto& came = static_cast<const ::arrow::TimestampArray&>(came_array);
  return first_row(went, came,
                   [&](std::int64_t i) { return went.Value(i) * ticks == came.Value(i); });
}

Row compare_as_they_are(const Array& went, const Array& came) {
  const auto options = ::arrow::EqualOptions::Defaults().nans_equal(true).signed_zeros_equal(false);
  if (went.RangeEquals(came, 0, went.length(), 0, options)) return std::nullopt;
  for (std::int64_t i = 0; i < went.length(); ++i) {
    if (!went.RangeEquals(came, i, i + 1, i, options)) return i;
  }
  return 0;
}

/// The durations as int64 values, without their unit.
std::shared_ptr<Array> counts_of(const Array& durations) {
  const auto data = durations.data()->Copy();
  data->type = ::arrow::int64();
  return ::arrow::MakeArray(data);
}

}  // namespace

Row first_differing_row(const Array& went, const Array& came) {
  const Type::type from = went.type_id();
  const Type::type to = came.type_id();
  if (went.length() != came.length()) return std::min(went.length(), came.length());
  if (is_text_or_bytes(from) && is_text_or_bytes(to)) return compare_bytes(went, came);
  if (from == Type::DICTIONARY && to == Type::DICTIONARY) return compare_bytes(went, came);
  if (from == Type::LIST && to == Type::LARGE_LIST) {
    return compare_lists<::arrow::ListArray, ::arrow::LargeListArray>(went, came);
  }
  if (from == Type::LARGE_LIST && to == Type::LARGE_LIST) {
    return compare_lists<::arrow::LargeListArray, ::arrow::LargeListArray>(went, came);
  }
  if (from == Type::MAP && to == Type::LARGE_LIST) {
    return compare_lists<::arrow::MapArray, ::arrow::LargeListArray>(went, came);
  }
  if (from == Type::STRUCT && to == Type::STRUCT) return compare_structs(went, came);
  if (from == Type::DATE32 && to == Type::TIMESTAMP) {
    return compare_dates<::arrow::Date32Type>(went, came, std::int64_t{24} * 60 * 60);
  }
  if (from == Type::DATE64 && to == Type::TIMESTAMP) {
    return compare_dates<::arrow::Date64Type>(went, came, 1);
  }
  if (from == Type::NA && to == Type::DOUBLE) {
    return came.null_count() == came.length() ? std::nullopt : Row(0);
  }
  if (from == Type::DURATION && to == Type::INT64) {
    return compare_as_they_are(*counts_of(went), came);
  }
  return compare_as_they_are(went, came);
}

}  // namespace numera::tools
