#pragma once

/// \file
/// String arrays: arrays whose elements are UTF-16 texts or missing. A host derives its own. Any
/// number of threads may read one at a time, through the `const` members, while none writes it.

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

/// The codec that reads the library's UTF-8: one per shared object that calls this (its body stands
/// in this header), made on first use and only read afterwards, by any number of threads.
inline const hxUTF8ToUTF16& hxUTF8Decoder() {
  static const hxUTF8ToUTF16 codec("UTF-8");
  return codec;
}

/// The elements of a string array. A new one holds empty texts. Operations with an index throw
/// `std::out_of_range` where there is no such element; those that store throw `std::bad_alloc`.
class NUMERA_EXPORT hxStringArray {
 public:
  virtual ~hxStringArray() = default;

  /// At least two, fixed at construction. The view lives as long as this.
  virtual std::span<const size_t> dimensions() const = 0;
  /// Number of elements, missing ones included: the product of the dimensions.
  virtual size_t size() const = 0;
  /// Element `i` in storage order; nullopt where it is missing. The view lives until the next
  /// change of the array.
  virtual std::optional<std::u16string_view> element(size_t i) const = 0;
  /// Copies the text, code unit by code unit: NUL and unpaired surrogates are kept. The element is
  /// not missing from then on.
  virtual void set(size_t i, std::u16string_view text) = 0;
  /// A missing element has no text; what it held before is not seen again.
  virtual void set_missing(size_t i) = 0;

  /// Sets the elements first, first + 1, ... from UTF-8 texts that lie back to back: text k is
  /// bytes [offsets[k], offsets[k + 1]). `offsets` has one entry more than there are texts, never
  /// falls, and stays within `bytes`.
  ///
  /// Returns the index in this array (first + k) of the first text that is not valid UTF-8, or
  /// none. After a failure the elements from `first` on are unspecified.
  ///
  /// These bodies set one element after another, and return the index of one that cannot be set
  /// for another reason as well. A host overrides them where it can do better; an override may
  /// throw where it cannot say which text failed.
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
        throw;  // a range outside of the array is no fault of the text
      } catch (...) {
        return first + k;
      }
    }
    return std::nullopt;
  }
};

/// A new string array object of the given dimensions, at least two, every element the empty text;
/// owned by the caller. Throws `std::bad_alloc`.
NUMERA_EXPORT std::unique_ptr<hxStringArray> hxMakeStringArray(std::span<const size_t> dims);
/// Makes an array of it, which owns it: class `hxClassID::Object`, class name "string", no fields.
/// No text is copied. Throws `std::invalid_argument` for a null pointer, and `std::bad_alloc`; the
/// strings are destroyed then.
NUMERA_EXPORT hxArrayPtr hxCreateStringArrayFrom(std::unique_ptr<hxStringArray> strings);
/// `array` is not null. True for what `hxCreateStringArrayFrom` has made and for copies of it; the
/// class alone does not tell, since other objects have it too.
NUMERA_EXPORT bool hxIsStringArray(const hxArray* array) noexcept;
/// The elements, borrowed while the array lives. Throws `std::invalid_argument` "Array is not
/// string array.", for a null array too.
NUMERA_EXPORT const hxStringArray& hxGetStringArray(const hxArray* array);
