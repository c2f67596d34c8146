#pragma once

/// \file
/// Conversions beside other Python threads, and what Ctrl-C does to them.

#include <nanobind/nanobind.h>

namespace numera::python {

/// While it lives the interpreter's lock is released, and where the library asks for interrupts,
/// between two columns, pending signals are handled: Ctrl-C leaves the conversion as
/// KeyboardInterrupt.
///
/// A thread whose conversion ends while the interpreter shuts down stops for good, as Python's own
/// do from 3.14 on: the end that older ones make of it passes through no destructor.
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
