#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <arrow/util/utf8.h>

#include <string_view>
#include <utility>

#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/plain_text.h"
#include "numera/extras/intake/rules.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

/// The `length` + 1 offsets from `array.offset` on, unchanged. An array without elements may have
/// no offsets; it gets one offset of 0.
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

/// The same offsets, shifted to start at 0.
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

/// Whether a null slot holds text that is not valid UTF-8. Arrow's validation skips null slots, but
/// the host converts their text.
template <class Offset>
bool hides_bad_text(const ::arrow::ArrayData& texts) {
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  for (std::int64_t i = 0; i < texts.length; ++i) {
    if (!is_null(texts, i)) continue;
    if (!::arrow::util::ValidateUTF8(text_at<Offset>(texts, i))) return true;
  }
  return false;
}

/// The same texts, but empty at null slots.
template <class Offset>
DataResult without_hidden_texts(Work& work, const ::arrow::ArrayData& texts) {
  return make_text_of<Offset>(work, texts.type, texts,
                              [&](std::int64_t i) { return text_at<Offset>(texts, i); });
}

Data cut_child(const Data& child, std::int64_t offset, std::int64_t length) {
  if (offset == 0 && length == child->length) return child;
  return child->Slice(offset, length);
}

/// Keys from a dictionary or from run-end encoded values can be null. Arrow terminates the process
/// if a map is made with null keys.
::arrow::Status check_keys(const ::arrow::ArrayData& entries) {
  const std::int64_t nulls = entries.GetNullCount() + entries.child_data[0]->GetNullCount();
  if (nulls == 0) return ::arrow::Status::OK();
  return ::arrow::Status::Invalid("Map: found ", nulls, " null keys, expected none.");
}

/// The entries of a map add nothing to the path; keys and items do.
DataResult take_entries(Work& work, const std::string& path, const ::arrow::ArrayData& entries) {
  static constexpr const char* kPlaces[] = {"{key}", "{item}"};
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, entries));
  for (size_t i = 0; i < 2; ++i) {
    const Data cut = cut_child(entries.child_data[i], entries.offset, entries.length);
    ARROW_ASSIGN_OR_RAISE(out->child_data[i], take_in_data(work, path + kPlaces[i], *cut));
  }
  ARROW_RETURN_NOT_OK(check_keys(*out));
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
  out->buffers[1] = cut_elements(array.buffers[1], array.offset, array.length, type.byte_width());
  return out;
}

template <class Offset>
DataResult take_text(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(out->buffers[1], cut_offsets<Offset>(work, array));
  const bool is_text = ::arrow::is_string(array.type->id());
  if (is_text && out->buffers[0] != nullptr && hides_bad_text<Offset>(*out)) {
    return without_hidden_texts<Offset>(work, *out);
  }
  return out;
}

template DataResult take_text<std::int32_t>(Work&, const std::string&, const ::arrow::ArrayData&);
template DataResult take_text<std::int64_t>(Work&, const std::string&, const ::arrow::ArrayData&);

template <class Offset>
DataResult take_list(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(Data out, without_offset(work, array));
  ARROW_ASSIGN_OR_RAISE(auto offsets, cut_offsets<Offset>(work, array));
  // Arrow's validation does not check the single offset of an array without elements.
  const std::int64_t first = array.length == 0 ? 0 : load<Offset>(*offsets, 0);
  const std::int64_t last = array.length == 0 ? 0 : load<Offset>(*offsets, array.length);
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
