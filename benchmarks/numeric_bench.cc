// Numbers and truth values, and a call on one element.

#include <array>
#include <memory>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

constexpr std::int64_t kNumbers = 10'000'000;
constexpr std::int64_t kUnalignedBy = 5;  // bits of a first chunk

struct NumberColumn {
  std::shared_ptr<::arrow::DoubleArray> whole;
  ColumnPtr column;
};

NumberColumn number_column(bool nulls, std::int64_t chunks) {
  auto whole = doubles(kNumbers, nulls);
  auto column = column_of(whole, chunks);
  return {std::move(whole), std::move(column)};
}

hxArrayPtr column_to_host(const NumberColumn& input) {
  return core::to_numera(input.column).ValueOrDie();
}

hxArrayPtr copy_whole(const NumberColumn& input) {
  return copied(value_bytes(*input.whole), hxClassID::Double);
}

std::vector<hxArrayPtr> copy_with_bitmap(const NumberColumn& input) {
  const auto bitmap_bytes = static_cast<size_t>((input.whole->length() + 7) / 8);
  std::vector<hxArrayPtr> columns;
  columns.push_back(copy_whole(input));
  columns.push_back(copied({input.whole->null_bitmap_data(), bitmap_bytes}, hxClassID::UInt8));
  return columns;
}

std::span<const std::uint8_t> bits_of(const ::arrow::Array& array) {
  const auto& buffer = *array.data()->buffers[1];
  return {buffer.data(), static_cast<size_t>((array.length() + 7) / 8)};
}

ColumnPtr with_chunk_of_5_bits_before(const ColumnPtr& bits) {
  return std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{booleans(kUnalignedBy), bits->chunk(0)});
}

/// Every word of the bits, moved by as many bits as the first chunk has.
hxArrayPtr shift_bits(const ColumnPtr& column) {
  const auto source = bits_of(*column->chunk(1));
  hxArrayPtr result = copied(source, hxClassID::UInt8);
  auto* const target = static_cast<std::uint64_t*>(hxGetData(result.get()));
  const auto* const words = reinterpret_cast<const std::uint64_t*>(source.data());
  for (size_t i = 1; i < source.size() / 8; ++i) {
    target[i] = words[i] << kUnalignedBy | words[i - 1] >> (64 - kUnalignedBy);
  }
  return result;
}

constexpr std::array<size_t, 2> kOne = {1, 1};
constexpr std::array<size_t, 2> kNone = {0, 1};
constexpr std::array kFields = {"ArrowType", "Type", "Valid", "Data"};
constexpr std::array kBufferFields = {"ArrowType", "Values", "Length"};

/// The host calls that make the envelope of one number.
hxArrayPtr bare_envelope(const std::shared_ptr<::arrow::DoubleArray>& number) {
  hxArrayPtr valid = hxCreateStructArray(kOne, kBufferFields);
  hxSetCell(valid.get(), 0, hxCreateCharArray(u"buffer", 6));
  hxSetCell(valid.get(), 1, hxCreateNumericArray(kNone, hxClassID::UInt8, hxComplexity::Real));
  hxSetCell(valid.get(), 2, hxCreateNumericArray(kOne, hxClassID::Double, hxComplexity::Real));
  hxArrayPtr envelope = hxCreateStructArray(kOne, kFields);
  hxSetCell(envelope.get(), 0, hxCreateCharArray(u"array", 5));
  hxSetCell(envelope.get(), 1, hxCreateCharArray(u"double", 6));
  hxSetCell(envelope.get(), 2, std::move(valid));
  hxSetCell(envelope.get(), 3, copied(value_bytes(*number), hxClassID::Double));
  return envelope;
}

hxArrayPtr encoded_doubles(std::int64_t length) {
  return core::to_numera(ArrayPtr(doubles(length))).ValueOrDie();
}

ArrayPtr encoded_to_arrow(const hxArrayPtr& encoded) {
  return core::to_arrow<::arrow::Array>(encoded.get()).ValueOrDie();
}

/// An array over the same memory, without a look at what the envelope says.
ArrayPtr wrap(const hxArrayPtr& encoded) {
  const hxArray* const data = hxGetField(encoded.get(), 0, "Data");
  const auto length = static_cast<std::int64_t>(hxGetNumberOfElements(data));
  return std::make_shared<::arrow::DoubleArray>(
      length, std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(hxGetData(data)),
                                                length * 8));
}

}  // namespace

void add_numeric_rows() {
  add_row("to_host/float64", [] { return number_column(false, 1); }, column_to_host, copy_whole);
  add_row(
      "to_host/float64_nulls", [] { return number_column(true, 1); }, column_to_host,
      copy_with_bitmap);
  add_row(
      "to_host/float64_1000_chunks", [] { return number_column(false, 1000); }, column_to_host,
      copy_whole);

  const auto to_host = [](const auto& values) { return core::to_numera(values).ValueOrDie(); };
  const auto bits = [] { return column_of(booleans(kNumbers)); };
  add_row("to_host/bool_aligned", bits, to_host, [](const ColumnPtr& column) {
    return copied(bits_of(*column->chunk(0)), hxClassID::UInt8);
  });
  add_row(
      "to_host/bool_unaligned", [=] { return with_chunk_of_5_bits_before(bits()); }, to_host,
      shift_bits);

  add_row(
      "to_host/one_call", [] { return doubles(1); },
      [](const ArrayPtr& number) { return core::to_numera(number).ValueOrDie(); }, bare_envelope);
  add_row("to_arrow/one_call", [] { return encoded_doubles(1); }, encoded_to_arrow, wrap);
  add_row(
      "to_arrow/one_call_1e7", [] { return encoded_doubles(kNumbers); }, encoded_to_arrow, wrap);
}

}  // namespace numera::benchmarks
