#include <string>

#include "tests/gauntlet/model.h"
#include "tests/support/envelopes.h"

namespace numera::gauntlet {
namespace {

using ::arrow::TimeUnit;
using ::arrow::Type;
using namespace numera::testing;

template <class T>
hxArrayPtr numbers(const Column& column) {
  std::vector<T> values;
  for (const auto& chunk : column.chunks) {
    for (std::int64_t i = 0; i < chunk->length; ++i) {
      values.push_back(element_at<T>(*chunk, 1, chunk->offset + i));
    }
  }
  return numera::testing::Column<T>(values);
}

hxArrayPtr unit_name(TimeUnit::type unit) {
  switch (unit) {
    case TimeUnit::SECOND:
      return Char("seconds");
    case TimeUnit::MILLI:
      return Char("milliseconds");
    case TimeUnit::MICRO:
      return Char("microseconds");
    case TimeUnit::NANO:
      return Char("nanoseconds");
  }
  return Empty();
}

hxArrayPtr times(const Column& column, hxArrayPtr values) {
  const auto& type = static_cast<const ::arrow::TimeType&>(*column.type);
  return TimeData(std::move(values), unit_name(type.unit()));
}

hxArrayPtr timestamps(const Column& column) {
  const auto& type = static_cast<const ::arrow::TimestampType&>(*column.type);
  const std::string& zone = type.timezone();
  return WrittenTimestampData(numbers<std::int64_t>(column), unit_name(type.unit()),
                              hxCreateCharArray(zone.data(), zone.size()));
}

template <class ElementBytes>
hxArrayPtr cell_of_bytes(const Column& column, ElementBytes element_bytes) {
  hxArrayPtr cell = hxCreateCellArray(Dims{static_cast<size_t>(column.length()), 1});
  size_t k = 0;
  for (const auto& chunk : column.chunks) {
    for (std::int64_t i = 0; i < chunk->length; ++i) {
      hxSetCell(cell.get(), k++, numera::testing::Column<std::uint8_t>(element_bytes(*chunk, i)));
    }
  }
  return cell;
}

hxArrayPtr binaries(const Column& column) {
  return cell_of_bytes(column, [](const auto& chunk, std::int64_t i) { return text_at(chunk, i); });
}

hxArrayPtr fixed_binaries(const Column& column) {
  const std::int64_t width = column.type->byte_width();
  return cell_of_bytes(column, [width](const auto& chunk, std::int64_t i) {
    const std::int64_t begin = (chunk.offset + i) * width;
    return range_at(chunk, 1, begin, begin + width);
  });
}

/// Decodes bytes that are known to be valid UTF-8.
std::u16string utf16_of(const Bytes& utf8) {
  std::u16string units;
  for (size_t i = 0; i < utf8.size();) {
    const unsigned lead = utf8[i];
    const size_t more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    unsigned point = more == 0 ? lead : lead & (0x3FU >> more);
    for (size_t k = 1; k <= more; ++k) point = point << 6 | (utf8[i + k] & 0x3FU);
    i += more + 1;
    if (point >= 0x10000) {
      units.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
      point = 0xDC00 + ((point - 0x10000) & 0x3FF);
    }
    units.push_back(static_cast<char16_t>(point));
  }
  return units;
}

}  // namespace

hxArrayPtr model_texts(const Column& column) {
  std::vector<std::optional<std::u16string>> texts;
  for (const auto& chunk : column.chunks) {
    for (std::int64_t i = 0; i < chunk->length; ++i) texts.push_back(utf16_of(text_at(*chunk, i)));
  }
  return Strings(texts);
}

hxArrayPtr model_data(const Column& column) {
  switch (column.type->id()) {
    case Type::NA:
      return Scalar<std::int64_t>(column.length());
    case Type::BOOL:
      return model_logical(column);
    case Type::UINT8:
      return numbers<std::uint8_t>(column);
    case Type::INT8:
      return numbers<std::int8_t>(column);
    case Type::UINT16:
      return numbers<std::uint16_t>(column);
    case Type::INT16:
      return numbers<std::int16_t>(column);
    case Type::UINT32:
      return numbers<std::uint32_t>(column);
    case Type::INT32:
      return numbers<std::int32_t>(column);
    case Type::UINT64:
      return numbers<std::uint64_t>(column);
    case Type::INT64:
    case Type::DURATION:
      return numbers<std::int64_t>(column);
    case Type::FLOAT:
      return numbers<float>(column);
    case Type::DOUBLE:
      return numbers<double>(column);
    case Type::STRING:
    case Type::LARGE_STRING:
      return model_texts(column);
    case Type::BINARY:
    case Type::LARGE_BINARY:
      return binaries(column);
    case Type::FIXED_SIZE_BINARY:
      return fixed_binaries(column);
    case Type::DATE32:
      return DateData(numbers<std::int32_t>(column));
    case Type::DATE64:
      return DateData(numbers<std::int64_t>(column));
    case Type::TIME32:
      return times(column, numbers<std::int32_t>(column));
    case Type::TIME64:
      return times(column, numbers<std::int64_t>(column));
    case Type::TIMESTAMP:
      return timestamps(column);
    case Type::DICTIONARY:
      return model_categorical(column);
    case Type::LIST:
    case Type::LARGE_LIST:
      return model_lists(column);
    case Type::STRUCT:
      return model_structs(column);
    case Type::MAP:
      return model_maps(column);
    default:
      throw Refused();
  }
}

}  // namespace numera::gauntlet
