#include <arrow/type.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

#include "numera/extras/intake/gather.h"
#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

struct Range {
  std::int64_t begin;
  std::int64_t size;
};

/// The element range of every view. A null view gets an empty range, whatever its offset and size.
template <class Offset>
std::vector<Range> ranges_of(const ::arrow::ArrayData& views, const ::arrow::ArrayData& slots) {
  std::vector<Range> ranges(static_cast<size_t>(views.length), Range{0, 0});
  for (std::int64_t i = 0; i < views.length; ++i) {
    if (is_null(slots, i)) continue;
    ranges[static_cast<size_t>(i)] = {load<Offset>(*views.buffers[1], views.offset + i),
                                      load<Offset>(*views.buffers[2], views.offset + i)};
  }
  return ranges;
}

/// The smallest range that covers all `ranges`.
Range span_of(const std::vector<Range>& ranges) {
  std::int64_t begin = std::numeric_limits<std::int64_t>::max();
  std::int64_t end = 0;
  for (const Range& range : ranges) {
    if (range.size == 0) continue;
    begin = std::min(begin, range.begin);
    end = std::max(end, range.begin + range.size);
  }
  return begin < end ? Range{begin, end - begin} : Range{0, 0};
}

bool follow_one_another(const std::vector<Range>& ranges, std::int64_t begin) {
  return std::ranges::all_of(ranges, [&begin](const Range& range) {
    if (range.size == 0) return true;
    const bool follows = range.begin == begin;
    begin += range.size;
    return follows;
  });
}

/// Offsets of lists of the given sizes: 64-bit if `large` or `work.wide`, else 32-bit.
template <class SizeOf>
BufferResult make_offsets(Work& work, bool large, std::int64_t length, SizeOf size_of) {
  const bool is_wide = large || work.wide;
  ARROW_ASSIGN_OR_RAISE(auto offsets, allocate(work, length + 1, is_wide ? 8 : 4));
  std::int64_t sum = 0;
  for (std::int64_t i = 0;; ++i) {
    if (!is_wide) ARROW_RETURN_NOT_OK(work.check_reach(sum));
    if (is_wide) {
      store<std::int64_t>(*offsets, i, sum);
    } else {
      store<std::int32_t>(*offsets, i, static_cast<std::int32_t>(sum));
    }
    if (i == length) return offsets;
    if (__builtin_add_overflow(sum, size_of(i), &sum)) {
      return ::arrow::Status::CapacityError(
          "List views: found more elements in total than 64 bits can count.");
    }
  }
}

BufferResult make_offsets(Work& work, bool large, const std::vector<Range>& ranges) {
  return make_offsets(work, large, std::ssize(ranges),
                      [&](std::int64_t i) { return ranges[static_cast<size_t>(i)].size; });
}

/// A list array with the validity and the field of `slots`. The field gets the type of `elements`.
Data make_list(Work& work, bool large, const ::arrow::ArrayData& slots,
               std::shared_ptr<::arrow::Buffer> offsets, Data elements) {
  const auto field = slots.type->field(0)->WithType(elements->type);
  return ::arrow::ArrayData::Make(
      large || work.wide ? ::arrow::large_list(field) : ::arrow::list(field), slots.length,
      {slots.buffers[0], std::move(offsets)}, {std::move(elements)}, slots.null_count);
}

DataResult gather_ranges(Work& work, const ::arrow::ArrayData& elements,
                         const std::vector<Range>& ranges, std::int64_t base) {
  std::vector<std::int64_t> places;
  for (const Range& range : ranges) {
    for (std::int64_t i = 0; i < range.size; ++i) places.push_back(range.begin - base + i);
  }
  return gather(work, elements, places);
}

}  // namespace

template <class Offset>
DataResult cast_list_view(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  constexpr bool kLarge = sizeof(Offset) == sizeof(std::int64_t);
  ARROW_ASSIGN_OR_RAISE(const Data slots, without_offset(work, array));
  const std::vector<Range> ranges = ranges_of<Offset>(array, *slots);
  const Range used = span_of(ranges);
  ARROW_ASSIGN_OR_RAISE(auto offsets, make_offsets(work, kLarge, ranges));
  const Data cut = array.child_data[0]->Slice(used.begin, used.size);
  ARROW_ASSIGN_OR_RAISE(Data elements, take_in_data(work, path + "[]", *cut));
  if (!follow_one_another(ranges, used.begin)) {
    ARROW_ASSIGN_OR_RAISE(elements, gather_ranges(work, *elements, ranges, used.begin));
  }
  return make_list(work, kLarge, *slots, std::move(offsets), std::move(elements));
}

template DataResult cast_list_view<std::int32_t>(Work&, const std::string&,
                                                 const ::arrow::ArrayData&);
template DataResult cast_list_view<std::int64_t>(Work&, const std::string&,
                                                 const ::arrow::ArrayData&);

DataResult cast_fixed_size_list(Work& work, const std::string& path,
                                const ::arrow::ArrayData& array) {
  const std::int64_t size = static_cast<const ::arrow::FixedSizeListType&>(*array.type).list_size();
  ARROW_ASSIGN_OR_RAISE(const Data slots, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(
      auto offsets, make_offsets(work, false, array.length, [size](std::int64_t) { return size; }));
  const Data cut = array.child_data[0]->Slice(array.offset * size, array.length * size);
  ARROW_ASSIGN_OR_RAISE(Data elements, take_in_data(work, path + "[]", *cut));
  return make_list(work, false, *slots, std::move(offsets), std::move(elements));
}

}  // namespace numera::extras::intake
