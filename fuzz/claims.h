#pragma once

/// \file
/// How a fuzzer says what it found.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tests/support/array_nodes.h"

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

/// `before` are the nodes of an input, taken before the call.
inline void claim_only_read(const testing::ArrayNodes& before) {
  const std::string changed = before.difference();
  claim(changed.empty(), "the input is only read", [&] { return changed; });
}

}  // namespace numera::fuzz
