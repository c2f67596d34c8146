/// \file
/// Arrow arrays of any type and shape, right and wrong, towards the host: as they are, where they
/// are refused or converted without a read outside of their buffers, and through the intake, where
/// what is taken in goes to the host and back.

#include <arrow/array/array_base.h>
#include <arrow/array/util.h>
#include <arrow/chunked_array.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <memory>
#include <utility>

#include "fuzz/arrow_tree.h"
#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "fuzz/taken_in.h"
#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "numera/host/text_codec.h"

namespace numera::fuzz {
namespace {

using ArrayPtr = std::shared_ptr<::arrow::Array>;

/// Whatever the array, there is a status, or the host's refusal of a name.
void convert_as_it_is(const ArrayPtr& array) {
  try {
    const auto converted = io::arrow::core::to_numera(array);
    claim(!converted.ok() || *converted != nullptr, "success gives a value");
  } catch (const hxCodecError&) {
  }
}

/// Chunks are joined to a column only where the intake takes them: Arrow counts their nulls then.
void check_column(::arrow::ArrayVector chunks, const std::shared_ptr<::arrow::DataType>& type,
                  bool cast) {
  std::int64_t rows = 0;
  for (const ArrayPtr& chunk : chunks) rows += chunk->length();
  const auto column = std::make_shared<::arrow::ChunkedArray>(std::move(chunks), type);
  const auto schema = ::arrow::schema({::arrow::field("c", type)});
  check_taken(::arrow::Table::Make(schema, {column}, rows), cast);
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  ByteSource source(input);
  const bool cast = source.byte() % 2 == 0;
  const auto type = read_arrow_type(source, 4);
  ::arrow::ArrayVector valid;
  for (size_t count = 1 + source.below(3); count > 0; --count) {
    const ArrayPtr array = ::arrow::MakeArray(read_arrow_data(source, type));
    convert_as_it_is(array);
    if (extras::take_in(array, {.cast = true}).ok()) valid.push_back(array);
  }
  check_column(std::move(valid), type, cast);
}

}  // namespace numera::fuzz
