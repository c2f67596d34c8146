#include "tests/gauntlet/host_values.h"

#include <cstring>
#include <utility>

#include "tests/support/envelopes.h"

namespace numera::gauntlet {
namespace {

using namespace numera::testing;

HostMaking for_child(const HostMaking& making, std::uint64_t number) {
  return {child_making(making, number), making.shape};
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

/// The needed bytes, extended or cut as the memory of the case says.
hxArrayPtr bytes(Bytes needed, Part part, const HostMaking& making) {
  if (making.memory == Memory::kLonger) needed.insert(needed.end(), 9, 0x5A);
  const bool is_short = part == Part::kBitmap ? making.memory == Memory::kShortBitmap
                                              : making.memory == Memory::kShortBytes;
  if (is_short && !needed.empty()) {
    needed.resize(making.seed % 2 == 0 ? needed.size() / 2 : needed.size() - 1);
  }
  return numera::testing::Column<std::uint8_t>(needed);
}

hxArrayPtr validity(size_t length, const HostMaking& making) {
  if (making.nulls == Nulls::kNoBitmap) return BufferEnvelope({});
  Bytes bits = validity_bits(static_cast<std::int64_t>(length), making);
  return BufferOf(Char("buffer"), bytes(std::move(bits), Part::kBitmap, making));
}

template <class ValueAt>
hxArrayPtr numbers(hxClassID class_id, size_t length, const HostMaking& making, ValueAt value_at) {
  hxArrayPtr array =
      hxCreateNumericArray(dims_of(making.shape, length), class_id, hxComplexity::Real);
  const size_t width = hxGetElementSize(array.get());
  auto* const block = static_cast<std::uint8_t*>(hxGetData(array.get()));
  for (size_t i = 0; i < length; ++i) {
    const std::uint64_t value = value_at(i);
    std::memcpy(block + i * width, &value, width);
  }
  return array;
}

/// Numbers with random bits.
hxArrayPtr numbers(hxClassID class_id, size_t length, const HostMaking& making) {
  return numbers(class_id, length, making, [&](size_t i) { return mix(making.seed, i); });
}

hxArrayPtr start_offsets(const std::vector<std::int64_t>& starts, const HostMaking& making) {
  return numbers(hxClassID::UInt64, starts.size(), making,
                 [&](size_t i) { return static_cast<std::uint64_t>(starts[i]); });
}

/// Texts back to back, after two bytes that belong to no text.
hxArrayPtr texts_of(const std::vector<std::string>& texts, const HostMaking& making) {
  Bytes all = {'?', '?'};
  std::vector<std::int64_t> starts = {2};
  for (const std::string& text : texts) {
    all.insert(all.end(), text.begin(), text.end());
    starts.push_back(static_cast<std::int64_t>(all.size()));
  }
  return ListData(bytes(std::move(all), Part::kBytes, making), start_offsets(starts, making));
}

hxArrayPtr logical(size_t length, const HostMaking& making) {
  Bytes bits = random_bits(static_cast<std::int64_t>(length), making);
  return BitmapOf(bytes(std::move(bits), Part::kBytes, making),
                  Scalar(static_cast<double>(length) + 0.75));
}

hxArrayPtr categorical(const HostType& type, size_t length, HostMaking making) {
  making.dictionaries = type.dictionaries;
  const std::vector<std::string> texts = categories(making);
  const auto code_at = [&](size_t i) {
    return random_code(making, static_cast<std::int64_t>(i), texts.size());
  };
  return CategoricalData(texts_of(texts, for_child(making, 0)),
                         numbers(type.class_id, length, making, code_at),
                         Logical({making.seed % 2 == 0}));
}

hxArrayPtr list_data(const HostType& type, size_t length, const HostMaking& making) {
  const auto starts = random_starts(static_cast<std::int64_t>(length), making);
  const auto child_length = static_cast<size_t>(starts.back()) + 1;
  return ListData(make_host_value(type.children[0], child_length, for_child(making, 0)),
                  start_offsets(starts, making));
}

hxArrayPtr struct_data(const HostType& type, size_t length, const HostMaking& making) {
  return StructData({"x", "ключ"},
                    {make_host_value(type.children[0], length, for_child(making, 0)),
                     make_host_value(type.children[1], length, for_child(making, 1))});
}

hxArrayPtr data_of(const HostType& type, size_t length, const HostMaking& making) {
  constexpr std::uint64_t kSeconds = 86400;
  switch (type.kind) {
    case HostKind::kNumeric:
      return numbers(type.class_id, length, making);
    case HostKind::kLogical:
      return logical(length, making);
    case HostKind::kDatetime:
      return TimestampData(numbers(hxClassID::Int64, length, making), Char(type.units),
                           Char(making.seed % 2 == 0 ? "UTC" : ""));
    case HostKind::kDuration:
      return TimeData(numbers(type.class_id, length, making,
                              [&](size_t i) { return mix(making.seed, i) % kSeconds; }),
                      Char(type.units));
    case HostKind::kText:
      return texts_of(random_texts(static_cast<std::int64_t>(length), making), making);
    case HostKind::kCategorical:
      return categorical(type, length, making);
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
  return WrittenEnvelope(kind_text(type.kind), type.type, validity(length, making),
                         data_of(type, length, making));
}

}  // namespace numera::gauntlet
