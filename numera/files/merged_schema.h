#pragma once

#include <arrow/memory_pool.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <memory>
#include <vector>

#include "numera/files/locations.h"

namespace numera::files {

/// `before`, with the columns of another file. Columns of nulls take the other type, and numbers,
/// times and sizes become wider. Invalid for other differences. Both have unique names.
::arrow::Result<std::shared_ptr<::arrow::Schema>> merge_schemas(
    const std::shared_ptr<::arrow::Schema>& before, const ::arrow::Schema& more);

/// The columns of all keys: int32 or int64 if each value is such a number, else dictionaries of
/// texts. In the order in which the keys come first. Invalid for a text that is not UTF-8.
::arrow::Result<::arrow::FieldVector> fields_of_keys(const std::vector<Location>& locations);

/// The columns of `schema`: from the batch, from the keys, or else of nulls.
::arrow::Result<std::shared_ptr<::arrow::RecordBatch>> conform(
    const ::arrow::RecordBatch& batch, const std::vector<PartitionKey>& keys,
    const std::shared_ptr<::arrow::Schema>& schema, ::arrow::MemoryPool* pool);

}  // namespace numera::files
