#pragma once

/// \file
/// String arrays: arrays whose elements are UTF-16 texts or missing. A host derives its own class.
/// Any number of threads may read a string array through its `const` members while no thread writes
/// it.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

#include "numera/export.h"
#include "numera/host/array.h"
#include "numera/host/text_codec.h"

/// The codec that decodes the library's UTF-8. The function is inline, so each shared object that
/// calls it has its own codec. The codec is created on first use and then only read, by any number
/// of threads.
inline const hxUTF8ToUTF16& hxUTF8Decoder() {
  static const hxUTF8ToUTF16 codec("UTF-8");
  return codec;
}

/// The elements of a string array. A new one holds empty texts. Operations with an index throw
/// `std::out_of_range` if there is no such element. Operations that store throw `std::bad_alloc`.
class NUMERA_EXPORT hxStringArray {
 public:
  virtual ~hxStringArray() = default;

  /// At least two, fixed at construction. The view lives as long as this object.
  virtual std::span<const size_t> dimensions() const = 0;
  /// Number of elements, missing ones included: the product of the dimensions.
  virtual size_t size() const = 0;
  /// Element `i` in storage order; nullopt if it is missing. The view is valid until the next
  /// change of the array.
  ///
  /// A host that keeps texts in another encoding, such as UTF-8, may convert them on demand.
  /// Several threads may read the same element for the first time at once, also through shared
  /// copies of the array: such a host has to lock. The conversion may throw `std::bad_alloc`; the
  /// next call then works if there is memory.
  virtual std::optional<std::u16string_view> element(size_t i) const = 0;
  /// Copies the text unchanged: NUL and unpaired surrogates are kept. Afterwards the element is not
  /// missing.
  virtual void set(size_t i, std::u16string_view text) = 0;
  /// Makes the element missing. Its previous text can no longer be read.
  virtual void set_missing(size_t i) = 0;

  /// Sets the elements first, first + 1, ... from contiguous UTF-8 texts: text k is bytes
  /// [offsets[k], offsets[k + 1]). `offsets` has one entry more than there are texts, never
  /// decreases, and stays within `bytes`.
  ///
  /// Returns the index in this array (first + k) of the first text that is not valid UTF-8, or
  /// nullopt. After a failure the elements from `first` on are unspecified.
  ///
  /// The default implementation sets one element after another. It also returns the index of an
  /// element that cannot be set for another reason, such as lack of memory. An index out of range
  /// throws. A host can override it with something faster. An override may throw if it cannot tell
  /// which text failed.
  virtual std::optional<size_t> assign_utf8(size_t first, std::span<const std::int32_t> offsets,
                                            const std::uint8_t* bytes) {
    return assign_one_by_one(first, offsets, bytes);
  }
  /// The same with 64-bit offsets.
  virtual std::optional<size_t> assign_utf8(size_t first, std::span<const std::int64_t> offsets,
                                            const std::uint8_t* bytes) {
    return assign_one_by_one(first, offsets, bytes);
  }

 private:
  template <class Offset>
  std::optional<size_t> assign_one_by_one(size_t first, std::span<const Offset> offsets,
                                          const std::uint8_t* bytes) {
    for (size_t k = 0; k + 1 < offsets.size(); ++k) {
      const auto begin = static_cast<size_t>(offsets[k]);
      const auto end = static_cast<size_t>(offsets[k + 1]);
      const std::string_view text =
          begin == end
              ? std::string_view()
              : std::string_view(reinterpret_cast<const char*>(bytes) + begin, end - begin);
      try {
        set(first + k, hxUTF8Decoder().convert(text));
      } catch (const std::logic_error&) {
        throw;  // an index out of range is not a fault of the text
      } catch (...) {
        return first + k;
      }
    }
    return std::nullopt;
  }
};

/// New string elements of the given dimensions, at least two; every element is the empty text. The
/// caller owns the result. Throws `std::bad_alloc`.
NUMERA_EXPORT std::unique_ptr<hxStringArray> hxMakeStringArray(std::span<const size_t> dims);
/// Creates an array that owns `strings`: class `hxClassID::Object`, class name "string", no fields.
/// No text is copied. Throws `std::invalid_argument` for a null pointer, and `std::bad_alloc`. On
/// failure `strings` is destroyed.
NUMERA_EXPORT hxArrayPtr hxCreateStringArrayFrom(std::unique_ptr<hxStringArray> strings);
/// True for results of `hxCreateStringArrayFrom` and their copies. The class does not tell: other
/// objects have it too. `array` is not null.
NUMERA_EXPORT bool hxIsStringArray(const hxArray* array) noexcept;
/// The elements, borrowed; they live as long as the array. Throws `std::invalid_argument` "Array is
/// not string array.", also for a null array.
NUMERA_EXPORT const hxStringArray& hxGetStringArray(const hxArray* array);
