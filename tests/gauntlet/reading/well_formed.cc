#include "tests/gauntlet/reading/well_formed.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/envelopes.h"

namespace numera::gauntlet::reading {
namespace {

using namespace numera::testing;

constexpr hxClassID kNumberClasses[] = {
    hxClassID::Double, hxClassID::Single, hxClassID::Int8,   hxClassID::UInt8, hxClassID::Int16,
    hxClassID::UInt16, hxClassID::Int32,  hxClassID::UInt32, hxClassID::Int64, hxClassID::UInt64};

/// Every name that "Type" may have. An envelope of numbers may have any of them.
constexpr const char* kTypeNames[] = {
    "double",       "single",      "int8",       "int16",
    "int32",        "int64",       "uint8",      "uint16",
    "uint32",       "uint64",      "logical",    "datetime",
    "string",       "duration",    "char",       "struct",
    "binary_array", "map",         "list_array", "large_list_array",
    "null",         "categorical", "",           "fixed_binary_array"};

constexpr const char* kUnits[] = {"seconds", "milliseconds", "microseconds", "nanoseconds",
                                  "second"};

constexpr std::string_view kFieldNames[] = {"x", "y", "ключ", "", {"\0z", 2}};

/// 0, 1, 2, ..., `count` - 1
hxArrayPtr start_offsets(Random& random, size_t count) {
  hxArrayPtr starts = any_numbers(random, hxClassID::UInt64, count);
  auto* const first = static_cast<std::uint64_t*>(hxGetData(starts.get()));
  std::iota(first, first + count, std::uint64_t{0});
  return starts;
}

size_t bytes_of_bits(size_t bits) { return (bits + 7) / 8; }

hxArrayPtr validity(Random& random, size_t length) {
  return any_buffer(random, random.once_in(2) ? 0 : bytes_of_bits(length));
}

/// Sometimes has no offsets. The conversion reads that as a length of -1.
hxArrayPtr text_data(Random& random, size_t length) {
  const size_t starts = random.once_in(16) ? 0 : length + 1;
  hxArrayPtr bytes = any_numbers(random, hxClassID::UInt8, length + random.below(3));
  return ListData(std::move(bytes), start_offsets(random, starts));
}

/// The conversion truncates the length toward zero. The length may be negative.
hxArrayPtr logical_data(Random& random, size_t length) {
  const double whole = static_cast<double>(length);
  hxArrayPtr bits = any_numbers(random, hxClassID::UInt8, bytes_of_bits(length));
  return WrittenBufferOf(
      std::move(bits), Scalar(random.pick(std::array{whole, whole + 0.75, whole, -whole - 0.75})));
}

hxArrayPtr any_unit(Random& random) { return Char(random.pick(kUnits)); }

hxArrayPtr datetime_data(Random& random, size_t length) {
  hxArrayPtr values = any_numbers(random, hxClassID::Int64, length);
  hxArrayPtr units = any_unit(random);
  hxArrayPtr zone = Char(random.once_in(2) ? "" : "Europe/Paris");
  const auto make = random.once_in(2) ? WrittenTimestampData : TimestampData;
  return make(std::move(values), std::move(units), std::move(zone));
}

/// Half of the units do not fit the class.
hxArrayPtr duration_data(Random& random, size_t length) {
  const hxClassID class_id = random.once_in(2) ? hxClassID::Int32 : hxClassID::Int64;
  hxArrayPtr values = any_numbers(random, class_id, length);
  return TimeData(std::move(values), any_unit(random));
}

/// Two of the ten classes cannot hold codes.
hxArrayPtr categorical_data(Random& random, size_t length) {
  hxArrayPtr categories = text_data(random, random.below(4));
  hxArrayPtr codes = any_numbers(random, random.pick(kNumberClasses), length);
  return CategoricalData(std::move(categories), std::move(codes), Logical({random.below(2) == 1}));
}

hxArrayPtr list_of(Random& random, hxArrayPtr values, size_t length) {
  hxArrayPtr data = ListData(std::move(values), start_offsets(random, length + 1));
  return WrittenEnvelope("list_array", "list_array", validity(random, length), std::move(data));
}

std::vector<std::string> names(Random& random, size_t count) {
  std::vector<std::string> all;
  for (size_t i = 0; i < count; ++i) all.emplace_back(random.pick(kFieldNames));
  return all;
}

hxArrayPtr struct_of(Random& random, std::vector<hxArrayPtr> children, size_t length) {
  const auto child_names = names(random, children.size());
  return WrittenEnvelope("struct", "struct", validity(random, length),
                         StructData(child_names, std::move(children)));
}

hxArrayPtr nested_envelope(Random& random, size_t length, int depth) {
  if (random.once_in(2)) {
    return list_of(random, any_envelope(random, random.pick(kLengths), depth - 1), length);
  }
  std::vector<hxArrayPtr> children;
  for (size_t n = 1 + random.below(3); n > 0; --n) {
    children.push_back(any_envelope(random, length, depth - 1));
  }
  return struct_of(random, std::move(children), length);
}

struct StructType {
  const char* name;
  hxArrayPtr (*data)(Random&, size_t length);
};

constexpr StructType kStructTypes[] = {{"string", text_data},
                                       {"char", text_data},
                                       {"binary_array", text_data},
                                       {"logical", logical_data},
                                       {"datetime", datetime_data},
                                       {"duration", duration_data},
                                       {"categorical", categorical_data}};

}  // namespace

Dims any_dims(Random& random, size_t count) {
  switch (random.below(6)) {
    case 0:
      return {1, count};
    case 1:
      return {1, 1, count};
    case 2:
      if (count % 2 == 0) return {2, count / 2};
      break;
    default:
      break;
  }
  return {count, 1};
}

hxArrayPtr any_numbers(Random& random, hxClassID class_id, size_t count) {
  std::vector<std::uint64_t> words(count);
  for (std::uint64_t& word : words) word = random.next();
  hxArrayPtr array = hxCreateNumericArray(any_dims(random, count), class_id, hxComplexity::Real);
  const size_t size = count * hxGetElementSize(array.get());
  if (size > 0) std::memcpy(hxGetData(array.get()), words.data(), size);
  return array;
}

hxArrayPtr any_value(Random& random) {
  const size_t count = random.below(3);
  switch (random.below(8)) {
    case 0:
      return Char(random.pick(kTypeNames));
    case 1:
      return Logical(any_dims(random, count), std::vector<bool>(count, true));
    case 2:
      return hxCreateCellArray(Dims{1, count});
    case 3:
      return Struct({});
    case 4:
      return random.once_in(2) ? Strings({u"text"}) : ObjectArray("table", {1, 1}, {}, {{}});
    default:
      return any_numbers(random, random.pick(kNumberClasses), count);
  }
}

hxArrayPtr any_buffer(Random& random, size_t size) {
  return BufferOf(Char("buffer"), any_numbers(random, hxClassID::UInt8, size));
}

hxArrayPtr any_envelope(Random& random, size_t length, int depth) {
  if (depth > 0 && random.once_in(4)) return nested_envelope(random, length, depth);
  hxArrayPtr valid = validity(random, length);
  if (random.once_in(4)) {
    hxArrayPtr data = any_numbers(random, random.pick(kNumberClasses), length);
    return WrittenEnvelope("array", random.pick(kTypeNames), std::move(valid), std::move(data));
  }
  const StructType& type = random.pick(kStructTypes);
  return WrittenEnvelope("array", type.name, std::move(valid), type.data(random, length));
}

hxArrayPtr any_envelopes(Random& random, size_t count, size_t length, int depth) {
  std::vector<hxArrayPtr> elements;
  for (size_t i = 0; i < count; ++i) elements.push_back(any_envelope(random, length, depth));
  return StructElements(any_dims(random, count), kEnvelopeFields, elements);
}

hxArrayPtr deep_envelope(Random& random, size_t levels) {
  hxArrayPtr inner = any_envelope(random, 1, 0);
  for (; levels > 0; --levels) {
    if (random.once_in(2)) {
      inner = list_of(random, std::move(inner), 1);
      continue;
    }
    std::vector<hxArrayPtr> children;
    children.push_back(std::move(inner));
    inner = struct_of(random, std::move(children), 1);
  }
  return inner;
}

hxArrayPtr any_table(Random& random) {
  const size_t columns = random.below(4);
  const auto column_names = names(random, columns);
  hxArrayPtr kind = Char(random.once_in(2) ? "table" : "array");
  return TableOf(std::move(kind), Names(column_names),
                 any_envelopes(random, columns, random.pick(kLengths), 1));
}

}  // namespace numera::gauntlet::reading
