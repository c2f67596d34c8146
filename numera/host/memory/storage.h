#pragma once

/// \file
/// Memory layout of an array.
///
/// An array is a header (`hxArray`) that refers to a layout, which never changes, and to elements,
/// which may change. A shared copy is another header that refers to the same layout and elements.
/// Both have a reference count. If an array is written while its elements are shared, it gets its
/// own elements. It keeps its layout, so pointers to dimensions and names stay valid.
///
/// The header and the first `Elements` are one block. Small element data precedes them:
///
///     [ element data up to 1 KiB ] Elements hxArray
///
/// For example, a column with 16 bytes of data is one block of 64 bytes. Layouts are separate
/// blocks. Arrays of the same shape share one if the same thread creates them (layout.h).

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
  std::atomic<size_t> holders;  ///< reference count
  size_t block_bytes;           ///< size of the block that starts with this layout
  hxClassID class_id;
  Content content;
  bool complex;
  bool sparse;
  const char* class_name;
  size_t element_count;
  size_t element_bytes;  ///< per element
  std::span<const size_t> dims;
  std::span<const char* const> field_names;
  std::span<const int> fields_by_name;  ///< field numbers sorted by name; equal names by number
};

struct Elements {
  /// Reference count. The low 62 bits count the arrays that refer to these elements. Two bits keep
  /// the block alive: `kUsers` is set while any array refers to the elements, `kHeader` while the
  /// header behind the elements is in use.
  std::atomic<size_t> holders;
  void* data = nullptr;  ///< numbers, slots (each a `hxArray*`), or the `hxStringArray`
  size_t bytes : 62 = 0;
  size_t own_data : 1 = 0;     ///< the data is a separate block, not in front of this struct
  size_t with_header : 1 = 0;  ///< was created with a header behind it

  static constexpr size_t kMostBytes = (size_t{1} << 62) - 1;
  static constexpr size_t kHeader = size_t{1} << 63;
  static constexpr size_t kUsers = size_t{1} << 62;
  /// The elements of one array, in the block of that array.
  static constexpr size_t kAlone = kHeader | kUsers | 1;

  size_t arrays() const { return holders.load(std::memory_order_acquire) & ~(kHeader | kUsers); }
};

/// The parameters of a new array.
struct Description {
  hxClassID class_id;
  Content content;
  std::span<const size_t> dims;
  size_t element_bytes;
  const char* class_name = nullptr;               ///< for a fixed class; not copied
  std::string_view object_name = {};              ///< class name of an object; copied
  std::span<const char* const> field_names = {};  ///< copied
  bool complex = false;
  bool sparse = false;
};

/// A new array. Slots are always empty, whatever `fill` is; the caller supplies the texts. Throws
/// `std::invalid_argument` for fewer than two dimensions or a null field name, and
/// `std::bad_alloc`.
hxArrayPtr new_array(const Description& description, Fill fill);

/// If the array shares its elements, replaces them by its own copy. Throws `std::bad_alloc`.
void unshare(hxArray* array);

/// Number of arrays that exist now.
size_t live_arrays() noexcept;

}  // namespace numera::host::memory

class hxArray {
 public:
  numera::host::memory::Layout* layout;
  numera::host::memory::Elements* elements;
  hxArray* next_doomed;  ///< next in the list of arrays to destroy

  void* data() const { return elements->data; }
  std::span<hxArray*> slots() const {
    return {static_cast<hxArray**>(data()), layout->element_count * slots_per_element()};
  }

 private:
  size_t slots_per_element() const {
    return layout->class_id == hxClassID::Cell ? 1 : layout->field_names.size();
  }
};
