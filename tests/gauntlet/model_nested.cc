#include <string>
#include <vector>

#include "tests/gauntlet/model.h"
#include "tests/support/envelopes.h"

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using namespace numera::testing;
using ArrayDataPtr = std::shared_ptr<ArrayData>;

hxArrayPtr envelope_of(const ArrayDataPtr& child) { return model_envelope({child->type, {child}}); }

/// The offsets of the chunk's own lists, as stored. A chunk without lists may have no buffer.
template <class Offset>
hxArrayPtr stored_offsets(const ArrayData& chunk) {
  if (chunk.length == 0 && !has_bytes(chunk, 1)) return Scalar<Offset>(0);
  std::vector<Offset> offsets;
  for (std::int64_t i = 0; i <= chunk.length; ++i) {
    offsets.push_back(element_at<Offset>(chunk, 1, chunk.offset + i));
  }
  return numera::testing::Column<Offset>(offsets);
}

hxArrayPtr start_offsets(const ArrayData& chunk) {
  return has_wide_offsets(*chunk.type) ? stored_offsets<std::int64_t>(chunk)
                                       : stored_offsets<std::int32_t>(chunk);
}

/// A struct column with one element per chunk, which `make(chunk)` makes.
template <class Make>
hxArrayPtr element_a_chunk(const Column& column, const FieldNames& fields, Make make) {
  std::vector<hxArrayPtr> elements;
  for (const auto& chunk : column.chunks) elements.push_back(make(*chunk));
  return StructColumn(fields, elements);
}

/// A child of a struct, sliced to the rows of the struct.
ArrayDataPtr field_of(const ArrayData& chunk, size_t i) {
  ArrayDataPtr child = chunk.child_data[i]->Copy();
  if (child->length < chunk.offset + chunk.length) throw Refused();
  child->offset += chunk.offset;
  child->length = chunk.length;
  child->null_count = ::arrow::kUnknownNullCount;
  return child;
}

}  // namespace

hxArrayPtr model_lists(const Column& column) {
  return element_a_chunk(column, kListFields, [](const ArrayData& chunk) {
    return ListData(envelope_of(chunk.child_data[0]), start_offsets(chunk));
  });
}

hxArrayPtr model_maps(const Column& column) {
  return element_a_chunk(column, kMapFields, [](const ArrayData& chunk) {
    const ArrayData& entries = *chunk.child_data[0];
    return MapData(envelope_of(entries.child_data[0]), envelope_of(entries.child_data[1]),
                   start_offsets(chunk));
  });
}

hxArrayPtr model_structs(const Column& column) {
  return element_a_chunk(column, kStructFields, [](const ArrayData& chunk) {
    const auto& fields = chunk.type->fields();
    std::vector<std::string> names;
    std::vector<hxArrayPtr> children;
    for (size_t i = 0; i < fields.size(); ++i) {
      names.push_back(fields[i]->name());
      children.push_back(envelope_of(field_of(chunk, i)));
    }
    return StructData(names, std::move(children));
  });
}

}  // namespace numera::gauntlet
