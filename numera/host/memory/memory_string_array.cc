#include "numera/host/memory/memory_string_array.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "numera/host/memory/layout.h"
#include "numera/host/memory/utf_measure.h"
#include "numera/host/memory/utf_transcode.h"

namespace numera::host::memory {
namespace {

constexpr size_t kWordBits = 64;

std::uint64_t bit_of(size_t i) { return std::uint64_t{1} << (i % kWordBits); }

// Index of the first invalid text of a chunk. There must be one. `units` has room for any text.
template <class Offset>
size_t find_invalid_text(std::span<const Offset> offsets, std::string_view chunk,
                         std::span<char16_t> units) {
  size_t k = 0;
  size_t begin = 0;
  while (true) {
    const auto end = static_cast<size_t>(offsets[k + 1] - offsets[0]);
    const std::string_view text = chunk.substr(begin, end - begin);
    if (utf8_to_utf16(text, units).fault != TextFault::None) return k;
    begin = end;
    ++k;
  }
}

}  // namespace

MemoryStringArray::MemoryStringArray(std::span<const size_t> dims)
    : dims_(dims.begin(), dims.end()), size_(count_elements(dims)), begins_(size_ + 1) {
  begins_[0] = 0;
}

std::optional<std::u16string_view> MemoryStringArray::element(size_t i) const {
  check_index(i);
  if (!missing_.empty() && (missing_[i / kWordBits] & bit_of(i)) != 0) return std::nullopt;
  if (scattered()) return arena_.view(begins_[i], lengths_[i]);
  if (i >= filled_) return std::u16string_view();
  return arena_.view(begins_[i], begins_[i + 1] - begins_[i]);
}

void MemoryStringArray::set(size_t i, std::u16string_view text) {
  check_index(i);
  if (!scattered() && i >= filled_) {
    append(i, text);
  } else {
    scatter();
    place(i, text);
  }
  clear_missing(i, i + 1);
}

void MemoryStringArray::set_missing(size_t i) {
  check_index(i);
  if (missing_.empty()) missing_.resize(size_ / kWordBits + 1, std::uint64_t{0});
  missing_[i / kWordBits] |= bit_of(i);
}

std::optional<size_t> MemoryStringArray::assign_utf8(size_t first,
                                                     std::span<const std::int32_t> offsets,
                                                     const std::uint8_t* bytes) {
  return assign_chunk(first, offsets, bytes);
}

std::optional<size_t> MemoryStringArray::assign_utf8(size_t first,
                                                     std::span<const std::int64_t> offsets,
                                                     const std::uint8_t* bytes) {
  return assign_chunk(first, offsets, bytes);
}

template <class Offset>
std::optional<size_t> MemoryStringArray::assign_chunk(size_t first, std::span<const Offset> offsets,
                                                      const std::uint8_t* bytes) {
  if (offsets.size() < 2) return std::nullopt;
  const size_t count = offsets.size() - 1;
  if (first == 0 && count == size_) clear();
  if (scattered() || first < filled_ || first > size_ || count > size_ - first) {
    return hxStringArray::assign_utf8(first, offsets, bytes);
  }
  const auto begin = static_cast<size_t>(offsets.front());
  const auto end = static_cast<size_t>(offsets.back());
  const std::string_view chunk =
      begin == end ? std::string_view()
                   : std::string_view(reinterpret_cast<const char*>(bytes) + begin, end - begin);
  const auto failed = append_texts(first, offsets, chunk);
  clear_missing(first, first + count);
  return failed;
}

template <class Offset>
std::optional<size_t> MemoryStringArray::append_texts(size_t first, std::span<const Offset> offsets,
                                                      std::string_view chunk) {
  fill_gap(first);
  const size_t count = offsets.size() - 1;
  size_t* const begins = begins_.data() + first;
  if (is_ascii(chunk)) {
    char16_t* const units = extend_for(first + count, chunk.size());
    widen_ascii(chunk, units);
    const size_t base = begins[0];
    for (size_t k = 1; k <= count; ++k)
      begins[k] = base + static_cast<size_t>(offsets[k] - offsets[0]);
  } else {
    const Borders borders = measure_texts(offsets, chunk, begins[0], begins);
    const size_t length = begins[count] - begins[0];
    const std::span units(extend_for(first + count, length), length);
    if (utf8_to_utf16(chunk, units).fault != TextFault::None ||
        borders == Borders::WithinCharacters) {
      arena_.truncate(begins[0]);
      return first + find_invalid_text(offsets, chunk, units);
    }
  }
  filled_ = first + count;
  return std::nullopt;
}

// Adds `length` code units for texts up to `end`. If the arena must grow and more texts will
// follow, it also reserves space for them, based on the average length of the texts so far: at most
// twice the size that is needed now.
char16_t* MemoryStringArray::extend_for(size_t end, size_t length) {
  const size_t needed = arena_.size() + length;
  if (end == size_) {
    arena_.fit(needed);
  } else {
    const double all = static_cast<double>(size_) / static_cast<double>(end);
    const double expected = static_cast<double>(needed) * std::min(all, 2.0);
    arena_.grow(needed, static_cast<size_t>(expected));
  }
  return arena_.extend(length);
}

void MemoryStringArray::check_index(size_t i) const {
  if (i >= size_) throw std::out_of_range("String index is out of range.");
}

// Resets all texts to empty and keeps the capacity of the arena.
void MemoryStringArray::clear() {
  arena_.truncate(0);
  begins_[0] = 0;
  filled_ = 0;
  garbage_ = 0;
  HostVector<size_t>().swap(lengths_);
}

// Makes the texts from `filled_` to `i` - 1 empty.
void MemoryStringArray::fill_gap(size_t i) {
  const size_t end = begins_[filled_];
  while (filled_ < i) begins_[++filled_] = end;
}

void MemoryStringArray::append(size_t i, std::u16string_view text) {
  arena_.append(text);
  fill_gap(i);
  begins_[i + 1] = arena_.size();
  filled_ = i + 1;
}

void MemoryStringArray::scatter() {
  if (scattered()) return;
  lengths_.resize(size_, size_t{0});
  for (size_t i = 0; i < filled_; ++i) lengths_[i] = begins_[i + 1] - begins_[i];
  std::fill(begins_.begin() + static_cast<std::ptrdiff_t>(filled_), begins_.end(), size_t{0});
}

void MemoryStringArray::place(size_t i, std::u16string_view text) {
  if (text.size() <= lengths_[i]) {
    // The text may be part of this arena and overlap its target.
    std::char_traits<char16_t>::move(arena_.units() + begins_[i], text.data(), text.size());
    garbage_ += lengths_[i] - text.size();
  } else {
    const size_t begin = arena_.size();
    arena_.append(text);
    garbage_ += lengths_[i];
    begins_[i] = begin;
  }
  lengths_[i] = text.size();
  // The second condition avoids a compaction, which visits all texts, if it would free at most one
  // code unit per text.
  if (garbage_ > arena_.size() / 2 && garbage_ > size_) compact();
}

void MemoryStringArray::compact() {
  TextArena compacted;
  compacted.reserve(arena_.size() - garbage_);
  for (size_t i = 0; i < size_; ++i) {
    const size_t begin = compacted.size();
    compacted.append(arena_.view(begins_[i], lengths_[i]));
    begins_[i] = begin;
  }
  arena_ = std::move(compacted);
  garbage_ = 0;
}

void MemoryStringArray::clear_missing(size_t begin, size_t end) {
  if (missing_.empty()) return;
  for (size_t i = begin; i < end; ++i) missing_[i / kWordBits] &= ~bit_of(i);
}

}  // namespace numera::host::memory
