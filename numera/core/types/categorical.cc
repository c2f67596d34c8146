#include "numera/core/types/categorical.h"

#include <arrow/array/array_binary.h>
#include <arrow/array/array_dict.h>
#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/memory_pool.h>
#include <arrow/type.h>
#include <arrow/util/checked_cast.h>

#include <utility>
#include <vector>

#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/types/dictionary_codes.h"
#include "numera/core/types/numeric.h"
#include "numera/core/types/string.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::Type;
using ::arrow::internal::checked_cast;

const ::arrow::DictionaryType& as_dictionary_type(const ::arrow::DataType& type) {
  return checked_cast<const ::arrow::DictionaryType&>(type);
}

::arrow::Result<bool> read_ordinal(const hxArray* ordinal) {
  ARROW_RETURN_NOT_OK(check_plain(ordinal, format::kOrdinal));
  if (hxGetNumberOfElements(ordinal) != 1) {
    return messages::wrong_value(format::kOrdinal, ordinal, "a logical array of one element");
  }
  return *static_cast<const std::uint8_t*>(hxGetData(ordinal)) != 0;
}

/// The dictionary of a chunk. Arrow counts and stores nothing in the caller's array.
std::shared_ptr<::arrow::Array> copy_of_dictionary(const ArrayView& chunk) {
  return ::arrow::MakeArray(chunk.data->dictionary->Copy());
}

/// Arrow reads dictionaries by their offsets.
::arrow::Status check_offsets(const ::arrow::ArrayData& dictionary) {
  return dictionary.type->id() == Type::LARGE_STRING
             ? variable_width_values<std::int64_t>(dictionary).status()
             : variable_width_values<std::int32_t>(dictionary).status();
}

::arrow::Result<SingleDictionary> empty_dictionary(
    const std::shared_ptr<::arrow::DataType>& dict_type) {
  const auto& type = as_dictionary_type(*dict_type);
  ARROW_ASSIGN_OR_RAISE(auto dictionary, ::arrow::MakeEmptyArray(type.value_type()));
  ARROW_ASSIGN_OR_RAISE(auto indices, ::arrow::ChunkedArray::Make({}, type.index_type()));
  return SingleDictionary{std::move(dictionary), std::move(indices), dict_type};
}

::arrow::Result<hxArrayPtr> categories_to_host(const ::arrow::Array& dictionary) {
  if (dictionary.type_id() == Type::LARGE_STRING) {
    return StringArrayToHost(checked_cast<const ::arrow::LargeStringArray&>(dictionary));
  }
  return StringArrayToHost(checked_cast<const ::arrow::StringArray&>(dictionary));
}

}  // namespace

ArrayResult CategoricalToArrow(const hxArray* data, std::shared_ptr<::arrow::Buffer> validity,
                               bool useLargeStrings) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* values,
                        checked_field(data, format::kValues, hxClassID::Unknown));
  ARROW_ASSIGN_OR_RAISE(const hxArray* categories,
                        checked_field(data, format::kCategories, hxClassID::Struct));
  ARROW_ASSIGN_OR_RAISE(const hxArray* ordinal,
                        checked_field(data, format::kOrdinal, hxClassID::Logical));
  ARROW_ASSIGN_OR_RAISE(const bool ordered, read_ordinal(ordinal));
  ARROW_ASSIGN_OR_RAISE(auto indices,
                        numeric_to_arrow(values, std::move(validity), format::kValues));
  ARROW_ASSIGN_OR_RAISE(auto dictionary, useLargeStrings ? MakeLargeStringArray(categories, nullptr)
                                                         : MakeStringArray(categories, nullptr));
  if (!::arrow::is_integer(indices->type_id())) {
    return messages::wrong_value(format::kValues, values, "an array of an integer class");
  }
  auto type =
      std::make_shared<::arrow::DictionaryType>(indices->type(), dictionary->type(), ordered);
  return std::make_shared<::arrow::DictionaryArray>(std::move(type), std::move(indices),
                                                    std::move(dictionary));
}

::arrow::Result<SingleDictionary> UnifyDictionaryChunks(
    const ColumnView& column, const std::shared_ptr<::arrow::DataType>& dictType) {
  ::arrow::MemoryPool* const pool = ::arrow::default_memory_pool();
  ARROW_ASSIGN_OR_RAISE(auto unifier, ::arrow::DictionaryUnifier::Make(
                                          as_dictionary_type(*dictType).value_type(), pool));
  std::vector<std::shared_ptr<::arrow::Buffer>> maps;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_RETURN_NOT_OK(check_offsets(*chunk.data->dictionary));
    const auto dictionary = copy_of_dictionary(chunk);
    dictionary->data()->null_count = count_nulls(*chunk.data->dictionary);
    ARROW_RETURN_NOT_OK(unifier->Unify(*dictionary, &maps.emplace_back()));
  }
  SingleDictionary single;
  ARROW_RETURN_NOT_OK(unifier->GetResult(&single.type, &single.dictionary));
  ::arrow::ArrayVector indices;
  for (size_t i = 0; i < maps.size(); ++i) {
    ARROW_ASSIGN_OR_RAISE(const auto codes, codes_within_dictionary(column.chunks()[i]));
    ARROW_ASSIGN_OR_RAISE(const auto map, nonempty_map(maps[i]));
    ARROW_ASSIGN_OR_RAISE(
        const auto transposed,
        codes->Transpose(single.type, single.dictionary, map->data_as<std::int32_t>(), pool));
    indices.push_back(checked_cast<const ::arrow::DictionaryArray&>(*transposed).indices());
  }
  ARROW_ASSIGN_OR_RAISE(single.indices, ::arrow::ChunkedArray::Make(std::move(indices)));
  return single;
}

::arrow::Result<SingleDictionary> DictionaryChunksToSingle(
    const ColumnView& column, const std::shared_ptr<::arrow::DataType>& dictType) {
  if (column.chunks().empty()) return empty_dictionary(dictType);
  if (column.chunks().size() > 1) return UnifyDictionaryChunks(column, dictType);
  const ArrayView& chunk = column.chunks()[0];
  const auto codes = copy_of_codes(chunk);
  codes->type = as_dictionary_type(*dictType).index_type();
  codes->dictionary = nullptr;
  return SingleDictionary{copy_of_dictionary(chunk),
                          std::make_shared<::arrow::ChunkedArray>(::arrow::MakeArray(codes)),
                          dictType};
}

::arrow::Result<hxArrayPtr> DictionaryToHost(const ColumnView& column) {
  const auto& value_type = as_dictionary_type(*column.type()).value_type();
  if (value_type->id() != Type::STRING && value_type->id() != Type::LARGE_STRING) {
    return ::arrow::Status::Invalid("Invalid dictionary value type: ", value_type->ToString());
  }
  ARROW_ASSIGN_OR_RAISE(const auto single, DictionaryChunksToSingle(column, column.type()));
  hxArrayPtr data = format::make_struct(1, format::kCategorical);
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr categories, categories_to_host(*single.dictionary));
  hxSetField(data.get(), 0, format::kCategories, std::move(categories));
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr codes, data_to_numera(*single.indices));
  hxSetField(data.get(), 0, format::kValues, std::move(codes));
  hxSetField(data.get(), 0, format::kOrdinal,
             format::make_logical(as_dictionary_type(*single.type).ordered()));
  return data;
}

}  // namespace numera::io::arrow::core
