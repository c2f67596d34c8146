#include <arrow/type.h>

#include <utility>

#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/rules.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

/// `length` + 1 offsets from `array.offset` on, as they stand. An array without elements may lack
/// them.
template <class Offset>
BufferResult cut_offsets(Work& work, const ::arrow::ArrayData& array) {
  constexpr std::int64_t kWidth = sizeof(Offset);
  const auto& offsets = array.buffers[1];
  if (offsets != nullptr && offsets->size() >= kWidth) {
    return cut_elements(offsets, array.offset, array.length + 1, kWidth);
  }
  ARROW_ASSIGN_OR_RAISE(auto made, allocate(work, 1, kWidth));
  store<Offset>(*made, 0, 0);
  return made;
}

/// The same offsets, but beginning at 0.
template <class Offset>
BufferResult rebase_offsets(Work& work, std::shared_ptr<::arrow::Buffer> offsets,
                            std::int64_t length) {
  const auto first = load<Offset>(*offsets, 0);
  if (first == 0) return offsets;
  ARROW_ASSIGN_OR_RAISE(auto rebased, allocate(work, length + 1, sizeof(Offset)));
  for (std::int64_t i = 0; i <= length; ++i) {
    store<Offset>(*rebased, i, static_cast<Offset>(load<Offset>(*offsets, i) - first));
  }
  return rebased;
}

Data cut_child(const Data& child, std::int64_t offset, std::int64_t length) {
  if (offset == 0 && length == child->length) return child;
  return child->Slice(offset, length);
}

/// The entries of a map are no level of their own: keys and items have paths.
DataResult take_entries(Work& work, const std::string& path, const ::arrow::ArrayData& entries) {
  static constexpr const char* kPlaces[] = {"{key}", "{item}"};
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, entries));
  for (size_t i = 0; i < 2; ++i) {
    const Data cut = cut_child(entries.child_data[i], entries.offset, entries.length);
    ARROW_ASSIGN_OR_RAISE(out->child_data[i], take_in_data(work, path + kPlaces[i], *cut));
  }
  out->type = with_child_types(entries.type, *out);
  return out;
}

}  // namespace

DataResult take_null(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  return without_offset(work, array);
}

DataResult take_bits(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(out->buffers[1],
                        cut_bits(work, array.buffers[1], array.offset, array.length));
  return out;
}

DataResult take_fixed_width(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  const auto& type = static_cast<const ::arrow::FixedWidthType&>(*array.type);
  out->buffers[1] =
      cut_elements(array.buffers[1], array.offset, array.length, type.bit_width() / 8);
  return out;
}

template <class Offset>
DataResult take_text(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(out->buffers[1], cut_offsets<Offset>(work, array));
  return out;
}

template DataResult take_text<std::int32_t>(Work&, const std::string&, const ::arrow::ArrayData&);
template DataResult take_text<std::int64_t>(Work&, const std::string&, const ::arrow::ArrayData&);

template <class Offset>
DataResult take_list(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(auto offsets, cut_offsets<Offset>(work, array));
  const std::int64_t first = load<Offset>(*offsets, 0);
  const std::int64_t last = load<Offset>(*offsets, array.length);
  ARROW_ASSIGN_OR_RAISE(out->buffers[1],
                        rebase_offsets<Offset>(work, std::move(offsets), array.length));
  const Data cut = cut_child(array.child_data[0], first, last - first);
  ARROW_ASSIGN_OR_RAISE(out->child_data[0], array.type->id() == ::arrow::Type::MAP
                                                ? take_entries(work, path, *cut)
                                                : take_in_data(work, path + "[]", *cut));
  out->type = with_child_types(array.type, *out);
  return out;
}

template DataResult take_list<std::int32_t>(Work&, const std::string&, const ::arrow::ArrayData&);
template DataResult take_list<std::int64_t>(Work&, const std::string&, const ::arrow::ArrayData&);

DataResult take_struct(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  for (size_t i = 0; i < array.child_data.size(); ++i) {
    const Data cut = cut_child(array.child_data[i], array.offset, array.length);
    const std::string& name = array.type->field(static_cast<int>(i))->name();
    ARROW_ASSIGN_OR_RAISE(out->child_data[i], take_in_data(work, field_path(path, name), *cut));
  }
  out->type = with_child_types(array.type, *out);
  return out;
}

}  // namespace numera::extras::intake
