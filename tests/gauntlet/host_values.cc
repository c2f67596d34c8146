#include "tests/gauntlet/host_values.h"

#include <cstring>
#include <utility>

#include "tests/support/envelopes.h"

namespace numera::gauntlet {
namespace {

using namespace numera::testing;

std::uint64_t mix(std::uint64_t seed, std::uint64_t i) {
  std::uint64_t x = (seed + 0x9E3779B97F4A7C15U) * (2 * i + 1);
  x ^= x >> 29;
  x *= 0xBF58476D1CE4E5B9U;
  return x ^ (x >> 32);
}

HostMaking child_making(const HostMaking& making, std::uint64_t number) {
  HostMaking child = making;
  child.seed = mix(making.seed, 77 + number);
  return child;
}

Dims dims_of(Shape shape, size_t length) {
  switch (shape) {
    case Shape::kColumn:
      return {length, 1};
    case Shape::kRow:
      return {1, length};
    case Shape::kPages:
      return {1, 1, length};
  }
  return {};
}

/// `size` bytes that are needed, and what the memory of the case makes of them.
hxArrayPtr bytes(Bytes needed, Part part, const HostMaking& making) {
  if (making.memory == Memory::kLonger) needed.insert(needed.end(), 9, 0x5A);
  const bool is_short = part == Part::kBitmap ? making.memory == Memory::kShortBitmap
                                              : making.memory == Memory::kShortBytes;
  if (is_short && !needed.empty()) {
    needed.resize(making.seed % 2 == 0 ? needed.size() / 2 : needed.size() - 1);
  }
  return Column<std::uint8_t>(needed);
}

hxArrayPtr validity(size_t length, const HostMaking& making) {
  if (making.nulls == Nulls::kNoBitmap) return BufferEnvelope({});
  Bytes bits((length + 7) / 8);
  for (size_t i = 0; i < length; ++i) {
    const bool valid =
        making.nulls == Nulls::kNone || (making.nulls == Nulls::kEveryThird && i % 3 != 1);
    if (valid) bits[i / 8] |= static_cast<std::uint8_t>(1 << (i % 8));
  }
  return Struct(
      {{"ArrowType", Char("buffer")}, {"Values", bytes(std::move(bits), Part::kBitmap, making)}});
}

/// Random bits below `limit`, or all of them where it is 0.
hxArrayPtr numbers(hxClassID class_id, size_t length, std::uint64_t limit,
                   const HostMaking& making) {
  hxArrayPtr array =
      hxCreateNumericArray(dims_of(making.shape, length), class_id, hxComplexity::Real);
  const size_t width = hxGetElementSize(array.get());
  auto* const block = static_cast<std::uint8_t*>(hxGetData(array.get()));
  for (size_t i = 0; i < length; ++i) {
    std::uint64_t value = mix(making.seed, i);
    if (limit != 0) value %= limit;
    std::memcpy(block + i * width, &value, width);
  }
  return array;
}

hxArrayPtr offsets(size_t length, std::uint64_t first, std::uint64_t most, std::uint64_t* end,
                   const HostMaking& making) {
  std::vector<std::uint64_t> all = {first};
  for (size_t i = 0; i < length; ++i) all.push_back(all.back() + mix(making.seed, i) % (most + 1));
  *end = all.back();
  return Matrix<std::uint64_t>(dims_of(making.shape, all.size()), all);
}

/// Texts of ASCII letters, behind a byte that belongs to none.
hxArrayPtr texts(size_t length, const HostMaking& making) {
  std::uint64_t end = 0;
  hxArrayPtr starts = offsets(length, 1, 5, &end, making);
  Bytes letters;
  for (std::uint64_t i = 0; i < end; ++i)
    letters.push_back(static_cast<std::uint8_t>('a' + i % 26));
  return Struct({{"Values", bytes(std::move(letters), Part::kBytes, making)},
                 {"StartOffsets", std::move(starts)}});
}

hxArrayPtr logical(size_t length, const HostMaking& making) {
  Bytes bits;
  for (size_t i = 0; i < (length + 7) / 8; ++i) {
    bits.push_back(static_cast<std::uint8_t>(mix(making.seed, i)));
  }
  return Struct({{"Values", bytes(std::move(bits), Part::kBytes, making)},
                 {"Length", Scalar(static_cast<double>(length) + 0.75)},
                 {"ArrowType", Char("buffer")}});
}

hxArrayPtr list_data(const HostType& type, size_t length, const HostMaking& making) {
  std::uint64_t end = 0;
  hxArrayPtr starts = offsets(length, 2, 3, &end, making);
  return Struct({{"Values", make_host_value(type.children[0], end + 1, child_making(making, 0))},
                 {"StartOffsets", std::move(starts)}});
}

hxArrayPtr struct_data(const HostType& type, size_t length, const HostMaking& making) {
  return Struct(
      {{"FieldName", Cell({Char("x"), Char("ключ")})},
       {"FieldData", Cell({make_host_value(type.children[0], length, child_making(making, 0)),
                           make_host_value(type.children[1], length, child_making(making, 1))})}});
}

hxArrayPtr data_of(const HostType& type, size_t length, const HostMaking& making) {
  constexpr std::uint64_t kSeconds = 86400;
  switch (type.kind) {
    case HostKind::kNumeric:
      return numbers(type.class_id, length, 0, making);
    case HostKind::kLogical:
      return logical(length, making);
    case HostKind::kDatetime:
      return Struct({{"Values", numbers(hxClassID::Int64, length, 0, making)},
                     {"Units", Char(type.units)},
                     {"TimeZone", Char(making.seed % 2 == 0 ? "UTC" : "")}});
    case HostKind::kDuration:
      return Struct({{"Values", numbers(type.class_id, length, kSeconds, making)},
                     {"Units", Char(type.units)}});
    case HostKind::kText:
      return texts(length, making);
    case HostKind::kCategorical:
      return Struct({{"Categories", texts(6, child_making(making, 0))},
                     {"Values", numbers(type.class_id, length, 6, making)},
                     {"Ordinal", Logical({making.seed % 2 == 0})}});
    case HostKind::kList:
      return list_data(type, length, making);
    case HostKind::kStruct:
      return struct_data(type, length, making);
  }
  return nullptr;
}

std::string_view kind_text(HostKind kind) {
  return kind == HostKind::kList ? "list_array" : kind == HostKind::kStruct ? "struct" : "array";
}

}  // namespace

hxArrayPtr make_host_value(const HostType& type, size_t length, const HostMaking& making) {
  return Struct({{"ArrowType", Char(kind_text(type.kind))},
                 {"Type", Char(type.type)},
                 {"Valid", validity(length, making)},
                 {"Data", data_of(type, length, making)}});
}

}  // namespace numera::gauntlet
