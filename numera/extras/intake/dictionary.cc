#include <arrow/type.h>

#include <utility>
#include <vector>

#include "numera/extras/intake/gather.h"
#include "numera/extras/intake/memory.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

/// A dictionary that several fields share is taken in once, and its casts are noted for each.
DataResult take_values(Work& work, const std::string& path, const Data& dictionary) {
  const std::string here = path + "<dictionary>";
  TakenDictionary& taken = work.dictionaries[dictionary.get()];
  if (taken.values != nullptr) {
    for (const IntakeCast& cast : taken.casts) work.note(here + cast.path, cast.from, cast.to);
    return taken.values;
  }
  const size_t noted = work.casts.size();
  ARROW_ASSIGN_OR_RAISE(taken.values, take_in_data(work, here, *dictionary));
  for (size_t i = noted; i < work.casts.size(); ++i) {
    const IntakeCast& cast = work.casts[i];
    taken.casts.push_back({cast.path.substr(here.size()), cast.from, cast.to});
  }
  return taken.values;
}

template <class Index>
std::vector<std::int64_t> places(const ::arrow::ArrayData& indices) {
  std::vector<std::int64_t> result(static_cast<size_t>(indices.length), kNowhere);
  for (std::int64_t i = 0; i < indices.length; ++i) {
    if (is_null(indices, i)) continue;
    // An int8 index is a number, no character.
    // NOLINTNEXTLINE(bugprone-signed-char-misuse)
    result[static_cast<size_t>(i)] = static_cast<std::int64_t>(load<Index>(*indices.buffers[1], i));
  }
  return result;
}

/// `id` is that of an integer, since no other can be the index of a dictionary.
std::vector<std::int64_t> places(const ::arrow::ArrayData& indices, ::arrow::Type::type id) {
  switch (id) {
    case ::arrow::Type::INT8:
      return places<std::int8_t>(indices);
    case ::arrow::Type::UINT8:
      return places<std::uint8_t>(indices);
    case ::arrow::Type::INT16:
      return places<std::int16_t>(indices);
    case ::arrow::Type::UINT16:
      return places<std::uint16_t>(indices);
    case ::arrow::Type::INT32:
      return places<std::int32_t>(indices);
    case ::arrow::Type::UINT32:
      return places<std::uint32_t>(indices);
    case ::arrow::Type::UINT64:
      return places<std::uint64_t>(indices);
    default:
      return places<std::int64_t>(indices);
  }
}

}  // namespace

DataResult take_dictionary(Work& work, const std::string& path, const ::arrow::ArrayData& array) {
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*array.type);
  ARROW_ASSIGN_OR_RAISE(Data values, take_values(work, path, array.dictionary));
  ARROW_ASSIGN_OR_RAISE(Data out, take_fixed_width(work, path, array));
  const ::arrow::Type::type id = values->type->id();
  if (id != ::arrow::Type::STRING && id != ::arrow::Type::LARGE_STRING) {
    ARROW_ASSIGN_OR_RAISE(out, gather(work, *values, places(*out, type.index_type()->id())));
    work.note(path, array.type, out->type);
    return out;
  }
  // The host's categories are all there: a null among them would become the empty text.
  if (const std::int64_t nulls = values->GetNullCount(); nulls > 0) {
    return ::arrow::Status::Invalid("Dictionary: found ", nulls, " nulls among its values, ",
                                    "expected none.");
  }
  if (values->type != type.value_type()) {
    out->type = ::arrow::dictionary(type.index_type(), values->type, type.ordered());
  }
  out->dictionary = std::move(values);
  return out;
}

}  // namespace numera::extras::intake
