#pragma once

/// \file
/// A host that lives in memory: what it offers beyond the host interface, for programs that run
/// without another host and for tests.
///
/// It supplies every operation of the host interface, thread-safe as stated there. It never
/// refuses to write a struct array that is shared: it unshares it. Storing checks the slot, and
/// throws like `hxGetCellChecked`.

#include <cstddef>
#include <exception>
#include <functional>
#include <span>
#include <string>

#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::host::memory {

/// An object (class 18) of the given class name with fields like those of a struct array, every
/// slot empty. Owned by the caller; throws `std::bad_alloc`, as do the next two.
NUMERA_EXPORT hxArrayPtr CreateObjectArray(std::string class_name, std::span<const size_t> dims,
                                           std::span<const char* const> field_names);
/// A char array of any shape; `text` holds as many code units as there are elements, in
/// column-major order, and is copied. Throws `std::invalid_argument` "Text is null." where there
/// are elements and no text.
NUMERA_EXPORT hxArrayPtr CreateCharArray(std::span<const size_t> dims, const char16_t* text);
/// An array that answers `hxIsSparse`, all of its elements zero. It exists so that its refusal can
/// be tested: its elements are stored like those of a full array. Throws `std::invalid_argument`
/// "Class is neither numeric nor logical." for every other class.
NUMERA_EXPORT hxArrayPtr CreateSparseArray(std::span<const size_t> dims, hxClassID class_id);

/// Asks the running computation of every thread to stop: from now on `hxThrowIfInterruptPending`
/// throws `InterruptException`, until `ClearInterrupt`. Both may be called in a signal handler.
NUMERA_EXPORT void RequestInterrupt() noexcept;
/// Takes the request back, for every thread. A throw does not: call this before the next
/// computation is to run.
NUMERA_EXPORT void ClearInterrupt() noexcept;
/// Sets a function of the calling thread that every `hxThrowIfInterruptPending` of that thread
/// calls first; what it throws passes through. An empty function removes it. Whatever it refers to
/// has to live until then, or until the thread ends.
NUMERA_EXPORT void SetInterruptCheck(std::function<void()> check);

/// What `hxThrowIfInterruptPending` throws.
class NUMERA_EXPORT InterruptException : public std::exception {
 public:
  /// "The computation was interrupted."
  const char* what() const noexcept override;
};

/// Arrays created and not yet destroyed, on all threads; shared copies count.
NUMERA_EXPORT size_t LiveArrays() noexcept;

/// \name Memory in use
/// What the arrays take is `LiveBytes`; what the host takes is `LiveBytes() + KeptBytes()` and the
/// free blocks of slabs that small arrays are left in, some of them at hand for each thread.
///
/// The first write to fresh memory costs several times what a write to used memory does, so memory
/// of destroyed arrays is kept for arrays to come: every block of more than 2 KiB, and chunks of
/// 2 MiB of which no small array is left. When more than `kMaxKeptBytes` would be kept, the blocks
/// kept longest go back to the system. All of it is off under an address sanitizer: there
/// `KeptBytes` is 0.
/// @{

/// Room for the result of a conversion that is worth the care, three columns of 10^7 doubles, and
/// little beside the memory of a machine that such results fit into.
inline constexpr size_t kMaxKeptBytes = size_t{256} * 1024 * 1024;

/// Bytes of the blocks that hold the headers and elements of arrays, on all threads, and of string
/// arrays not yet made arrays: as they are taken, a little more than asked for. The dimensions and
/// field names, which arrays share, do not count.
NUMERA_EXPORT size_t LiveBytes() noexcept;
/// Bytes of the blocks kept for reuse, which no array uses; never more than `kMaxKeptBytes`.
NUMERA_EXPORT size_t KeptBytes() noexcept;
/// Gives everything kept back to the system, first what the calling thread has at hand, and returns
/// its bytes. Callable on any thread at any time; costs a system call a block. A single chunk of
/// 2 MiB stays for small arrays to come.
NUMERA_EXPORT size_t ReleaseUnused() noexcept;
/// @}

/// Lets the next `count` host allocations of this thread succeed and the one after them throw
/// `std::bad_alloc`, once. A text made by a codec counts as an allocation.
NUMERA_EXPORT void FailAllocationAfter(size_t count) noexcept;
/// Takes back a failure of this thread that has not happened yet.
NUMERA_EXPORT void ClearAllocationFailure() noexcept;

}  // namespace numera::host::memory
