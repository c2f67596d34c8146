#pragma once

/// \file
/// The in-memory host behind a recorder. The recorder counts every operation of the host interface,
/// lists the arrays that are made, and lets a chosen call fail. A test that links
/// `numera_recording_host` uses it instead of the plain in-memory host.
///
///     numera::testing::Reset();
///     numera::testing::FailCall(2);            // fails the third call that may throw
///     EXPECT_THROW(convert(value), std::bad_alloc);
///
/// Operations have names: "hxSetField", "hxUTF8ToUTF16::convert", "hxStringArray::set". The reading
/// overload of hxGetData is "hxGetData const". Work that the host does by itself, such as
/// destroying the contents of a cell array, is not counted.
///
/// Calls of all threads are counted together.

#include <cstddef>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "numera/host/array.h"

namespace numera::testing {

/// An array that an operation of the interface made.
struct Creation {
  std::string operation;
  hxClassID class_id;
  std::vector<size_t> dims;

  friend bool operator==(const Creation&, const Creation&) = default;
};

/// Resets all counts and creations. No call fails afterwards.
void Reset();

/// The number of calls of the operation. Throws `std::invalid_argument` if there is no such
/// operation.
size_t Calls(std::string_view operation);

/// The number of calls of all operations that may throw, including the failed ones.
size_t TotalThrowingCalls();

/// The arrays and string array objects made, in order.
std::vector<Creation> Created();

/// Lets the next `k` calls of operations that may throw succeed. The call after them throws
/// `error`, once, before it does anything.
void FailCall(size_t k, std::exception_ptr error = std::make_exception_ptr(std::bad_alloc()));

/// Whether the requested failure has been thrown.
bool HasFailed();

/// The operation that threw it; empty if none has.
std::string_view FailedCall();

/// Whether a call of `hxStringArray::assign_utf8` has thrown since the last `Reset`.
bool TextsAtOnceThrew();

/// Whether string arrays made from now on, by any thread, accept many texts at once (the default)
/// or set one element after another, like a host without that operation.
void TakeTextsAtOnce(bool at_once);

/// Whether the UTF-8 encoder writes "?" for each unpaired surrogate, as a lenient host may, or
/// refuses it (the default).
void ReplaceUnpairedSurrogates(bool replace);

}  // namespace numera::testing
