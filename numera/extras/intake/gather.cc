#include "numera/extras/intake/gather.h"

#include <arrow/type.h>
#include <arrow/util/bit_util.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "numera/extras/intake/memory.h"
#include "numera/format/layout.h"

namespace numera::extras::intake {
namespace {

using ::arrow::Type;
using format::Layout;
using format::layout_of;
using Places = std::span<const std::int64_t>;

/// A bitmap whose bit i is `is_set(places[i])`. `unset` receives the number of bits that are 0.
template <class IsSet>
BufferResult make_bits(Work& work, Places places, IsSet is_set, std::int64_t* unset) {
  const auto count = static_cast<std::int64_t>(places.size());
  ARROW_ASSIGN_OR_RAISE(auto bits, allocate(work, ::arrow::bit_util::BytesForBits(count), 1));
  std::fill_n(bits->mutable_data(), bits->size(), std::uint8_t{0});
  *unset = 0;
  for (std::int64_t i = 0; i < count; ++i) {
    const bool set = is_set(places[static_cast<size_t>(i)]);
    if (set) ::arrow::bit_util::SetBit(bits->mutable_data(), i);
    *unset += !set;
  }
  return bits;
}

/// The result with its validity bitmap and as many buffers as `values`. The other buffers are null.
DataResult make_slots(Work& work, const ::arrow::ArrayData& values, Places places) {
  auto out = std::make_shared<::arrow::ArrayData>(values.type,
                                                  static_cast<std::int64_t>(places.size()), 0);
  out->buffers.resize(values.buffers.size());
  std::int64_t nulls = 0;
  const auto is_valid = [&](std::int64_t place) {
    return place != kNowhere && !is_null(values, place);
  };
  ARROW_ASSIGN_OR_RAISE(auto validity, make_bits(work, places, is_valid, &nulls));
  if (nulls > 0) out->buffers[0] = std::move(validity);
  out->null_count = nulls;
  return out;
}

/// Values of the null type have no memory.
::arrow::Status gather_nothing(Work& /*work*/, const ::arrow::ArrayData& /*values*/, Places places,
                               ::arrow::ArrayData* out) {
  out->buffers[0] = nullptr;
  out->null_count = static_cast<std::int64_t>(places.size());
  return ::arrow::Status::OK();
}

::arrow::Status gather_bits(Work& work, const ::arrow::ArrayData& values, Places places,
                            ::arrow::ArrayData* out) {
  std::int64_t unset = 0;
  const auto is_set = [&](std::int64_t place) {
    return place != kNowhere &&
           ::arrow::bit_util::GetBit(values.buffers[1]->data(), static_cast<std::uint64_t>(place));
  };
  ARROW_ASSIGN_OR_RAISE(out->buffers[1], make_bits(work, places, is_set, &unset));
  return ::arrow::Status::OK();
}

::arrow::Status gather_fixed_width(Work& work, const ::arrow::ArrayData& values, Places places,
                                   ::arrow::ArrayData* out) {
  const auto width =
      static_cast<size_t>(static_cast<const ::arrow::FixedWidthType&>(*values.type).byte_width());
  ARROW_ASSIGN_OR_RAISE(
      out->buffers[1],
      allocate(work, out->length, std::max<std::int64_t>(1, static_cast<std::int64_t>(width))));
  std::uint8_t* to = out->buffers[1]->mutable_data();
  for (const std::int64_t place : places) {
    if (place == kNowhere) {
      std::memset(to, 0, width);
    } else if (width > 0) {
      std::memcpy(to, values.buffers[1]->data() + static_cast<size_t>(place) * width, width);
    }
    to += width;
  }
  return ::arrow::Status::OK();
}

/// The range given by the offsets of an element; empty if the element is null.
template <class Offset>
std::pair<std::int64_t, std::int64_t> range_of(const ::arrow::ArrayData& values,
                                               std::int64_t place) {
  if (place == kNowhere || is_null(values, place)) return {0, 0};
  return {load<Offset>(*values.buffers[1], place), load<Offset>(*values.buffers[1], place + 1)};
}

template <class Offset>
std::int64_t sum_of_ranges(const ::arrow::ArrayData& values, Places places) {
  std::int64_t sum = 0;
  for (const std::int64_t place : places) {
    const auto [begin, end] = range_of<Offset>(values, place);
    if (__builtin_add_overflow(sum, end - begin, &sum)) {
      return std::numeric_limits<std::int64_t>::max();
    }
  }
  return sum;
}

template <class From, class To>
BufferResult gather_offsets(Work& work, const ::arrow::ArrayData& values, Places places) {
  const auto count = static_cast<std::int64_t>(places.size());
  ARROW_ASSIGN_OR_RAISE(auto offsets, allocate(work, count + 1, sizeof(To)));
  std::int64_t sum = 0;
  store<To>(*offsets, 0, 0);
  for (std::int64_t i = 0; i < count; ++i) {
    const auto [begin, end] = range_of<From>(values, places[static_cast<size_t>(i)]);
    sum += end - begin;
    store<To>(*offsets, i + 1, static_cast<To>(sum));
  }
  return offsets;
}

template <class From, class To>
::arrow::Status gather_text(Work& work, const ::arrow::ArrayData& values, Places places,
                            ::arrow::ArrayData* out) {
  const std::int64_t size = sum_of_ranges<From>(values, places);
  if (sizeof(To) == sizeof(std::int32_t)) ARROW_RETURN_NOT_OK(work.check_reach(size));
  ARROW_ASSIGN_OR_RAISE(out->buffers[1], (gather_offsets<From, To>(work, values, places)));
  ARROW_ASSIGN_OR_RAISE(out->buffers[2], allocate(work, size, 1));
  std::uint8_t* to = out->buffers[2]->mutable_data();
  for (const std::int64_t place : places) {
    const auto [begin, end] = range_of<From>(values, place);
    if (begin == end) continue;
    std::memcpy(to, values.buffers[2]->data() + begin, static_cast<size_t>(end - begin));
    to += end - begin;
  }
  return ::arrow::Status::OK();
}

template <class From, class To>
::arrow::Status gather_lists(Work& work, const ::arrow::ArrayData& values, Places places,
                             ::arrow::ArrayData* out) {
  const std::int64_t size = sum_of_ranges<From>(values, places);
  if (sizeof(To) == sizeof(std::int32_t)) ARROW_RETURN_NOT_OK(work.check_reach(size));
  ARROW_ASSIGN_OR_RAISE(out->buffers[1], (gather_offsets<From, To>(work, values, places)));
  std::vector<std::int64_t> elements;
  elements.reserve(static_cast<size_t>(size));
  for (const std::int64_t place : places) {
    const auto [begin, end] = range_of<From>(values, place);
    for (std::int64_t i = begin; i < end; ++i) elements.push_back(i);
  }
  out->child_data.resize(1);
  ARROW_ASSIGN_OR_RAISE(out->child_data[0], gather(work, *values.child_data[0], elements));
  return ::arrow::Status::OK();
}

::arrow::Status gather_children(Work& work, const ::arrow::ArrayData& values, Places places,
                                ::arrow::ArrayData* out) {
  for (const Data& child : values.child_data) {
    ARROW_ASSIGN_OR_RAISE(Data gathered, gather(work, *child, places));
    out->child_data.push_back(std::move(gathered));
  }
  return ::arrow::Status::OK();
}

/// Arrow has no map type with 64-bit offsets.
::arrow::Status gather_maps(Work& work, const ::arrow::ArrayData& values, Places places,
                            ::arrow::ArrayData* out) {
  const std::int64_t size = sum_of_ranges<std::int32_t>(values, places);
  if (size > work.narrow_limit) {
    return ::arrow::Status::Invalid("Map: found ", size, " entries, expected at most ",
                                    work.narrow_limit, ", because maps have 32-bit offsets.");
  }
  return gather_lists<std::int32_t, std::int32_t>(work, values, places, out);
}

using Gather = ::arrow::Status (*)(Work&, const ::arrow::ArrayData&, Places, ::arrow::ArrayData*);

/// How to gather values of a type that the host accepts.
Gather gather_of(const ::arrow::DataType& type, bool wide) {
  switch (layout_of(type.id())) {
    case Layout::kNoHostForm:
      break;
    case Layout::kNoValues:
      return gather_nothing;
    case Layout::kBits:
      return gather_bits;
    case Layout::kFixedWidth:
      return gather_fixed_width;
    case Layout::kText:
      return wide ? gather_text<std::int32_t, std::int64_t>
                  : gather_text<std::int32_t, std::int32_t>;
    case Layout::kLargeText:
      return gather_text<std::int64_t, std::int64_t>;
    case Layout::kList:
      return wide ? gather_lists<std::int32_t, std::int64_t>
                  : gather_lists<std::int32_t, std::int32_t>;
    case Layout::kLargeList:
      return gather_lists<std::int64_t, std::int64_t>;
    case Layout::kMap:
      return gather_maps;
    case Layout::kStruct:
      return gather_children;
  }
  return nullptr;
}

std::shared_ptr<::arrow::DataType> widened(const std::shared_ptr<::arrow::DataType>& type) {
  switch (type->id()) {
    case Type::STRING:
      return ::arrow::large_utf8();
    case Type::BINARY:
      return ::arrow::large_binary();
    case Type::LIST:
      return ::arrow::large_list(type->field(0));
    default:
      return type;
  }
}

}  // namespace

DataResult gather(Work& work, const ::arrow::ArrayData& values, Places places) {
  ARROW_ASSIGN_OR_RAISE(Data out, make_slots(work, values, places));
  out->dictionary = values.dictionary;
  ARROW_RETURN_NOT_OK(gather_of(*values.type, work.wide)(work, values, places, out.get()));
  out->type = with_child_types(work.wide ? widened(values.type) : values.type, *out);
  return out;
}

}  // namespace numera::extras::intake
