#pragma once

#include <arrow/type.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// Element `index` of a text array without offset.
template <class Offset>
std::string_view text_at(const ::arrow::ArrayData& texts, std::int64_t index) {
  const auto begin = load<Offset>(*texts.buffers[1], index);
  const auto end = load<Offset>(*texts.buffers[1], index + 1);
  if (begin == end) return {};
  return {reinterpret_cast<const char*>(texts.buffers[2]->data()) + begin,
          static_cast<size_t>(end - begin)};
}

template <class Offset, class TextOf>
BufferResult text_offsets(Work& work, const ::arrow::ArrayData& slots, const TextOf& text_of) {
  ARROW_ASSIGN_OR_RAISE(auto offsets, allocate(work, slots.length + 1, sizeof(Offset)));
  std::int64_t size = 0;
  store<Offset>(*offsets, 0, 0);
  for (std::int64_t i = 0; i < slots.length; ++i) {
    if (!is_null(slots, i)) size += static_cast<std::int64_t>(text_of(i).size());
    if (sizeof(Offset) == sizeof(std::int32_t)) ARROW_RETURN_NOT_OK(work.check_reach(size));
    store<Offset>(*offsets, i + 1, static_cast<Offset>(size));
  }
  return offsets;
}

template <class Offset, class TextOf>
DataResult make_text_of(Work& work, std::shared_ptr<::arrow::DataType> type,
                        const ::arrow::ArrayData& slots, const TextOf& text_of) {
  ARROW_ASSIGN_OR_RAISE(auto offsets, (text_offsets<Offset>(work, slots, text_of)));
  ARROW_ASSIGN_OR_RAISE(auto bytes, allocate(work, load<Offset>(*offsets, slots.length), 1));
  std::uint8_t* to = bytes->mutable_data();
  for (std::int64_t i = 0; i < slots.length; ++i) {
    if (is_null(slots, i)) continue;
    const std::string_view text = text_of(i);
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    to += text.size();
  }
  return ::arrow::ArrayData::Make(std::move(type), slots.length,
                                  {slots.buffers[0], std::move(offsets), std::move(bytes)},
                                  slots.null_count);
}

/// Text or bytes with the validity of `slots`, which has no offset. `text_of(i)` is called twice
/// per non-null element, and never for nulls. The view that it returns lives until the next call.
template <class TextOf>
DataResult make_text(Work& work, std::shared_ptr<::arrow::DataType> narrow,
                     std::shared_ptr<::arrow::DataType> wide, const ::arrow::ArrayData& slots,
                     TextOf text_of) {
  if (work.wide) return make_text_of<std::int64_t>(work, std::move(wide), slots, text_of);
  return make_text_of<std::int32_t>(work, std::move(narrow), slots, text_of);
}

}  // namespace numera::extras::intake
