#pragma once

/// \file
/// Runs conversions while other Python threads run, and handles Ctrl-C.

#include <nanobind/nanobind.h>

namespace numera::python {

/// Releases the interpreter's lock during its lifetime. Pending signals are handled when the
/// library checks for interrupts, between two columns. Ctrl-C then ends the conversion with
/// KeyboardInterrupt.
///
/// A thread whose conversion ends while the interpreter shuts down blocks forever, as Python's own
/// threads do since 3.14. Older versions unwind such a thread, but an unwind cannot pass through a
/// destructor.
class Unlocked {
 public:
  Unlocked();
  ~Unlocked();
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  PyThreadState* thread_;
};

}  // namespace numera::python
