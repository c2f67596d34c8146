#pragma once

/// \file
/// How an array lies in memory.
///
/// An array is a header (`hxArray`) that refers to a layout, which never changes, and to elements,
/// which do. Shared copies are further headers of the same layout and elements; both count those
/// who hold them. An array that is written while its elements are shared takes elements of its own
/// and keeps its layout, so dimensions and names handed out stay valid.
///
/// A header and its first elements are one block, and small elements lie in front of them:
///
///     [ elements up to 1 KiB ] Elements hxArray
///
/// so that a column of 16 bytes takes 64 in all. Layouts are blocks of their own, which the arrays
/// of one shape that a thread makes share (layout.h).

#include <atomic>
#include <cstddef>
#include <span>
#include <string_view>

#include "numera/host/array.h"
#include "numera/host/memory/blocks.h"
#include "numera/host/string_array.h"

namespace numera::host::memory {

enum class Content : unsigned char { Numbers, Slots, Texts };

struct Layout {
  std::atomic<size_t> holders;
  size_t block_bytes;  ///< of the block that it begins
  hxClassID class_id;
  Content content;
  bool complex;
  bool sparse;
  const char* class_name;
  size_t element_count;
  size_t element_bytes;  ///< of one element
  std::span<const size_t> dims;
  std::span<const char* const> field_names;
  std::span<const int> fields_by_name;  ///< field numbers sorted by name; equal names by number
};

struct Elements {
  /// The arrays that refer to these elements, and a bit each for what keeps their block: that there
  /// are any such arrays, and the header that lies behind the elements.
  std::atomic<size_t> holders;
  void* data;  ///< numbers; or slots, `hxArray*` each; or the `hxStringArray`
  size_t bytes : 62;
  size_t own_data : 1;     ///< the data is a block of its own, and not in front of this
  size_t with_header : 1;  ///< was made with a header behind it

  static constexpr size_t kMostBytes = (size_t{1} << 62) - 1;
  static constexpr size_t kHeader = size_t{1} << 63;
  static constexpr size_t kUsers = size_t{1} << 62;

  size_t arrays() const { return holders.load(std::memory_order_acquire) & ~(kHeader | kUsers); }
};

/// What an array is made from.
struct Description {
  hxClassID class_id;
  Content content;
  std::span<const size_t> dims;
  size_t element_bytes;
  const char* class_name = nullptr;               ///< of a fixed class
  std::string_view object_name = {};              ///< of an object; copied
  std::span<const char* const> field_names = {};  ///< copied
  bool complex = false;
  bool sparse = false;
};

/// A new array. Slots are empty whatever `fill` says; the caller supplies the texts. Throws
/// `std::invalid_argument` for fewer than two dimensions or a null field name, and
/// `std::bad_alloc`.
hxArrayPtr new_array(const Description& description, Fill fill);

/// Gives the array elements of its own where it shares them. Throws `std::bad_alloc`.
void unshare(hxArray* array);

/// Arrays that exist now.
size_t live_arrays() noexcept;

}  // namespace numera::host::memory

class hxArray {
 public:
  numera::host::memory::Layout* layout;
  numera::host::memory::Elements* elements;
  hxArray* next_doomed;  ///< links the arrays that wait for destruction

  void* data() const { return elements->data; }
  std::span<hxArray*> slots() const {
    return {static_cast<hxArray**>(data()), layout->element_count * slots_per_element()};
  }

 private:
  size_t slots_per_element() const {
    return layout->class_id == hxClassID::Cell ? 1 : layout->field_names.size();
  }
};
