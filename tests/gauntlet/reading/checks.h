#pragma once

/// \file
/// What every rule of the model needs: reading fields, and the words of the refusals.

#include <arrow/status.h>

#include <string>
#include <utility>

#include "numera/host/array.h"
#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

/// A conversion that ends with a status.
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

/// Of a char array; empty of everything else.
std::string text_of(const hxArray* value);

/// The text of a field in element 0.
std::string text_of(const hxArray* value, const char* field);

/// What the check of a field of element 0 says: of any class where it is `hxClassID::Unknown`.
::arrow::Status check(const hxArray* value, const char* field, hxClassID class_id);

/// Ends the conversion where that check fails.
void require(const hxArray* value, const char* field, hxClassID class_id);

/// "a 2-by-3 double array"
std::string description(const hxArray* value);

/// Ends the conversion where numbers are complex or sparse.
void require_plain(const hxArray* value, const char* field);

/// The elements of numbers where they lie.
Region memory_of(const hxArray* value);

}  // namespace numera::gauntlet::reading
