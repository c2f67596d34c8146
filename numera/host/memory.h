#pragma once

/// \file
/// The in-memory host, for tests and for programs that run without another host. This header
/// declares what it offers beyond the host interface.
///
/// It supplies every operation of the host interface, with the thread safety that array.h states. A
/// write to a shared struct array always works: the array is unshared first. Storing checks the
/// slot and throws like `hxGetCellChecked`.

#include <cstddef>
#include <exception>
#include <functional>
#include <span>
#include <string>

#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::host::memory {

/// An object (class 18) of the given class name, with fields like a struct array; all slots are
/// empty. The caller owns the result. Throws `std::bad_alloc`, as do the next two functions.
NUMERA_EXPORT hxArrayPtr CreateObjectArray(std::string class_name, std::span<const size_t> dims,
                                           std::span<const char* const> field_names);
/// A char array of any shape. `text` holds one code unit per element in column-major order and is
/// copied. Throws `std::invalid_argument` "Text is null." if there are elements but no text.
NUMERA_EXPORT hxArrayPtr CreateCharArray(std::span<const size_t> dims, const char16_t* text);
/// An array of zeros for which `hxIsSparse` is true. It serves to test that the library rejects
/// sparse arrays: its elements are stored like those of a full array. Throws
/// `std::invalid_argument` "Class is neither numeric nor logical." for every other class.
NUMERA_EXPORT hxArrayPtr CreateSparseArray(std::span<const size_t> dims, hxClassID class_id);

/// Asks the running computation of every thread to stop: `hxThrowIfInterruptPending` throws
/// `InterruptException` until `ClearInterrupt`. A signal handler may call both functions.
NUMERA_EXPORT void RequestInterrupt() noexcept;
/// Withdraws the request for all threads. A throw does not withdraw it: call this before you start
/// the next computation.
NUMERA_EXPORT void ClearInterrupt() noexcept;
/// Sets a thread-local function that `hxThrowIfInterruptPending` calls first on this thread; what
/// it throws passes through. An empty function removes it. Everything that the function refers to
/// must live until it is removed or the thread ends.
NUMERA_EXPORT void SetInterruptCheck(std::function<void()> check);

/// The exception that `hxThrowIfInterruptPending` throws.
class NUMERA_EXPORT InterruptException : public std::exception {
 public:
  /// "The computation was interrupted."
  const char* what() const noexcept override;
};

/// Number of arrays created and not yet destroyed, on all threads. Includes shared copies.
NUMERA_EXPORT size_t LiveArrays() noexcept;

/// \name Memory in use
/// Arrays use `LiveBytes`. The host uses `LiveBytes() + KeptBytes()` plus the free blocks of slabs
/// that still hold small arrays; each thread caches some of these blocks.
///
/// The first write to fresh memory costs several times as much as a write to used memory. The host
/// therefore keeps the memory of destroyed arrays for reuse: every block of more than 2 KiB, and
/// every 2 MiB chunk that no longer holds a small array. If more than `kMaxKeptBytes` would be
/// kept, the oldest kept blocks go back to the system. Under an address sanitizer nothing is kept
/// and `KeptBytes` is 0.
/// @{

/// Enough for the result of a large conversion, such as three columns of 10^7 doubles. Small
/// compared with the memory of a machine that can hold such results.
inline constexpr size_t kMaxKeptBytes = size_t{256} * 1024 * 1024;

/// Bytes of the blocks that hold headers and elements of arrays, on all threads. Includes string
/// arrays that are not yet wrapped in an array. Counts allocated sizes, which are a little larger
/// than requested. Excludes dimensions and field names, which arrays share.
NUMERA_EXPORT size_t LiveBytes() noexcept;
/// Bytes of the blocks that no array uses and that are kept for reuse; at most `kMaxKeptBytes`.
NUMERA_EXPORT size_t KeptBytes() noexcept;
/// Empties the cache of the calling thread, then gives all kept blocks back to the system. Returns
/// the bytes given back. May be called on any thread at any time. Costs one system call per block.
/// One chunk of 2 MiB stays for future small arrays.
NUMERA_EXPORT size_t ReleaseUnused() noexcept;
/// @}

/// Lets the next `count` host allocations of this thread succeed and makes the one after them throw
/// `std::bad_alloc`, once. A text returned by a codec counts as an allocation.
NUMERA_EXPORT void FailAllocationAfter(size_t count) noexcept;
/// Cancels a failure of this thread that has not happened yet.
NUMERA_EXPORT void ClearAllocationFailure() noexcept;

}  // namespace numera::host::memory
