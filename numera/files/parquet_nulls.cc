#include "numera/files/parquet_nulls.h"

#include <arrow/type.h>
#include <parquet/exception.h>
#include <parquet/schema.h>
#include <parquet/statistics.h>

namespace numera::files {
namespace {

std::optional<std::int64_t> nulls_in_group(const parquet::RowGroupMetaData& group, int leaf) {
  const auto chunk = group.ColumnChunk(leaf);
  const auto statistics = chunk->encoded_statistics();
  if (statistics == nullptr || !statistics->has_null_count) return std::nullopt;
  const std::int64_t nulls = statistics->null_count;
  const bool can_be = nulls >= 0 && nulls <= group.num_rows();
  return can_be && chunk->num_values() == group.num_rows() ? std::optional(nulls) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> stated_nulls(const parquet::FileMetaData& footer,
                                         const parquet::arrow::SchemaField& column) {
  if (!column.is_leaf()) return std::nullopt;
  const parquet::ColumnDescriptor& leaf = *footer.schema()->Column(column.column_index);
  if (leaf.max_repetition_level() > 0 || leaf.max_definition_level() > 1) return std::nullopt;
  if (column.field->type()->id() == ::arrow::Type::NA) return footer.num_rows();
  if (leaf.max_definition_level() == 0) return 0;  // the schema allows no null
  std::int64_t nulls = 0;
  try {
    for (int i = 0; i < footer.num_row_groups(); ++i) {
      const auto more = nulls_in_group(*footer.RowGroup(i), column.column_index);
      if (!more || *more > footer.num_rows() - nulls) return std::nullopt;
      nulls += *more;
    }
  } catch (const parquet::ParquetException&) {
    return std::nullopt;
  }
  return nulls;
}

}  // namespace numera::files
