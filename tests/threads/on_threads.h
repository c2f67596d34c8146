#pragma once

#include <barrier>
#include <cstddef>
#include <thread>
#include <vector>

namespace numera::testing {

constexpr size_t kThreads = 4;

/// Runs `work(0)` to `work(kThreads - 1)` on threads that start together. Waits for them.
template <class Work>
void on_threads(const Work& work) {
  std::barrier start(static_cast<std::ptrdiff_t>(kThreads));
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&start, &work, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace numera::testing
