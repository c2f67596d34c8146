/// \file
/// Arrow arrays of any type and shape, valid and invalid, to the host. Unchanged, an array is
/// refused or converted, without a read outside its buffers. What the intake accepts goes to the
/// host and back.

#include <arrow/array/array_base.h>
#include <arrow/array/util.h>
#include <arrow/chunked_array.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

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

/// Converts any array. It must return a status or a value, or the host must refuse a name.
void convert_as_it_is(const ArrayPtr& array) {
  const testing::ArrayNodes before(*array);
  try {
    const auto converted = io::arrow::core::to_numera(array);
    claim(!converted.ok() || *converted != nullptr, "success gives a value");
  } catch (const hxCodecError&) {
  }
  claim_only_read(before);
}

/// The arrays. Each is wrapped in a struct if Arrow cannot make one of them by itself.
::arrow::ArrayVector made(const std::vector<std::shared_ptr<::arrow::ArrayData>>& all) {
  const bool as_they_are =
      std::ranges::all_of(all, [](const auto& data) { return is_made_by_arrow(*data); });
  ::arrow::ArrayVector arrays;
  for (const auto& data : all) {
    const auto around = [&data] {
      const auto type = ::arrow::struct_({::arrow::field("f", data->type)});
      return ::arrow::ArrayData::Make(type, data->length, {nullptr}, {data});
    };
    arrays.push_back(::arrow::MakeArray(as_they_are ? data : around()));
  }
  return arrays;
}

/// Takes only chunks that the intake accepts, because joining them to a column counts their nulls.
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
  std::vector<std::shared_ptr<::arrow::ArrayData>> all;
  for (size_t count = 1 + source.below(3); count > 0; --count) {
    all.push_back(read_arrow_data(source, type));
  }
  const ::arrow::ArrayVector arrays = made(all);
  ::arrow::ArrayVector valid;
  for (const ArrayPtr& array : arrays) {
    convert_as_it_is(array);
    const testing::ArrayNodes before(*array);
    if (extras::take_in(array, {.cast = true}).ok()) valid.push_back(array);
    claim_only_read(before);
  }
  check_column(std::move(valid), arrays.front()->type(), cast);
}

}  // namespace numera::fuzz
