#pragma once

#include <chrono>
#include <stdexcept>
#include <thread>

namespace numera::testing {

/// Waits for what a running program does. Throws after half a minute.
template <class HasHappened>
void wait_until(const HasHappened& has_happened) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!has_happened()) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("it did not happen");
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace numera::testing
