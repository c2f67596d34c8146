#pragma once

/// \file
/// The host's strict text codecs. A codec refuses what it cannot decode instead of replacing it:
/// unpaired surrogates, overlong forms, surrogate code points in UTF-8, truncated sequences and
/// values above U+10FFFF.

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "numera/export.h"

/// A text that a codec refuses. `what()` says what is wrong with it, in the host's words, and at
/// which byte or code unit, counted from 0.
class NUMERA_EXPORT hxCodecError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Converts UTF-8 to UTF-16. Conversion only reads the codec, so one instance serves all threads.
class NUMERA_EXPORT hxUTF8ToUTF16 {
 public:
  /// `encoding` names the source, "UTF-8". Throws `std::invalid_argument` for any other.
  explicit hxUTF8ToUTF16(const char* encoding);
  ~hxUTF8ToUTF16();
  hxUTF8ToUTF16(const hxUTF8ToUTF16&) = delete;
  hxUTF8ToUTF16& operator=(const hxUTF8ToUTF16&) = delete;

  /// The whole text, NUL kept. Throws `hxCodecError` and `std::bad_alloc`. Linear in its length.
  std::u16string convert(std::string_view text) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

/// Converts UTF-16 to UTF-8. Conversion only reads the codec, so one instance serves all threads.
class NUMERA_EXPORT hxUTF16ToUTF8 {
 public:
  /// `encoding` names the target, "UTF-8". Throws `std::invalid_argument` for any other.
  explicit hxUTF16ToUTF8(const char* encoding);
  ~hxUTF16ToUTF8();
  hxUTF16ToUTF8(const hxUTF16ToUTF8&) = delete;
  hxUTF16ToUTF8& operator=(const hxUTF16ToUTF8&) = delete;

  /// `length` code units, NUL kept. Throws `hxCodecError` and `std::bad_alloc`. Linear in `length`.
  std::string convert(const char16_t* text, size_t length) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};
