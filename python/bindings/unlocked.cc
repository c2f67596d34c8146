#include "python/bindings/unlocked.h"

#include <cxxabi.h>
#include <unistd.h>

#include <chrono>

#include "numera/host/memory.h"

namespace numera::python {
namespace {

using Clock = std::chrono::steady_clock;

/// The least time between two checks. Acquiring the lock of a busy interpreter takes a while, and a
/// table may have many small columns.
constexpr std::chrono::milliseconds kPatience{20};

struct Running {
  int depth = 0;
  Clock::time_point last_check;
};

Running& running() {
  thread_local Running running;
  return running;
}

void lock(PyThreadState* thread) {
  try {
    PyEval_RestoreThread(thread);
  } catch (const abi::__forced_unwind&) {
    for (;;) ::pause();
  }
}

class Locked {
 public:
  explicit Locked(PyThreadState* thread) { lock(thread); }
  ~Locked() { PyEval_SaveThread(); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
};

void check_signals(PyThreadState* thread) {
  const Clock::time_point now = Clock::now();
  if (now - running().last_check < kPatience) return;
  const Locked locked(thread);
  running().last_check = now;
  if (PyErr_CheckSignals() != 0) throw nanobind::python_error();
}

}  // namespace

// The calls may nest: a conversion may pull data from Python code, which may convert in turn.
Unlocked::Unlocked() : thread_(PyEval_SaveThread()) {
  if (running().depth++ > 0) return;
  running().last_check = Clock::now();
  host::memory::SetInterruptCheck([thread = thread_] { check_signals(thread); });
}

Unlocked::~Unlocked() {
  if (--running().depth == 0) host::memory::SetInterruptCheck({});
  lock(thread_);
}

}  // namespace numera::python
