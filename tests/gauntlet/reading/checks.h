#pragma once

/// \file
/// Helpers for the rules of the model: reading fields, and the texts of refusals.

#include <arrow/status.h>

#include <string>
#include <utility>

#include "numera/host/array.h"
#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

/// Thrown to end a conversion with a status.
struct Refusal {
  ::arrow::Status status;
};

template <class... Words>
[[noreturn]] void refuse_type(Words&&... words) {
  throw Refusal{::arrow::Status::TypeError(std::forward<Words>(words)...)};
}

template <class... Words>
[[noreturn]] void refuse_invalid(Words&&... words) {
  throw Refusal{::arrow::Status::Invalid(std::forward<Words>(words)...)};
}

/// A struct or an object.
bool is_struct(const hxArray* value);

/// The text of a char array; empty for any other value.
std::string text_of(const hxArray* value);

/// The text of a field of element 0.
std::string text_of(const hxArray* value, const char* field);

/// The status of the check of a field of element 0. `hxClassID::Unknown` accepts any class.
::arrow::Status check(const hxArray* value, const char* field, hxClassID class_id);

/// Throws `Refusal` if that check fails.
void require(const hxArray* value, const char* field, hxClassID class_id);

/// "a 2-by-3 double array"
std::string description(const hxArray* value);

/// Throws `Refusal` if the array is complex or sparse.
void require_plain(const hxArray* value, const char* field);

/// The memory of the elements of a numeric array.
Region memory_of(const hxArray* value);

}  // namespace numera::gauntlet::reading
