#include "numera/extras/inspect/one_line.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

#include "numera/extras/inspect/number.h"
#include "numera/extras/inspect/rows.h"
#include "numera/extras/inspect/text.h"
#include "numera/extras/inspect/value.h"
#include "numera/host/string_array.h"

namespace numera::extras::inspect {
namespace {

constexpr size_t kLeastTextColumns = 12;

struct Limits {
  size_t max_elements;
  size_t max_columns;
};

size_t less(size_t columns, size_t taken) { return columns > taken ? columns - taken : 0; }

// "[a b; c ... 7 more]". `item(position, columns)` gives the text at a position, cut to `columns`
// if it can be cut. `separator(position)` precedes it.
template <class Item, class Separator>
std::string list_text(size_t count, const Limits& limits, Item item, Separator separator) {
  const auto rest = [count](size_t listed) {
    return listed == count ? "]" : "... " + std::to_string(count - listed) + " more]";
  };
  std::string list = "[";
  size_t used = 1;
  size_t kept_size = list.size();  // the largest size at which the end of the list still fits
  size_t kept = 0;
  for (size_t i = 0; i < std::min(count, limits.max_elements); ++i) {
    const std::string end = (i + 1 < count ? " " : "") + rest(i + 1);
    const size_t room = less(limits.max_columns, used + end.size());
    std::string text = i == 0 ? "" : std::string(separator(i));
    text += item(i, i == 0 ? std::max(room, kLeastTextColumns) : limits.max_columns);
    const size_t taken = columns(text);
    list += text;
    used += taken;
    if (i == 0 || taken <= room) {
      kept_size = list.size();
      kept = i + 1;
    }
    if (used >= limits.max_columns) break;
  }
  list.resize(kept_size);
  if (kept > 0 && kept < count) list += ' ';
  return list + rest(kept);
}

// The code units of one row of a char array, as many as `max_columns` may need.
std::u16string row_units(std::u16string_view units, std::span<const size_t> dims, size_t row,
                         size_t max_columns) {
  const size_t height = dims[0];
  const size_t page = height * dims[1];
  // A column shows at most two units, a surrogate pair. One more unit tells that the text is cut.
  const size_t shown = max_columns < dims[1] / 2 ? 2 * max_columns + 1 : dims[1];
  std::u16string text;
  for (size_t column = 0; column < shown; ++column) {
    text += units[row / height * page + column * height + row % height];
  }
  return text;
}

std::string chars_text(const hxArray* array, const Limits& limits) {
  const std::u16string_view units = code_units(array);
  const std::span<const size_t> dims = hxGetDimensions(array);
  if (units.empty() || is_row(dims)) {
    return quote(units, std::max(limits.max_columns, kLeastTextColumns));
  }
  return list_text(
      units.size() / dims[1], limits,
      [&](size_t row, size_t max_columns) {
        return quote(row_units(units, dims, row, max_columns), max_columns);
      },
      [](size_t) { return " "; });
}

std::string numbers_text(const hxArray* array, const Limits& limits) {
  const Rows rows(hxGetDimensions(array));
  return list_text(
      hxGetNumberOfElements(array), limits,
      [&](size_t position, size_t) { return number_text(array, rows.element_at(position)); },
      [&](size_t position) { return rows.starts_row(position) ? "; " : " "; });
}

std::string strings_text(const hxArray* array, const Limits& limits) {
  const hxStringArray& strings = hxGetStringArray(array);
  const Rows rows(hxGetDimensions(array));
  return list_text(
      hxGetNumberOfElements(array), limits,
      [&](size_t position, size_t max_columns) {
        const std::optional<std::u16string_view> text = strings.element(rows.element_at(position));
        return text ? quote(*text, max_columns) : "<missing>";
      },
      [&](size_t position) { return rows.starts_row(position) ? "; " : " "; });
}

}  // namespace

std::string one_line(const hxArray* array, const char* null_text, size_t max_elements,
                     size_t max_columns) {
  if (array == nullptr) return null_text;
  std::string head = class_text(array) + " " + size_text(array);
  const Limits limits{max_elements, less(max_columns, columns(head) + 1)};
  switch (content_of(array)) {
    case Content::kNumbers:
      return head + " " + numbers_text(array, limits);
    case Content::kChars:
      return head + " " + chars_text(array, limits);
    case Content::kStrings:
      return head + " " + strings_text(array, limits);
    case Content::kCells:
    case Content::kFields:
    case Content::kNothing:
      break;
  }
  return head;
}

}  // namespace numera::extras::inspect
