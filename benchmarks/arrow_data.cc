#include "benchmarks/arrow_data.h"

#include <arrow/buffer.h>
#include <arrow/builder.h>
#include <arrow/type.h>
#include <arrow/util/bit_util.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace numera::benchmarks {
namespace {

using BufferPtr = std::shared_ptr<::arrow::Buffer>;

BufferPtr make_buffer(std::int64_t bytes) { return ::arrow::AllocateBuffer(bytes).ValueOrDie(); }

template <class IsSet>
BufferPtr make_bits(std::int64_t begin, std::int64_t length, IsSet is_set) {
  BufferPtr bits = ::arrow::AllocateEmptyBitmap(length).ValueOrDie();
  for (std::int64_t i = 0; i < length; ++i) {
    if (is_set(begin + i)) ::arrow::bit_util::SetBit(bits->mutable_data(), i);
  }
  return bits;
}

BufferPtr make_validity(std::int64_t begin, std::int64_t length, Nulls nulls) {
  if (nulls == Nulls::None) return nullptr;
  return make_bits(begin, length,
                   [=](std::int64_t i) { return nulls == Nulls::Some && i % 10 != 9; });
}

ArrayPtr make_array(std::shared_ptr<::arrow::DataType> type, std::int64_t begin,
                    std::int64_t length, Nulls nulls, std::vector<BufferPtr> buffers,
                    std::vector<ArrayPtr> children = {}) {
  buffers.insert(buffers.begin(), make_validity(begin, length, nulls));
  auto data = ::arrow::ArrayData::Make(std::move(type), length, std::move(buffers));
  for (const ArrayPtr& child : children) data->child_data.push_back(child->data());
  return ::arrow::MakeArray(std::move(data));
}

template <class T, class Value>
BufferPtr make_values(std::int64_t begin, std::int64_t length, Value value) {
  BufferPtr values = make_buffer(length * static_cast<std::int64_t>(sizeof(T)));
  auto* const out = reinterpret_cast<T*>(values->mutable_data());
  for (std::int64_t i = 0; i < length; ++i) out[i] = static_cast<T>(value(begin + i));
  return values;
}

/// Offsets of elements of equal width.
BufferPtr make_offsets(std::int64_t length, std::int64_t width) {
  return make_values<std::int32_t>(0, length + 1, [=](std::int64_t i) { return i * width; });
}

/// Texts made from `text`, with the element's number in decimal in place of the '#' signs.
ArrayPtr numbered(std::shared_ptr<::arrow::DataType> type, std::string_view text,
                  std::int64_t begin, std::int64_t length, Nulls nulls) {
  const auto width = static_cast<std::int64_t>(text.size());
  const auto first_digit = static_cast<std::int64_t>(text.find('#'));
  BufferPtr bytes = make_buffer(length * width);
  for (std::int64_t i = 0; i < length; ++i) {
    std::uint8_t* const element = bytes->mutable_data() + i * width;
    std::memcpy(element, text.data(), text.size());
    std::int64_t number = begin + i;
    for (std::int64_t digit = width - 1; digit >= first_digit; --digit, number /= 10) {
      element[digit] = static_cast<std::uint8_t>('0' + number % 10);
    }
  }
  return make_array(std::move(type), begin, length, nulls, {make_offsets(length, width), bytes});
}

std::int64_t itself(std::int64_t i) { return i; }

}  // namespace

void require(const ::arrow::Status& status) {
  if (!status.ok()) status.Abort();
}

ArrayPtr doubles(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return make_array(::arrow::float64(), begin, length, nulls,
                    {make_values<double>(
                        begin, length, [](std::int64_t i) { return static_cast<double>(i) / 2; })});
}

ArrayPtr integers(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return make_array(::arrow::int64(), begin, length, nulls,
                    {make_values<std::int64_t>(begin, length, itself)});
}

ArrayPtr booleans(std::int64_t begin, std::int64_t length, Nulls nulls) {
  const auto is_set = [](std::int64_t i) { return i % 3 == 0 || i % 7 == 0; };
  return make_array(::arrow::boolean(), begin, length, nulls, {make_bits(begin, length, is_set)});
}

