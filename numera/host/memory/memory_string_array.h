#pragma once

/// \file
/// The string array of the in-memory host.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "numera/host/memory/blocks.h"
#include "numera/host/memory/text_arena.h"
#include "numera/host/string_array.h"

namespace numera::host::memory {

/// All texts are stored in one arena; no text has its own allocation.
///
/// Texts set in order are contiguous: text i ends where text i + 1 begins. The first text set out
/// of order switches the array to a begin and a length per text. From then on, a new text
/// overwrites the old one in place if it fits; otherwise it is added at the end. The arena is
/// compacted when more than half of it is unused, so that the amortized cost of `set` is linear in
/// its text.
///
/// `set` and `element` throw `std::out_of_range` "String index is out of range.".
class MemoryStringArray final : public hxStringArray {
 public:
  explicit MemoryStringArray(std::span<const size_t> dims);

  static void* operator new(size_t bytes) { return allocate(bytes); }
  static void operator delete(void* block) noexcept { release(block); }

  std::span<const size_t> dimensions() const override { return dims_; }
  size_t size() const override { return size_; }
  std::optional<std::u16string_view> element(size_t i) const override;
  void set(size_t i, std::u16string_view text) override;
  void set_missing(size_t i) override;

  /// Converts all texts together: one pass over the bytes measures them, a second pass converts
  /// them directly into the arena. If this fails, the texts are checked one by one to find the
  /// first invalid one. A range that covers the whole array replaces all texts. A range behind the
  /// texts set so far is appended. Any other range is set text by text.
  std::optional<size_t> assign_utf8(size_t first, std::span<const std::int32_t> offsets,
                                    const std::uint8_t* bytes) override;
  std::optional<size_t> assign_utf8(size_t first, std::span<const std::int64_t> offsets,
                                    const std::uint8_t* bytes) override;

 private:
  template <class Offset>
  std::optional<size_t> assign_chunk(size_t first, std::span<const Offset> offsets,
                                     const std::uint8_t* bytes);
  template <class Offset>
  std::optional<size_t> append_texts(size_t first, std::span<const Offset> offsets,
                                     std::string_view chunk);
  char16_t* extend_for(size_t end, size_t length);

  void check_index(size_t i) const;
  bool scattered() const { return !lengths_.empty(); }
  void clear();
  void fill_gap(size_t i);
  void append(size_t i, std::u16string_view text);
  void scatter();
  void place(size_t i, std::u16string_view text);
  void compact();
  void clear_missing(size_t begin, size_t end);

  HostVector<size_t> dims_;
  size_t size_;
  TextArena arena_;
  HostVector<size_t> begins_;   ///< size_ + 1 entries; in order: valid up to `filled_`
  size_t filled_ = 0;           ///< in order: number of texts set so far; later texts are empty
  HostVector<size_t> lengths_;  ///< empty unless texts were set out of order
  size_t garbage_ = 0;          ///< out of order: unused code units of the arena
  HostVector<std::uint64_t> missing_;  ///< one bit per text; empty until a text is set missing
};

}  // namespace numera::host::memory
