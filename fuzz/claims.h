#pragma once

/// \file
/// How a fuzzer reports a finding.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tests/support/array_nodes.h"

namespace numera::fuzz {

/// Aborts the process; the fuzzer takes that for a finding.
[[noreturn]] inline void refute(std::string_view claim, const std::string& found) {
  std::fprintf(stderr, "refuted: %.*s\n%s\n", static_cast<int>(claim.size()), claim.data(),
               found.c_str());
  std::abort();
}

/// `details()` returns the text that is printed if the claim does not hold.
template <class Details>
void claim(bool holds, std::string_view text, const Details& details) {
  if (!holds) refute(text, details());
}

inline void claim(bool holds, std::string_view text) {
  if (!holds) refute(text, "");
}

/// `before` holds the nodes of an input, recorded before the call.
inline void claim_only_read(const testing::ArrayNodes& before) {
  const std::string changed = before.difference();
  claim(changed.empty(), "the input is only read", [&] { return changed; });
}

}  // namespace numera::fuzz
