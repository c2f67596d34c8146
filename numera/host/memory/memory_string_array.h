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

/// All texts lie in one arena, none in an allocation of its own.
///
/// Texts set in order lie back to back, and text i ends where text i + 1 begins. The first text set
/// out of order turns this into a begin and a length a text. From then on a text is overwritten in
/// place where it fits and added at the end where it does not; the arena is rewritten when more
/// than half of it is of no use, so that a set costs no more than its text on average.
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

  /// All texts in one piece: one pass over the bytes measures them, another converts them straight
  /// into the arena. Only where that fails are they looked at one by one, for the first to blame.
  /// The whole array at once replaces all of it; texts behind those set so far are added; any
  /// other range is set text by text.
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
  HostVector<size_t> begins_;   ///< in order: one entry more than texts, known up to `filled_`
  size_t filled_ = 0;           ///< in order: texts set so far; those behind are empty
  HostVector<size_t> lengths_;  ///< out of order only
  size_t garbage_ = 0;          ///< out of order: code units of the arena in no text
  HostVector<std::uint64_t> missing_;  ///< a bit a text, none at all while no text is missing
};

}  // namespace numera::host::memory
