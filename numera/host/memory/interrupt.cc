#include <atomic>
#include <functional>
#include <utility>

#include "numera/host/memory.h"
#include "numera/host/memory/operations.h"

namespace numera::host::memory {
namespace {

// A signal handler may only access lock-free atomics.
static_assert(std::atomic<bool>::is_always_lock_free);
std::atomic<bool> interrupt_pending{false};

thread_local std::function<void()> interrupt_check;

}  // namespace

void RequestInterrupt() noexcept { interrupt_pending.store(true); }
void ClearInterrupt() noexcept { interrupt_pending.store(false); }
void SetInterruptCheck(std::function<void()> check) { interrupt_check = std::move(check); }

const char* InterruptException::what() const noexcept { return "The computation was interrupted."; }

void throw_if_interrupt_pending() {
  if (interrupt_check) {
    // A check may replace or remove itself.
    const std::function<void()> check = interrupt_check;
    check();
  }
  if (interrupt_pending.load()) throw InterruptException();
}

}  // namespace numera::host::memory
