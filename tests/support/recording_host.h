#pragma once

/// \file
/// The in-memory host behind a recorder: it counts every operation of the host interface, lists the
/// arrays that are made, and lets a chosen call fail. A test that links `numera_recording_host`
/// runs on it instead of the plain in-memory host.
///
///     numera::testing::Reset();
///     numera::testing::FailCall(2);            // the third call from here that may fail
///     EXPECT_THROW(convert(value), std::bad_alloc);
///
/// Operations go by their name: "hxSetField", "hxUTF8ToUTF16::convert", "hxStringArray::set". The
/// reading overload of hxGetData goes by "hxGetData const". What the host does on its own account,
/// such as destroying the contents of a cell array, is not counted.
///
/// Calls are recorded from all threads together.

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

/// Forgets all counts and creations, and lets no call fail.
void Reset();

/// How often the operation was called. Throws `std::invalid_argument` for a name that no operation
/// has.
size_t Calls(std::string_view operation);

/// Calls of all operations that may throw, the failed ones too.
size_t TotalThrowingCalls();

/// Arrays made and string array objects made, in order.
std::vector<Creation> Created();

/// Lets the next `k` calls of operations that may throw succeed and the one after them throw
/// `error`, once, before it does anything.
void FailCall(size_t k, std::exception_ptr error = std::make_exception_ptr(std::bad_alloc()));

/// Whether the failure asked for has been thrown.
bool HasFailed();

/// The operation that threw it; empty where none has.
std::string_view FailedCall();

/// Whether a call of `hxStringArray::assign_utf8` has thrown since the last `Reset`.
bool TextsAtOnceThrew();

/// Whether string arrays that are made from here on, by any thread, take texts at once (as they do
/// at first) or, like those of a host that cannot, set one element after another.
void TakeTextsAtOnce(bool at_once);

/// Whether the codec to UTF-8 refuses unpaired surrogates (as it does at first) or writes "?" for
/// each, as a lenient host may.
void ReplaceUnpairedSurrogates(bool replace);

}  // namespace numera::testing
