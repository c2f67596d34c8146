#pragma once

/// \file
/// Converts the texts of any host value to UTF-8 bytes and offsets.

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
#include "numera/unicode/text_runs.h"

namespace numera::io::arrow::unicode {

struct EncodedTexts {
  hxArrayPtr bytes;    ///< uint8 column with a zero byte at its end
  hxArrayPtr offsets;  ///< uint64 column with one entry more than there are texts
};

/// A column of zeros and a pointer to its elements.
template <class T>
std::pair<hxArrayPtr, T*> make_zeros(hxClassID class_id, size_t length) {
  hxArrayPtr column =
      hxCreateNumericArray(std::array{length, size_t{1}}, class_id, hxComplexity::Real);
  T* const elements = static_cast<T*>(hxGetData(column.get()));
  return {std::move(column), elements};
}

/// Copies ASCII text, one byte per code unit.
inline void narrow_ascii(std::u16string_view text, std::uint8_t* bytes) {
  for (size_t i = 0; i < text.size(); ++i) bytes[i] = static_cast<std::uint8_t>(text[i]);
}

/// Converts a run to exactly `size` bytes, its measured length. Returns false if the codec returns
/// a different number of bytes.
inline bool encode_run(const TextRun& run, const hxUTF16ToUTF8& codec, size_t size,
                       std::uint8_t* bytes) {
  if (run.ascii) {
    narrow_ascii(run.units, bytes);
    return true;
  }
  const std::string converted = codec.convert(run.units.data(), run.units.size());
  if (converted.size() != size) return false;
  std::memcpy(bytes, converted.data(), size);
  return true;
}

/// The bytes of all texts. Returns null if any text is rejected, without telling which one.
template <class Text>
hxArrayPtr encode_runs(size_t count, const Text& text, const hxUTF16ToUTF8& codec,
                       std::uint64_t* ends) {
  try {
    const std::vector<TextRun> runs = gather_runs(count, text, ends);
    auto [bytes, elements] = make_zeros<std::uint8_t>(hxClassID::UInt8, ends[count] + 1);
    size_t begin = 0;
    for (const TextRun& run : runs) {
      const size_t end = ends[run.end];
      if (!encode_run(run, codec, end - begin, elements + begin)) return nullptr;
      begin = end;
    }
    return std::move(bytes);
  } catch (const hxTaggedException<InvalidCellArray>&) {
    return nullptr;
  } catch (const hxCodecError&) {
    return nullptr;
  }
}

/// The same, one text at a time. The exception names the first text that is rejected.
template <class Text>
hxArrayPtr encode_one_by_one(size_t count, const Text& text, const hxUTF16ToUTF8& codec,
                             std::uint64_t* ends) {
  std::string all;
  for (size_t i = 0; i < count; ++i) {
    const std::u16string_view units = text(i);
    try {
      all += codec.convert(units.data(), units.size());
    } catch (const hxCodecError& error) {
      throw hxTaggedException<UnrecognizedUTF16Character>(
          {std::uint64_t{i} + 1, std::string(error.what())});
    }
    ends[i + 1] = all.size();
  }
  auto [bytes, elements] = make_zeros<std::uint8_t>(hxClassID::UInt8, all.size() + 1);
  std::memcpy(elements, all.data(), all.size());
  return std::move(bytes);
}

/// Encodes `count` texts. `text(i)` returns text i as a `std::u16string_view` that stays valid
/// during this call, or throws if text i is invalid. It is called in order, once per text; if a
/// text is rejected, the texts are requested again from the first one.
template <class Text>
EncodedTexts encode_texts(size_t count, const Text& text) {
  auto [offsets, ends] = make_zeros<std::uint64_t>(hxClassID::UInt64, count + 1);
  if (count == 0) {
    return {make_zeros<std::uint8_t>(hxClassID::UInt8, 1).first, std::move(offsets)};
  }
  const hxUTF16ToUTF8 codec("UTF-8");
  hxArrayPtr bytes = encode_runs(count, text, codec, ends);
  if (bytes == nullptr) bytes = encode_one_by_one(count, text, codec, ends);
  return {std::move(bytes), std::move(offsets)};
}

}  // namespace numera::io::arrow::unicode
