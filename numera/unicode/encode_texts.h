#pragma once

/// \file
/// Texts to UTF-8 bytes and offsets, whatever host value they stand in.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "numera/host/array.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/text_codec.h"
#include "numera/unicode/exceptions.h"

namespace numera::io::arrow::unicode {

struct EncodedTexts {
  hxArrayPtr bytes;    ///< uint8 column with a zero byte at its end
  hxArrayPtr offsets;  ///< uint64 column of one entry more than there are texts
};

/// Whether every code unit is below 0x80. Without an early exit, so that it becomes vector code.
inline bool is_ascii(std::u16string_view text) {
  char16_t bits = 0;
  for (const char16_t unit : text) bits |= unit;
  return bits < 0x80;
}

/// ASCII, one byte a code unit.
inline void narrow_ascii(std::u16string_view text, std::uint8_t* bytes) {
  for (size_t i = 0; i < text.size(); ++i) bytes[i] = static_cast<std::uint8_t>(text[i]);
}

/// What the codec makes of the texts that are not ASCII, all of it in one buffer.
class ConvertedTexts {
 public:
  /// Converts text `i` and returns how many bytes that gives.
  size_t append(size_t i, std::u16string_view text) {
    std::string converted = convert(i, text);
    const size_t size = converted.size();
    indexes_.push_back(i);
    if (bytes_.empty()) {
      bytes_ = std::move(converted);
    } else {
      bytes_ += converted;
    }
    return size;
  }

  /// Whether text `i` was converted. Texts are asked for in order.
  bool is_next(size_t i) const { return next_ < indexes_.size() && indexes_[next_] == i; }

  /// Copies the `size` bytes of that text.
  void take_next(size_t size, std::uint8_t* target) {
    if (size > 0) std::memcpy(target, bytes_.data() + position_, size);
    position_ += size;
    ++next_;
  }

 private:
  std::string convert(size_t i, std::u16string_view text) const {
    try {
      return codec_.convert(text.data(), text.size());
    } catch (const hxCodecError& error) {
      throw hxTaggedException<UnrecognizedUTF16Character>(
          {std::uint64_t{i} + 1, std::string(error.what())});
    }
  }

  const hxUTF16ToUTF8 codec_{"UTF-8"};
  std::string bytes_;
  std::vector<size_t> indexes_;
  size_t next_ = 0;
  size_t position_ = 0;
};

/// A column of zeros, and its elements.
template <class T>
std::pair<hxArrayPtr, T*> make_zeros(hxClassID class_id, size_t length) {
  hxArrayPtr column =
      hxCreateNumericArray(std::array{length, size_t{1}}, class_id, hxComplexity::Real);
  T* const elements = static_cast<T*>(hxGetData(column.get()));
  return {std::move(column), elements};
}

/// Encodes `count` texts. `check(i)` is called once before text i is first asked for and throws
/// what is wrong with it; `text(i)` gives it as a `std::u16string_view`, twice.
template <class Check, class Text>
EncodedTexts encode_texts(size_t count, const Check& check, const Text& text) {
  auto [offsets, ends] = make_zeros<std::uint64_t>(hxClassID::UInt64, count + 1);
  if (count == 0) {
    return {make_zeros<std::uint8_t>(hxClassID::UInt8, 1).first, std::move(offsets)};
  }
  ConvertedTexts converted;
  for (size_t i = 0; i < count; ++i) {
    check(i);
    const std::u16string_view units = text(i);
    ends[i + 1] = ends[i] + (is_ascii(units) ? units.size() : converted.append(i, units));
  }
  auto [bytes, first] = make_zeros<std::uint8_t>(hxClassID::UInt8, ends[count] + 1);
  for (size_t i = 0; i < count; ++i) {
    if (converted.is_next(i)) {
      converted.take_next(ends[i + 1] - ends[i], first + ends[i]);
    } else {
      narrow_ascii(text(i), first + ends[i]);
    }
  }
  return {std::move(bytes), std::move(offsets)};
}

}  // namespace numera::io::arrow::unicode
