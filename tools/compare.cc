#include "tools/compare.h"

#include <arrow/array/util.h>
#include <arrow/compare.h>
#include <arrow/type_traits.h>

#include <algorithm>
#include <cmath>

#include "tools/compare_ranges.h"

namespace numera::tools {
namespace {

using ::arrow::Array;
using ::arrow::ArrayData;
using ::arrow::Type;
using Row = std::optional<std::int64_t>;

bool same(Rows rows);

bool same_integers(const Rows& rows) {
  return same_fixed(rows, [](std::int64_t) { return false; });
}

template <class Float>
bool same_floats(const Rows& rows) {
  const Values<Float> went(rows.went);
  const Values<Float> came(rows.came);
  return same_fixed(rows, [&](std::int64_t row) {
    if (std::isnan(went[row])) return std::isnan(came[row]);
    return went[row] == came[row] && std::signbit(went[row]) == std::signbit(came[row]);
  });
}

bool same_days(const Rows& rows) {
  constexpr std::int64_t kSecondsPerDay = std::int64_t{24} * 60 * 60;
  const Values<std::int32_t> days(rows.went);
  const Values<std::int64_t> seconds(rows.came);
  return same_rows(rows, [&](auto row) { return days[row] * kSecondsPerDay == seconds[row]; });
}

/// Nulls return as doubles that are all null.
bool same_nulls(const Rows& rows) {
  const Bits valid = rows.came.bits(0);
  return valid.bytes != nullptr && same_runs(rows, [&](std::int64_t first, std::int64_t end) {
           using ::arrow::internal::CountSetBits;
           return CountSetBits(valid.bytes, valid.start + first, end - first) == 0;
         });
}

/// Compares the texts behind nulls too at first: they are often equal, and one range is quicker.
template <class Offsets>
bool same_texts(const Rows& rows, const Offsets& offsets, const std::uint8_t* went) {
  const std::uint8_t* const came = rows.came.buffer(2);
  const auto same_part = [&](std::int64_t from, std::int64_t to, std::int64_t length) {
    return same_bytes(went + from, came + to, length);
  };
  return same_contents({rows.went, rows.came, rows.length, {}}, offsets, same_part) ||
         (rows.compared.bytes != nullptr && same_contents(rows, offsets, same_part));
}

template <class Offset>
bool same_texts(const Rows& rows) {
  return same_texts(rows, Values<Offset>(rows.went), rows.went.buffer(2));
}

/// The offsets of values of one width.
struct EvenOffsets {
  std::int64_t start;
  std::int64_t width;

