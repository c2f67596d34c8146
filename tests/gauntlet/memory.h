#pragma once

/// \file
/// Buffers at the exact size and address that a case asks for, so that a sanitizer sees every read
/// beyond them.

#include <arrow/buffer.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace numera::gauntlet {

using Bytes = std::vector<std::uint8_t>;

/// How the buffers of a case lie in memory.
enum class Memory : std::uint8_t {
  kExact,
  kLonger,       ///< with bytes behind what is needed
  kUnaligned,    ///< at odd addresses
  kShortBitmap,  ///< validity bitmaps end early
  kShortValues,  ///< values, codes, truth values and offsets end early
  kShortBytes,   ///< the bytes of texts end early
  kNoValues,     ///< no buffer of values, codes, truth values or offsets
};

inline constexpr Memory kMemories[] = {
    Memory::kExact,       Memory::kLonger,     Memory::kUnaligned, Memory::kShortBitmap,
    Memory::kShortValues, Memory::kShortBytes, Memory::kNoValues};

const char* name_of(Memory memory);

/// Whether a buffer of such a case may end early.
inline bool is_short(Memory memory) { return memory >= Memory::kShortBitmap; }

/// Which buffer of an array it is.
enum class Part : std::uint8_t { kBitmap, kValues, kBytes };

/// A buffer of its own with these bytes; `cut` picks how much a short one lacks: a byte or half.
/// Null where the case has none.
std::shared_ptr<::arrow::Buffer> make_buffer(Bytes bytes, Part part, Memory memory, bool cut_half);

}  // namespace numera::gauntlet
