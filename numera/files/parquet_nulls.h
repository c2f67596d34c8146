#pragma once

#include <parquet/arrow/schema.h>
#include <parquet/metadata.h>

#include <cstdint>
#include <optional>

namespace numera::files {

/// The number of nulls of a column as the statistics in the footer state it. None for a nested
/// column, and where a row group has no such count or one that cannot be right.
std::optional<std::int64_t> stated_nulls(const parquet::FileMetaData& footer,
                                         const parquet::arrow::SchemaField& column);

}  // namespace numera::files
