#pragma once

/// \file
/// How a fuzzer says what it found.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace numera::fuzz {

/// Ends the process, which is how a fuzzer reports a finding.
[[noreturn]] inline void refute(std::string_view claim, const std::string& found) {
  std::fprintf(stderr, "refuted: %.*s\n%s\n", static_cast<int>(claim.size()), claim.data(),
               found.c_str());
  std::abort();
}

/// `details()` gives the text that is shown where the claim does not hold.
template <class Details>
void claim(bool holds, std::string_view text, const Details& details) {
  if (!holds) refute(text, details());
}

inline void claim(bool holds, std::string_view text) {
  if (!holds) refute(text, "");
}

}  // namespace numera::fuzz
