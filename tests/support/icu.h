#pragma once

/// \file
/// Text conversions by ICU; nullopt if ICU refuses the text.

#include <unicode/ustring.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace numera::testing {

inline std::optional<std::u16string> IcuToUtf16(std::string_view text) {
  std::u16string units(text.size(), u'\0');
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8(units.data(), static_cast<std::int32_t>(units.size()), &length, text.data(),
                static_cast<std::int32_t>(text.size()), &error);
  if (U_FAILURE(error)) return std::nullopt;
  units.resize(static_cast<size_t>(length));
  return units;
}

inline std::optional<std::string> IcuToUtf8(std::u16string_view text) {
  std::string bytes(text.size() * 3, '\0');
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8(bytes.data(), static_cast<std::int32_t>(bytes.size()), &length, text.data(),
              static_cast<std::int32_t>(text.size()), &error);
  if (U_FAILURE(error)) return std::nullopt;
  bytes.resize(static_cast<size_t>(length));
  return bytes;
}

}  // namespace numera::testing
