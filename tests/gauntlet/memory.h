#pragma once

/// \file
/// Buffers of exactly the size and address that a case asks for, so that a sanitizer reports every
/// read beyond them.

#include <arrow/buffer.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace numera::gauntlet {

using Bytes = std::vector<std::uint8_t>;

/// How the buffers of a case lie in memory.
enum class Memory : std::uint8_t {
  kExact,
  kLonger,       ///< with extra bytes at the end
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

/// Whether a buffer may end early in such a case.
inline bool is_short(Memory memory) { return memory >= Memory::kShortBitmap; }

/// The role of a buffer in its array.
enum class Part : std::uint8_t { kBitmap, kValues, kBytes };

/// A buffer with these bytes in a block of its own. A short buffer lacks its last byte, or half of
/// its bytes if `cut_half`. Returns null if the case has no such buffer.
std::shared_ptr<::arrow::Buffer> make_buffer(Bytes bytes, Part part, Memory memory, bool cut_half);

}  // namespace numera::gauntlet
