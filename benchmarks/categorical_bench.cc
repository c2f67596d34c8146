// Dictionaries towards the host.

#include <arrow/array/array_dict.h>
#include <arrow/memory_pool.h>

#include "benchmarks/arrow_data.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

constexpr std::int64_t kCodes = 5'000'000;

/// Every chunk has the same categories in an order of its own.
ColumnPtr categories_in_chunks(std::int64_t chunks) {
  ::arrow::ArrayVector arrays;
  for (std::int64_t i = 0; i < chunks; ++i) arrays.push_back(categories(kCodes / chunks, i));
  return std::make_shared<::arrow::ChunkedArray>(std::move(arrays));
}

hxArrayPtr column_to_host(const ColumnPtr& column) { return core::to_numera(column).ValueOrDie(); }

const ::arrow::DictionaryArray& chunk_of(const ColumnPtr& column, int i) {
  return static_cast<const ::arrow::DictionaryArray&>(*column->chunk(i));
}

hxArrayPtr copy_codes(const ColumnPtr& column) {
  const auto& codes = static_cast<const ::arrow::Int32Array&>(*chunk_of(column, 0).indices());
  return copied(value_bytes(codes), hxClassID::Int32);
}

/// Arrow's own unification; the codes are not even copied to the host.
::arrow::ArrayVector unify(const ColumnPtr& column) {
  const auto unifier = ::arrow::DictionaryUnifier::Make(::arrow::utf8()).ValueOrDie();
  std::vector<std::shared_ptr<::arrow::Buffer>> maps(static_cast<size_t>(column->num_chunks()));
  for (size_t i = 0; i < maps.size(); ++i) {
    require(unifier->Unify(*chunk_of(column, static_cast<int>(i)).dictionary(), &maps[i]));
  }
  std::shared_ptr<::arrow::DataType> type;
  std::shared_ptr<::arrow::Array> dictionary;
  require(unifier->GetResult(&type, &dictionary));
  ::arrow::ArrayVector chunks;
  for (size_t i = 0; i < maps.size(); ++i) {
    const auto* const map = reinterpret_cast<const std::int32_t*>(maps[i]->data());
    chunks.push_back(
        chunk_of(column, static_cast<int>(i)).Transpose(type, dictionary, map).ValueOrDie());
  }
  return chunks;
}

}  // namespace

void add_categorical_rows() {
  add_row("to_host/dictionary", [] { return categories_in_chunks(1); }, column_to_host, copy_codes);
  add_row(
      "to_host/dictionary_20_chunks", [] { return categories_in_chunks(20); }, column_to_host,
      unify);
}

}  // namespace numera::benchmarks