ArrayPtr dates(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return make_array(
      ::arrow::date32(), begin, length, nulls,
      {make_values<std::int32_t>(begin, length, [](std::int64_t i) { return i % 20'000; })});
}

ArrayPtr times(std::int64_t begin, std::int64_t length, Nulls nulls) {
  constexpr std::int64_t kDay = 86'400'000'000;
  return make_array(
      ::arrow::time64(::arrow::TimeUnit::MICRO), begin, length, nulls,
      {make_values<std::int64_t>(begin, length, [](std::int64_t i) { return i * 1009 % kDay; })});
}

ArrayPtr timestamps(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return make_array(
      ::arrow::timestamp(::arrow::TimeUnit::MICRO, "UTC"), begin, length, nulls,
      {make_values<std::int64_t>(begin, length, [](std::int64_t i) { return i * 60'000'000; })});
}

ArrayPtr durations(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return make_array(::arrow::duration(::arrow::TimeUnit::SECOND), begin, length, nulls,
                    {make_values<std::int64_t>(begin, length, itself)});
}

ArrayPtr ascii_texts(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return numbered(::arrow::utf8(), "item #######", begin, length, nulls);
}

ArrayPtr mixed_texts(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return numbered(::arrow::utf8(), "Zürich 東京 Αθήνα ###", begin, length, nulls);
}

ArrayPtr byte_strings(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return numbered(::arrow::binary(), "bytes ##########", begin, length, nulls);
}

ArrayPtr categories(std::int64_t begin, std::int64_t length, Nulls nulls) {
  constexpr std::int64_t kCategories = 100;
  const std::int64_t first = length == 0 ? 0 : begin / length;
  ::arrow::StringBuilder names;
  for (std::int64_t i = 0; i < kCategories; ++i) {
    require(names.Append("category " + std::to_string((first + i) % kCategories)));
  }
  const ArrayPtr codes = make_array(::arrow::int32(), begin, length, nulls,
                                    {make_values<std::int32_t>(begin, length, [](std::int64_t i) {
                                      return i * 37 % kCategories;
                                    })});
  return std::make_shared<::arrow::DictionaryArray>(
      ::arrow::dictionary(::arrow::int32(), ::arrow::utf8()), codes, names.Finish().ValueOrDie());
}

ArrayPtr lists(std::int64_t begin, std::int64_t length, Nulls nulls) {
  constexpr std::int64_t kWidth = 8;
  return make_array(::arrow::list(::arrow::float64()), begin, length, nulls,
                    {make_offsets(length, kWidth)},
                    {doubles(begin * kWidth, length * kWidth, Nulls::None)});
}

ArrayPtr structs(std::int64_t begin, std::int64_t length, Nulls nulls) {
  return make_array(
      ::arrow::struct_(
          {::arrow::field("number", ::arrow::int64()), ::arrow::field("text", ::arrow::utf8())}),
      begin, length, nulls, {},
      {integers(begin, length, Nulls::None), ascii_texts(begin, length, Nulls::None)});
}

ArrayPtr maps(std::int64_t begin, std::int64_t length, Nulls nulls) {
  constexpr std::int64_t kWidth = 2;
  const auto type = ::arrow::map(::arrow::utf8(), ::arrow::int64());
  const ArrayPtr entries = make_array(type->field(0)->type(), 0, length * kWidth, Nulls::None, {},
                                      {ascii_texts(begin * kWidth, length * kWidth, Nulls::None),
                                       integers(begin * kWidth, length * kWidth, Nulls::None)});
  return make_array(type, begin, length, nulls, {make_offsets(length, kWidth)}, {entries});
}

ArrayPtr nested_lists(std::int64_t length, int levels) {
  ArrayPtr array = doubles(0, length, Nulls::None);
  for (int level = 0; level < levels; ++level) {
    array = make_array(::arrow::list(array->type()), 0, length, Nulls::None,
                       {make_offsets(length, 1)}, {array});
  }
  return array;
}

ArrayPtr nested_structs(std::int64_t length, int levels) {
  ArrayPtr array = doubles(0, length, Nulls::None);
  for (int level = 0; level < levels; ++level) {
    array = make_array(::arrow::struct_({::arrow::field("value", array->type())}), 0, length,
                       Nulls::None, {}, {array});
  }
  return array;
}

ColumnPtr make_column(MakeArray make, const Shape& shape) {
  constexpr std::int64_t kBefore = 7;
  constexpr std::int64_t kBehind = 6;
  if (shape.sliced) {
    const ArrayPtr longer = make(0, kBefore + shape.length + kBehind, shape.nulls);
    return std::make_shared<::arrow::ChunkedArray>(longer->Slice(kBefore, shape.length));
  }
  const std::int64_t step = (shape.length + shape.chunks - 1) / shape.chunks;
  ::arrow::ArrayVector chunks;
  for (std::int64_t begin = 0; begin < shape.length; begin += step) {
    chunks.push_back(make(begin, std::min(step, shape.length - begin), shape.nulls));
  }
  return std::make_shared<::arrow::ChunkedArray>(std::move(chunks));
}

TablePtr make_table(std::int64_t columns) {
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector arrays;
  for (std::int64_t i = 0; i < columns; ++i) {
    fields.push_back(::arrow::field("column " + std::to_string(i), ::arrow::float64()));
    arrays.push_back(doubles(i * kTableRows, kTableRows, Nulls::None));
  }
  return ::arrow::Table::Make(::arrow::schema(std::move(fields)), std::move(arrays));
}

}  // namespace numera::benchmarks
