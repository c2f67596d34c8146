#include "numera/extras/intake/behind_nulls.h"

#include <arrow/extension_type.h>
#include <arrow/type.h>
#include <arrow/util/bit_util.h>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "numera/extras/intake/fixed_values.h"
#include "numera/extras/intake/memory.h"

namespace numera::extras::intake {
namespace {

using ::arrow::Type;

/// Per array element: whether it is shown, that is, whether a non-null parent slot refers to it.
using Shown = std::vector<bool>;

DataResult mend(const Work& work, const Data& array, const ::arrow::DataType& type,
                const Shown& shown);

Shown all_of(const ::arrow::ArrayData& array) {
  return Shown(static_cast<size_t>(array.length), true);
}

/// The elements that are shown and not null.
Shown without_nulls(const ::arrow::ArrayData& array, Shown shown) {
  if (array.buffers[0] == nullptr) return shown;
  for (size_t i = 0; i < shown.size(); ++i) {
    const auto bit = static_cast<std::uint64_t>(array.offset) + i;
    shown[i] = shown[i] && ::arrow::bit_util::GetBit(array.buffers[0]->data(), bit);
  }
  return shown;
}

/// The child elements that the given slots refer to. `range_of(i)` is the begin and the size of the
/// range of slot i. Both may be out of bounds: offsets are not validated yet.
template <class RangeOf>
Shown elements_of(const ::arrow::ArrayData& lists, const Shown& slots, RangeOf range_of) {
  const std::int64_t count = lists.child_data[0]->length;
  // Per element: the number of ranges that begin there minus the number that end there.
  std::vector<std::int64_t> steps(static_cast<size_t>(count) + 1, 0);
  for (size_t i = 0; i < slots.size(); ++i) {
    if (!slots[i]) continue;
    const auto [first, size] = range_of(lists.offset + static_cast<std::int64_t>(i));
    const std::int64_t begin = std::clamp<std::int64_t>(first, 0, count);
    ++steps[static_cast<size_t>(begin)];
    --steps[static_cast<size_t>(begin + std::clamp<std::int64_t>(size, 0, count - begin))];
  }
  Shown elements(static_cast<size_t>(count));
  std::int64_t ranges = 0;
  for (size_t i = 0; i < elements.size(); ++i) {
    ranges += steps[i];
    elements[i] = ranges > 0;
  }
  return elements;
}

using ElementRange = std::pair<std::int64_t, std::int64_t>;

template <class Offset>
Shown elements_of_lists(const ::arrow::ArrayData& lists, const Shown& slots) {
  return elements_of(lists, slots, [&](std::int64_t i) {
    const std::int64_t begin = load<Offset>(*lists.buffers[1], i);
    const std::int64_t end = load<Offset>(*lists.buffers[1], i + 1);
    return begin < 0 || end < begin ? ElementRange(0, 0) : ElementRange(begin, end - begin);
  });
}

template <class Offset>
Shown elements_of_views(const ::arrow::ArrayData& views, const Shown& slots) {
  return elements_of(views, slots, [&](std::int64_t i) {
    return ElementRange(load<Offset>(*views.buffers[1], i), load<Offset>(*views.buffers[2], i));
  });
}

Shown elements_of_fixed_size(const ::arrow::ArrayData& lists, const ::arrow::DataType& type,
                             const Shown& slots) {
  const std::int64_t size = static_cast<const ::arrow::FixedSizeListType&>(type).list_size();
  return elements_of(lists, slots, [size](std::int64_t i) { return ElementRange(i * size, size); });
}

/// The shown elements of a list's only child; all of them if offsets or sizes are missing.
Shown shown_elements(const ::arrow::ArrayData& lists, const ::arrow::DataType& type,
                     const Shown& slots) {
  for (size_t i = 1; i < lists.buffers.size(); ++i) {
    if (lists.buffers[i] == nullptr) return all_of(*lists.child_data[0]);
  }
  switch (type.id()) {
    case Type::FIXED_SIZE_LIST:
      return elements_of_fixed_size(lists, type, slots);
    case Type::LARGE_LIST:
      return elements_of_lists<std::int64_t>(lists, slots);
    case Type::LIST_VIEW:
      return elements_of_views<std::int32_t>(lists, slots);
    case Type::LARGE_LIST_VIEW:
      return elements_of_views<std::int64_t>(lists, slots);
    default:
      return elements_of_lists<std::int32_t>(lists, slots);
  }
}

/// Whether arrays of the type are searched. Run-end encoded arrays are not: flags for all their
/// elements may not fit into memory. All other arrays have at least one bit of buffer per element.
bool may_hold_bad_values(const ::arrow::DataType& type) {
  switch (type.id()) {
    case Type::DICTIONARY:
      return may_hold_bad_values(*static_cast<const ::arrow::DictionaryType&>(type).value_type());
    case Type::EXTENSION:
      return may_hold_bad_values(*static_cast<const ::arrow::ExtensionType&>(type).storage_type());
    case Type::RUN_END_ENCODED:
      return false;
    case Type::FIXED_SIZE_LIST:
      if (static_cast<const ::arrow::FixedSizeListType&>(type).list_size() <= 0) return false;
      break;
    default:
      if (has_bad_values(type.id())) return true;
  }
  return std::ranges::any_of(type.fields(),
                             [](const auto& field) { return may_hold_bad_values(*field->type()); });
}

/// The array with repaired children, or `array` itself if no child changes. `shown_of(child)` tells
/// which elements of the child are shown.
template <class ShownOf>
DataResult with_children(const Work& work, const Data& array, ShownOf shown_of) {
  Data mended = array;
  for (size_t i = 0; i < array->child_data.size(); ++i) {
    const Data& child = array->child_data[i];
    if (!may_hold_bad_values(*child->type)) continue;
    ARROW_ASSIGN_OR_RAISE(Data other, mend(work, child, *child->type, shown_of(*child)));
    if (other == child) continue;
    if (mended == array) mended = array->Copy();
    mended->child_data[i] = std::move(other);
  }
  return mended;
}

DataResult mend_struct(const Work& work, const Data& array, const Shown& shown) {
  const Shown slots = without_nulls(*array, shown);
  return with_children(work, array, [&](const ::arrow::ArrayData& field) {
    Shown elements(static_cast<size_t>(field.length), false);
    std::copy(slots.begin(), slots.end(), elements.begin() + array->offset);
    return elements;
  });
}

DataResult mend_dictionary(const Work& work, const Data& array) {
  const Data& values = array->dictionary;
  ARROW_ASSIGN_OR_RAISE(Data mended, mend(work, values, *values->type, all_of(*values)));
  if (mended == values) return array;
  Data out = array->Copy();
  out->dictionary = std::move(mended);
  return out;
}

DataResult mend(const Work& work, const Data& array, const ::arrow::DataType& type,
                const Shown& shown) {
  switch (type.id()) {
    case Type::STRUCT:
      return mend_struct(work, array, shown);
    case Type::LIST:
    case Type::LARGE_LIST:
    case Type::LIST_VIEW:
    case Type::LARGE_LIST_VIEW:
    case Type::FIXED_SIZE_LIST:
    case Type::MAP:
      return with_children(work, array, [&](const ::arrow::ArrayData&) {
        return shown_elements(*array, type, without_nulls(*array, shown));
      });
    case Type::DICTIONARY:
      return mend_dictionary(work, array);
    case Type::EXTENSION:
      return mend(work, array, *static_cast<const ::arrow::ExtensionType&>(type).storage_type(),
                  shown);
    default:
      return with_zero_for_bad_values(work, array, type, shown);
  }
}

}  // namespace

DataResult without_bad_values_behind_nulls(const Work& work, const Data& array) {
  if (!may_hold_bad_values(*array->type)) return array;
  return mend(work, array, *array->type, all_of(*array));
}

}  // namespace numera::extras::intake
