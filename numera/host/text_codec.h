#pragma once

/// \file
/// The host's strict text codecs. A codec never replaces invalid text but rejects it: unpaired
/// surrogates, overlong forms, surrogate code points in UTF-8, truncated sequences and values above
/// U+10FFFF.

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "numera/export.h"

/// A codec rejected a text. `what()` describes the fault in the host's words and gives its
/// position: the byte or code unit, counted from 0.
class NUMERA_EXPORT hxCodecError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Converts UTF-8 to UTF-16. Conversion does not change the codec: all threads can share one.
class NUMERA_EXPORT hxUTF8ToUTF16 {
 public:
  /// `encoding` names the source, "UTF-8". Throws `std::invalid_argument` for any other.
  explicit hxUTF8ToUTF16(const char* encoding);
  ~hxUTF8ToUTF16();
  hxUTF8ToUTF16(const hxUTF8ToUTF16&) = delete;
  hxUTF8ToUTF16& operator=(const hxUTF8ToUTF16&) = delete;

  /// Converts all of `text`; NUL is kept. Throws `hxCodecError` and `std::bad_alloc`. Linear time.
  std::u16string convert(std::string_view text) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

/// Converts UTF-16 to UTF-8. Conversion does not change the codec: all threads can share one.
class NUMERA_EXPORT hxUTF16ToUTF8 {
 public:
  /// `encoding` names the target, "UTF-8". Throws `std::invalid_argument` for any other.
  explicit hxUTF16ToUTF8(const char* encoding);
  ~hxUTF16ToUTF8();
  hxUTF16ToUTF8(const hxUTF16ToUTF8&) = delete;
  hxUTF16ToUTF8& operator=(const hxUTF16ToUTF8&) = delete;

  /// Converts `length` code units; NUL is kept. Throws `hxCodecError` and `std::bad_alloc`. Linear
  /// time.
  std::string convert(const char16_t* text, size_t length) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};
