#include "numera/core/types/dictionary_codes.h"

#include <arrow/type.h>
#include <arrow/util/bit_util.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "numera/core/messages.h"
#include "numera/format/bitmap.h"
#include "numera/format/number_classes.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::ArrayData;
using ArrayDataResult = ::arrow::Result<std::shared_ptr<ArrayData>>;

/// Codes of one type. Buffers need not be aligned.
template <std::integral Code>
class Codes {
 public:
  explicit Codes(Bytes bytes) : bytes_(bytes) {}

  Bytes bytes() const { return bytes_; }
  size_t size() const { return bytes_.size() / sizeof(Code); }
  Code operator[](size_t i) const {
    Code code;
    std::memcpy(&code, bytes_.data() + i * sizeof(Code), sizeof(Code));
    return code;
  }

 private:
  Bytes bytes_;
};

/// Whether all codes are less than `limit`, which is positive. If `limit` <= `kTopBit`, a code of
/// `limit` or more sets the top bit of `bits`. Unlike a comparison, this vectorizes on every
/// processor.
template <std::unsigned_integral Code>
bool are_below(Codes<Code> codes, Code limit) {
  constexpr Code kTopBit = Code{1} << (8 * sizeof(Code) - 1);
  if (limit > kTopBit) {
    Code largest = 0;
    for (size_t i = 0; i < codes.size(); ++i) largest = std::max(largest, codes[i]);
    return largest < limit;
  }
  const auto last = static_cast<Code>(limit - 1);
  Code bits = 0;
  for (size_t i = 0; i < codes.size(); ++i) {
    bits = static_cast<Code>(bits | codes[i] | static_cast<Code>(last - codes[i]));
  }
  return bits < kTopBit;
}

template <class Code>
bool are_within(Codes<Code> codes, std::int64_t dictionary_length) {
  using Unsigned = std::make_unsigned_t<Code>;
  if (codes.size() == 0) return true;
  if (dictionary_length <= 0) return false;
  constexpr auto kMost = static_cast<Unsigned>(std::numeric_limits<Code>::max());
  const Codes<Unsigned> unsigned_codes(codes.bytes());
  if (std::cmp_less_equal(dictionary_length, kMost)) {
    return are_below(unsigned_codes, static_cast<Unsigned>(dictionary_length));
  }
  // The dictionary has an entry for every non-negative code.
  return std::is_unsigned_v<Code> || are_below(unsigned_codes, static_cast<Unsigned>(kMost + 1U));
}

/// A copy with offset 0, codes within the dictionary and a bitmap that covers all codes.
template <class Code>
ArrayDataResult rebuild(const ArrayView& chunk, Codes<Code> codes, Bytes bits) {
  const std::int64_t dictionary_length = chunk.data->dictionary->length;
  const auto is_valid = [&](size_t i) {
    const size_t bit = static_cast<size_t>(chunk.offset) + i;
    return bit / 8 >= bits.size() || ::arrow::bit_util::GetBit(bits.data(), bit);
  };
  ARROW_ASSIGN_OR_RAISE(std::shared_ptr<::arrow::Buffer> bitmap,
                        ::arrow::AllocateBuffer(format::bitmap_bytes(chunk.length)));
  ARROW_ASSIGN_OR_RAISE(
      std::shared_ptr<::arrow::Buffer> values,
      ::arrow::AllocateBuffer(static_cast<std::int64_t>(codes.size() * sizeof(Code))));
  std::memset(bitmap->mutable_data(), 0, static_cast<size_t>(bitmap->size()));
  std::int64_t nulls = 0;
  for (size_t i = 0; i < codes.size(); ++i) {
    Code code = codes[i];
    const bool valid = is_valid(i);
    if (std::cmp_less(code, 0) || std::cmp_greater_equal(code, dictionary_length)) {
      if (valid) return messages::wrong_code(std::to_string(code), i, dictionary_length);
      code = 0;
    }
    ::arrow::bit_util::SetBitTo(bitmap->mutable_data(), static_cast<std::int64_t>(i), valid);
    nulls += !valid;
    std::memcpy(values->mutable_data() + i * sizeof(Code), &code, sizeof(Code));
  }
  auto rebuilt = ArrayData::Make(chunk.data->type, chunk.length, {bitmap, values}, nulls);
  rebuilt->dictionary = chunk.data->dictionary;
  return rebuilt;
}

template <class Code>
ArrayDataResult within_dictionary(const ArrayView& chunk) {
  const Codes<Code> codes(fixed_width_values(chunk, sizeof(Code)));
  std::shared_ptr<ArrayData> same = copy_of_codes(chunk);
  const Bytes bits = same->null_count != 0 ? unsliced_validity(chunk) : Bytes();
  const bool covered =
      bits.empty() ||
      std::cmp_less_equal(format::bitmap_bytes(chunk.offset + chunk.length), bits.size());
  if (!covered || !are_within(codes, chunk.data->dictionary->length)) {
    return rebuild(chunk, codes, bits);
  }
  // Arrow asks for the address of the codes even if there are none.
  if (codes.size() == 0 && same->buffers[1] != nullptr && !same->buffers[1]->is_cpu()) {
    same->buffers[1] = nullptr;
  }
  // If the null count is not 0, Arrow reads the bitmap without checking that there is one.
  if (bits.empty()) {
    same->buffers[0] = nullptr;
    same->null_count = 0;
  }
  return same;
}

}  // namespace

std::shared_ptr<ArrayData> copy_of_codes(const ArrayView& chunk) {
  auto copy = chunk.data->Copy();
  copy->offset = chunk.offset;
  copy->length = chunk.length;
  copy->null_count = count_nulls(chunk);
  copy->buffers.resize(2);
  return copy;
}

::arrow::Result<std::shared_ptr<::arrow::DictionaryArray>> codes_within_dictionary(
    const ArrayView& chunk) {
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*chunk.data->type);
  const auto check = [&]<class Code>(const format::NumberClass<Code>&) {
    return within_dictionary<Code>(chunk);
  };
  ARROW_ASSIGN_OR_RAISE(const auto data, format::with_index_class(type.index_type()->id(), check));
  return std::make_shared<::arrow::DictionaryArray>(data);
}

::arrow::Result<std::shared_ptr<::arrow::Buffer>> nonempty_map(
    const std::shared_ptr<::arrow::Buffer>& map) {
  if (map->size() > 0) return map;
  ARROW_ASSIGN_OR_RAISE(std::shared_ptr<::arrow::Buffer> zero,
                        ::arrow::AllocateBuffer(sizeof(std::int32_t)));
  std::memset(zero->mutable_data(), 0, sizeof(std::int32_t));
  return zero;
}

}  // namespace numera::io::arrow::core
