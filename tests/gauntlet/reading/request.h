#pragma once

/// \file
/// One conversion of one random value. The seed determines everything about it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "numera/host/array.h"

namespace numera::gauntlet::reading {

enum class Door : std::uint8_t { kArray, kElement, kBuffer, kTable };

struct Request {
  Door door = Door::kArray;
  hxArrayPtr input = nullptr;
  size_t index = 0;  ///< of the element, if the function takes an index
  std::optional<size_t> interrupt =
      std::nullopt;  ///< the interrupt check that stops the conversion

  /// "to_arrow(value, 2)"
  std::string name() const;
};

Request request_of(std::uint64_t seed);

}  // namespace numera::gauntlet::reading
