#include <string_view>

#include "tests/gauntlet/model.h"
#include "tests/support/bitmap_model.h"
#include "tests/support/envelopes.h"

namespace numera::gauntlet {
namespace {

using ::arrow::Type;
using namespace numera::testing;

std::string_view kind_of(Type::type id) {
  switch (id) {
    case Type::LIST:
    case Type::LARGE_LIST:
      return "list_array";
    case Type::STRUCT:
      return "struct";
    case Type::MAP:
      return "map";
    default:
      return "array";
  }
}

std::string_view type_name_of(Type::type id) {
  switch (id) {
    case Type::NA:
      return "null";
    case Type::BOOL:
      return "logical";
    case Type::UINT8:
      return "uint8";
    case Type::INT8:
      return "int8";
    case Type::UINT16:
      return "uint16";
    case Type::INT16:
      return "int16";
    case Type::UINT32:
      return "uint32";
    case Type::INT32:
      return "int32";
    case Type::UINT64:
      return "uint64";
    case Type::INT64:
    case Type::DURATION:
      return "int64";
    case Type::FLOAT:
      return "single";
    case Type::DOUBLE:
      return "double";
    case Type::STRING:
    case Type::LARGE_STRING:
      return "string";
    case Type::BINARY:
    case Type::LARGE_BINARY:
      return "binary_array";
    case Type::FIXED_SIZE_BINARY:
      return "fixed_binary_array";
    case Type::DATE32:
    case Type::DATE64:
    case Type::TIMESTAMP:
      return "datetime";
    case Type::TIME32:
    case Type::TIME64:
      return "duration";
    case Type::LIST:
      return "list_array";
    case Type::LARGE_LIST:
      return "large_list_array";
    case Type::STRUCT:
      return "struct";
    case Type::MAP:
      return "map";
    case Type::DICTIONARY:
      return "categorical";
    default:
      return "?";
  }
}

/// Empty if there are no nulls. Otherwise all bits are set first; then each chunk's bitmap is
/// copied over them, from its first bit on.
Bytes validity_bits(const Column& column) {
  std::int64_t nulls = 0;
  for (const auto& chunk : column.chunks) nulls += nulls_of(*chunk);
  if (nulls == 0) return {};
  const auto total = static_cast<size_t>(column.length());
  Bytes bits((total + 7) / 8, 0xFF);
  size_t position = 0;
  for (const auto& chunk : column.chunks) {
    const auto length = static_cast<size_t>(chunk->length);
    bits = CopyBitmapModel(bytes_of(*chunk, 0), length, bits, position, total);
    position += length;
  }
  return bits;
}

hxArrayPtr validity_of_each(const Column& column) {
  std::vector<hxArrayPtr> all;
  for (const auto& chunk : column.chunks) {
    all.push_back(
        WrittenBitmap(static_cast<double>(chunk->length), validity_bits({column.type, {chunk}})));
  }
  return StructColumn(kBitmapFields, all);
}

}  // namespace

hxArrayPtr model_validity(const Column& column, bool plain) {
  if (!plain || column.chunks.empty()) return validity_of_each(column);
  return WrittenValidity(static_cast<double>(column.length()), validity_bits(column));
}

hxArrayPtr model_logical(const Column& column) {
  const auto total = static_cast<size_t>(column.length());
  Bytes bits((total + 7) / 8, 0);
  size_t position = 0;
  for (const auto& chunk : column.chunks) {
    const auto length = static_cast<size_t>(chunk->length);
    bits = CopyBitmapModel(bytes_of(*chunk, 1), length, bits, position, total);
    position += length;
  }
  return WrittenBitmap(static_cast<double>(total), bits);
}

hxArrayPtr model_envelope(const Column& column) {
  const std::string_view kind = kind_of(column.type->id());
  hxArrayPtr data = model_data(column);
  return WrittenEnvelope(kind, type_name_of(column.type->id()),
                         model_validity(column, kind == "array"), std::move(data));
}

}  // namespace numera::gauntlet
