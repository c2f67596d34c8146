#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <stdexcept>

namespace numera::testing {

/// The sizes in numera/core/limits.h hold for release builds. Other builds need this many times as
/// much.
#if defined(__OPTIMIZE__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
inline constexpr size_t kStackFactor = 1;
#else
inline constexpr size_t kStackFactor = 16;
#endif

/// Runs the function on a thread whose stack has `bytes` bytes, and waits for it.
inline void on_stack_of(size_t bytes, const std::function<void()>& function) {
  pthread_attr_t attributes;
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  std::function<void()> copy = function;
  if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstacksize(&attributes, bytes) != 0 ||
      pthread_create(&thread, &attributes, run, &copy) != 0) {
    throw std::runtime_error("no thread with a stack of that size");
  }
  pthread_attr_destroy(&attributes);
  pthread_join(thread, nullptr);
}

/// Runs the function on a stack of 1 GiB. Deeply nested values need it: their recursive destruction
/// overflows a stack of the usual size.
inline void OnLargeStack(const std::function<void()>& function) {
  on_stack_of(size_t{1} << 30, function);
}

/// Runs the function with a stack size from numera/core/limits.h.
inline void OnStatedStack(size_t bytes, const std::function<void()>& function) {
  on_stack_of(bytes * kStackFactor, function);
}

}  // namespace numera::testing
