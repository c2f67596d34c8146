#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace numera::tools {

/// A text in quotation marks. It may hold any bytes: what is not UTF-8 becomes U+FFFD, a byte at a
/// time. Control characters, which could command a terminal, are escaped.
std::string json_text(std::string_view text);

std::string json_text_or_null(const std::optional<std::string>& text);

/// A number, or null.
std::string json_number(std::optional<std::int64_t> number);

/// An array of values, each of which is JSON.
std::string json_array(const std::vector<std::string>& values);

/// An object of members in this order. Each value is JSON.
std::string json_object(const std::vector<std::pair<std::string_view, std::string>>& members);

}  // namespace numera::tools
