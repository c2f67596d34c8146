#pragma once

/// \file
/// Conversions beside other Python threads, and what Ctrl-C does to them.

#include <nanobind/nanobind.h>

#include <chrono>

#include "numera/host/memory.h"

namespace numera::python {

/// While it lives the interpreter's lock is released, and where the library asks for interrupts,
/// between two columns, pending signals are handled: Ctrl-C leaves the conversion as
/// KeyboardInterrupt.
class Unlocked {
 public:
  Unlocked() {
    // A conversion may pull its data from Python code, which may convert in turn.
    if (state().depth++ > 0) return;
    state().last_check = Clock::now();
    host::memory::SetInterruptCheck(check_signals);
  }
  ~Unlocked() {
    if (--state().depth == 0) host::memory::SetInterruptCheck({});
  }
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kPatience{20};

  struct State {
    int depth = 0;
    Clock::time_point last_check;
  };

  static State& state() {
    thread_local State state;
    return state;
  }

  /// The lock of a busy interpreter takes a while to get, and a table may have many small columns.
  static void check_signals() {
    const Clock::time_point now = Clock::now();
    if (now - state().last_check < kPatience) return;
    const nanobind::gil_scoped_acquire lock;
    state().last_check = now;
    if (PyErr_CheckSignals() != 0) throw nanobind::python_error();
  }

  nanobind::gil_scoped_release released_;
};

}  // namespace numera::python
