#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <arrow/util/bit_util.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "numera/extras/intake/gather.h"
#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/plain_text.h"
#include "numera/extras/intake/takes.h"
#include "numera/format/number_classes.h"

namespace numera::extras::intake {
namespace {

using ::arrow::Type;

bool is_text(const ::arrow::ArrayData& values) { return ::arrow::is_string(values.type->id()); }

/// Removes nulls from `texts`. `places` receives the new index per old text, `kNowhere` for a null.
template <class Offset>
DataResult without_nulls(Work& work, const ::arrow::ArrayData& texts,
                         std::vector<std::int64_t>* places) {
  std::vector<std::int64_t> kept;
  for (std::int64_t i = 0; i < texts.length; ++i) {
    const bool null = is_null(texts, i);
    places->push_back(null ? kNowhere : static_cast<std::int64_t>(kept.size()));
    if (!null) kept.push_back(i);
  }
  const ::arrow::ArrayData slots(texts.type, static_cast<std::int64_t>(kept.size()), {nullptr}, 0);
  return make_text_of<Offset>(work, texts.type, slots, [&](std::int64_t i) {
    return text_at<Offset>(texts, kept[static_cast<size_t>(i)]);
  });
}

/// Host categories cannot be null: a null category would become the empty text.
::arrow::Status drop_nulls(Work& work, TakenDictionary* taken) {
  if (!is_text(*taken->values) || taken->values->GetNullCount() == 0) return {};
  const auto drop = taken->values->type->id() == Type::STRING ? without_nulls<std::int32_t>
                                                              : without_nulls<std::int64_t>;
  return drop(work, *taken->values, &taken->codes).Value(&taken->values);
}

/// A dictionary that several fields share is taken in once. Its casts are noted once per field.
::arrow::Result<TakenDictionary*> take_values(Work& work, const std::string& path,
                                              const Data& dictionary) {
  const std::string here = path + "<dictionary>";
  TakenDictionary& taken = work.dictionaries[dictionary.get()];
  if (taken.values != nullptr) {
    for (const IntakeCast& cast : taken.casts) work.note(here + cast.path, cast.from, cast.to);
    return &taken;
  }
  const size_t noted = work.casts.size();
  ARROW_ASSIGN_OR_RAISE(taken.values, take_in_data(work, here, *dictionary));
  for (size_t i = noted; i < work.casts.size(); ++i) {
    const IntakeCast& cast = work.casts[i];
    taken.casts.push_back({cast.path.substr(here.size()), cast.from, cast.to});
  }
  ARROW_RETURN_NOT_OK(drop_nulls(work, &taken));
  return &taken;
}

template <class Index>
std::vector<std::int64_t> places(const ::arrow::ArrayData& indices) {
  std::vector<std::int64_t> result(static_cast<size_t>(indices.length), kNowhere);
  for (std::int64_t i = 0; i < indices.length; ++i) {
    if (is_null(indices, i)) continue;
    // An int8 index is a number, not a character.
    // NOLINTNEXTLINE(bugprone-signed-char-misuse)
    result[static_cast<size_t>(i)] = static_cast<std::int64_t>(load<Index>(*indices.buffers[1], i));
  }
  return result;
}

/// Replaces every code c by `codes[c]`. If that is `kNowhere`, the slot becomes null. A new code is
/// never larger than the old one, so it fits the index type.
template <class Index>
::arrow::Status recode(Work& work, const std::vector<std::int64_t>& codes,
                       ::arrow::ArrayData* array) {
  const std::int64_t bytes = ::arrow::bit_util::BytesForBits(array->length);
  ARROW_ASSIGN_OR_RAISE(auto validity, allocate(work, bytes, 1));
  ARROW_ASSIGN_OR_RAISE(auto indices, allocate(work, array->length, sizeof(Index)));
  std::fill_n(validity->mutable_data(), bytes, std::uint8_t{0});
  std::int64_t nulls = 0;
  const std::vector<std::int64_t> old = places<Index>(*array);
  for (std::int64_t i = 0; i < array->length; ++i) {
    const std::int64_t place = old[static_cast<size_t>(i)];
    const std::int64_t code = place == kNowhere ? kNowhere : codes[static_cast<size_t>(place)];
    store<Index>(*indices, i, static_cast<Index>(std::max<std::int64_t>(code, 0)));
    if (code != kNowhere) ::arrow::bit_util::SetBit(validity->mutable_data(), i);
    nulls += code == kNowhere;
  }
  array->buffers = {nulls > 0 ? std::move(validity) : nullptr, std::move(indices)};
  array->null_count = nulls;
  return {};
}

}  // namespace

DataResult take_dictionary(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*array.type);
  ARROW_ASSIGN_OR_RAISE(const TakenDictionary* taken, take_values(work, path, array.dictionary));
  const Data& values = taken->values;
  ARROW_ASSIGN_OR_RAISE(Data out, take_fixed_width(work, path, array));
  const Type::type index = type.index_type()->id();
  if (!is_text(*values)) {
    const auto of = format::with_index_class(
        index, [&]<class Index>(const format::NumberClass<Index>&) { return places<Index>(*out); });
    ARROW_ASSIGN_OR_RAISE(out, gather(work, *values, of));
    work.note(path, array.type, out->type);
    return out;
  }
  if (!taken->codes.empty()) {
    const auto recode_as = [&]<class Index>(const format::NumberClass<Index>&) {
      return recode<Index>(work, taken->codes, out.get());
    };
    ARROW_RETURN_NOT_OK(format::with_index_class(index, recode_as));
  }
  if (values->type != type.value_type()) {
    out->type = ::arrow::dictionary(type.index_type(), values->type, type.ordered());
  }
  out->dictionary = values;
  return out;
}

}  // namespace numera::extras::intake