  std::int64_t operator[](std::int64_t row) const { return (start + row) * width; }
};

bool same_fixed_texts(const Rows& rows) {
  const EvenOffsets offsets = {rows.went.start, rows.went.array.type->byte_width()};
  return same_texts(rows, offsets, rows.went.buffer(1));
}

template <class Offset>
bool same_lists(const Rows& rows) {
  const ArrayData& went = *rows.went.array.child_data[0];
  const ArrayData& came = *rows.came.array.child_data[0];
  const Values<Offset> offsets(rows.went);
  return same_contents(rows, offsets, [&](std::int64_t from, std::int64_t to, std::int64_t length) {
    return same({Side(went, from), Side(came, to), length, {}});
  });
}

/// Compares the fields of valid structs only.
bool same_structs(const Rows& rows) {
  const auto same_field = [&](const auto& went, const auto& came) {
    return same(
        {Side(*went, rows.went.start), Side(*came, rows.came.start), rows.length, rows.compared});
  };
  return std::ranges::equal(rows.went.array.child_data, rows.came.array.child_data, same_field);
}

std::int64_t code_at(const Side& side, std::int64_t row) {
  const int width = side.array.type->byte_width();
  std::int64_t code = 0;
  std::memcpy(&code, side.buffer(1) + (side.start + row) * width, static_cast<size_t>(width));
  return code;
}

/// Equal codes are equal texts if the dictionaries are equal. A dictionary that is longer than the
/// range is not compared, because there can be as many ranges as rows.
bool same_categories(const Rows& rows) {
  const auto& [went, came, length, valid] = rows;
  const ArrayData& texts = *went.array.dictionary;
  const ArrayData& other_texts = *came.array.dictionary;
  const auto same_row = [&](std::int64_t row) {
    return same(
        {Side(texts, code_at(rows.went, row)), Side(other_texts, code_at(rows.came, row)), 1, {}});
  };
  const bool same_codes = went.array.type->byte_width() == came.array.type->byte_width() &&
                          texts.length == other_texts.length && texts.length <= length &&
                          same({Side(texts, 0), Side(other_texts, 0), texts.length, {}});
  return same_codes ? same_fixed(rows, same_row) : same_rows(rows, same_row);
}

/// Compares values of one type. Values of two types differ.
bool same_by_arrow(const Rows& rows) {
  const auto options = ::arrow::EqualOptions::Defaults().nans_equal(true).signed_zeros_equal(false);
  const auto went = ::arrow::MakeArray(rows.went.array.Copy());
  const auto came = ::arrow::MakeArray(rows.came.array.Copy());
  const std::int64_t start = rows.went.start - went->offset();
  const std::int64_t came_start = rows.came.start - came->offset();
  return same_runs(rows, [&](std::int64_t first, std::int64_t end) {
    return went->RangeEquals(*came, start + first, start + end, came_start + first, options);
  });
}

using Same = bool (*)(const Rows&);

/// The comparison of the valid rows of two types, or null if these have none of their own.
Same comparison_of(const Side& went, const Side& came) {
  const Type::type from = went.type();
  const Type::type to = came.type();
  if (::arrow::is_large_binary_like(to)) {
    if (::arrow::is_binary_like(from)) return same_texts<std::int32_t>;
    if (::arrow::is_large_binary_like(from)) return same_texts<std::int64_t>;
    if (from == Type::FIXED_SIZE_BINARY) return same_fixed_texts;
  }
  if (to == Type::LARGE_LIST) {
    if (from == Type::LIST || from == Type::MAP) return same_lists<std::int32_t>;
    if (from == Type::LARGE_LIST) return same_lists<std::int64_t>;
  }
  if (from == Type::DATE32 && to == Type::TIMESTAMP) return same_days;
  if (from == Type::DATE64 && to == Type::TIMESTAMP) return same_integers;
  if (from == Type::DURATION && to == Type::INT64) return same_integers;
  if (from != to) return nullptr;
  if (from == Type::STRUCT) return same_structs;
  if (from == Type::DICTIONARY) return same_categories;
  if (from == Type::BOOL)
    return [](const Rows& rows) { return same_bits(rows, rows.went.bits(1), rows.came.bits(1)); };
  if (from == Type::FLOAT) return same_floats<float>;
  if (from == Type::DOUBLE) return same_floats<double>;
  const bool integers = ::arrow::is_integer(from) || ::arrow::is_temporal(from);
  return integers && went.array.type->Equals(*came.array.type) ? same_integers : nullptr;
}

/// The validity of rows. The code of a null entry of a dictionary is null: the host has no such
/// entries, so it returns as a null.
Bits validity_of(const Side& side, std::int64_t length) {
  Bits valid = side.bits(0);
  if (side.type() != Type::DICTIONARY || side.array.dictionary->GetNullCount() == 0) return valid;
  const auto bytes = static_cast<size_t>(::arrow::bit_util::BytesForBits(length));
  const auto bits = std::make_shared<std::vector<std::uint8_t>>(bytes);
  for (std::int64_t row = 0; row < length; ++row) {
    const bool is_valid =
        valid.bytes == nullptr ||
        ::arrow::bit_util::GetBit(valid.bytes, static_cast<std::uint64_t>(valid.start + row));
    if (!is_valid || side.array.dictionary->IsNull(code_at(side, row))) continue;
    ::arrow::bit_util::SetBit(bits->data(), row);
  }
  return {bits->data(), 0, bits};
}

bool same(Rows rows) {
  if (rows.length == 0) return true;
  if (rows.went.type() == Type::NA && rows.came.type() == Type::DOUBLE) return same_nulls(rows);
  const Same same_valid_rows = comparison_of(rows.went, rows.came);
  if (same_valid_rows == nullptr) return same_by_arrow(rows);
  const Bits valid = validity_of(rows.went, rows.length);
  if (!same_bits(rows, valid, validity_of(rows.came, rows.length))) return false;
  rows.compared = both(rows.compared, valid, rows.length);
  return same_valid_rows(rows);
}

}  // namespace

Row first_differing_row(const Array& went, const Array& came) {
  const std::int64_t length = went.length();
  if (length != came.length()) return std::min(length, came.length());
  const auto same_in = [&](std::int64_t first, std::int64_t end) {
    return same({Side(*went.data(), first), Side(*came.data(), first), end - first, {}});
  };
  if (same_in(0, length)) return std::nullopt;
  std::int64_t first = 0;  // all rows before are the same
  for (std::int64_t end = length; end - first > 1;) {
    const std::int64_t middle = first + (end - first) / 2;
    (same_in(first, middle) ? first : end) = middle;
  }
  return first;
}

}  // namespace numera::tools
