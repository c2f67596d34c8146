#pragma once

/// \file
/// Rows of two Arrow arrays, and their comparison in ranges.

#include <arrow/array/data.h>
#include <arrow/type.h>
#include <arrow/util/bit_run_reader.h>
#include <arrow/util/bit_util.h>
#include <arrow/util/bitmap_ops.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace numera::tools {

/// The bits of a bitmap, from one of them on. Without a bitmap all bits are set.
struct Bits {
  const std::uint8_t* bytes = nullptr;
  std::int64_t start = 0;
  std::shared_ptr<const std::vector<std::uint8_t>> owned = nullptr;
};

/// One of the two arrays, from a row on.
struct Side {
  const ::arrow::ArrayData& array;
  std::int64_t start;  ///< the row, counted from the start of the buffers

  Side(const ::arrow::ArrayData& rows, std::int64_t row) : array(rows), start(rows.offset + row) {}
  ::arrow::Type::type type() const { return array.type->id(); }
  const std::uint8_t* buffer(size_t i) const {
    return array.buffers[i] == nullptr ? nullptr : array.buffers[i]->data();
  }
  Bits bits(size_t i) const { return {buffer(i), start}; }
};

/// The same number of rows of both arrays.
struct Rows {
  Side went;
  Side came;
  std::int64_t length;
  Bits compared;  ///< a row whose bit is not set is not compared
};

/// The values of a side, or its offsets. Buffers of files may be unaligned.
template <class T>
struct Values {
  static constexpr std::int64_t kWidth = sizeof(T);
  const std::uint8_t* bytes;

  explicit Values(const Side& side) : bytes(side.buffer(1) + side.start * kWidth) {}
  T operator[](std::int64_t row) const {
    T value;
    std::memcpy(&value, bytes + row * kWidth, sizeof(T));
    return value;
  }
};

/// The bits that are set in both.
inline Bits both(const Bits& one, const Bits& other, std::int64_t length) {
  if (one.bytes == nullptr) return other;
  if (other.bytes == nullptr) return one;
  const auto bytes = static_cast<size_t>(::arrow::bit_util::BytesForBits(length));
  const auto bits = std::make_shared<std::vector<std::uint8_t>>(bytes);
  ::arrow::internal::BitmapAnd(one.bytes, one.start, other.bytes, other.start, length, 0,
                               bits->data());
  return {bits->data(), 0, bits};
}

/// Whether the bits are the same in the rows that are compared.
inline bool same_bits(const Rows& rows, const Bits& went_bits, const Bits& came_bits) {
  const Bits went = both(rows.compared, went_bits, rows.length);
  const Bits came = both(rows.compared, came_bits, rows.length);
  return ::arrow::internal::OptionalBitmapEquals(went.bytes, went.start, came.bytes, came.start,
                                                 rows.length);
}

inline bool same_bytes(const std::uint8_t* went, const std::uint8_t* came, std::int64_t length) {
  return length == 0 || std::memcmp(went, came, static_cast<size_t>(length)) == 0;
}

/// Whether `same_run(first, end)` holds for each run of rows that are compared.
template <class SameRun>
bool same_runs(const Rows& rows, const SameRun& same_run) {
  const Bits& bits = rows.compared;
  if (bits.bytes == nullptr) return same_run(0, rows.length);
  ::arrow::internal::SetBitRunReader runs(bits.bytes, bits.start, rows.length);
  for (auto run = runs.NextRun(); run.length > 0; run = runs.NextRun()) {
    if (!same_run(run.position, run.position + run.length)) return false;
  }
  return true;
}

template <class SameRow>
bool same_rows(const Rows& rows, const SameRow& same_row) {
  return same_runs(rows, [&](std::int64_t row, std::int64_t end) {
    while (row < end && same_row(row)) ++row;
    return row == end;
  });
}

/// Compares values of one width. Equal bytes are equal values; `same_row` decides about others.
template <class SameRow>
bool same_fixed(const Rows& rows, const SameRow& same_row) {
  const std::int64_t width = rows.went.array.type->byte_width();
  const std::uint8_t* const went = rows.went.buffer(1) + rows.went.start * width;
  const std::uint8_t* const came = rows.came.buffer(1) + rows.came.start * width;
  if (same_bytes(went, came, rows.length * width)) return true;
  return same_runs(rows, [&](std::int64_t row, std::int64_t end) {
    if (same_bytes(went + row * width, came + row * width, (end - row) * width)) return true;
    while (row < end && same_row(row)) ++row;
    return row == end;
  });
}

/// Compares rows that are parts of longer contents: of bytes, or of the child of a list.
/// `same_part(went, came, length)` compares contents from two positions on. One call compares the
/// contents of many rows; only null rows that have contents themselves divide them.
template <class Offsets, class SamePart>
bool same_contents(const Rows& rows, const Offsets& went, const SamePart& same_part) {
  const Values<std::int64_t> came(rows.came);
  std::int64_t went_part = went[0];
  std::int64_t came_part = came[0];
  std::int64_t length = 0;
  const bool same_lengths = same_runs(rows, [&](std::int64_t first, std::int64_t end) {
    if (went[first] != went_part + length || came[first] != came_part + length) {
      if (!same_part(went_part, came_part, length)) return false;
      went_part = went[first];
      came_part = came[first];
    }
    for (std::int64_t row = first; row < end; ++row) {
      if (went[row + 1] - went_part != came[row + 1] - came_part) return false;
    }
    length = went[end] - went_part;
    return true;
  });
  return same_lengths && same_part(went_part, came_part, length);
}

}  // namespace numera::tools
