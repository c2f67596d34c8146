#pragma once

/// \file
/// The table of rules: what happens to each Arrow type.

#include <arrow/status.h>
#include <arrow/type.h>

#include <cstdint>
#include <span>
#include <string>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

enum class Fate : std::uint8_t {
  kKept,        ///< fit for `to_numera` if its children are
  kKeptOfText,  ///< kept if its values are text, else cast
  kCast,        ///< cast if casts are allowed, else refused
  kRefused,     ///< always refused: there is no rule
};

struct Rule {
  ::arrow::Type::type id;
  const char* type;  ///< the name in the documentation
  Fate fate;
  const char* cast_to;  ///< the target in the documentation; empty if nothing is cast
  Take take;
};

/// One row per type, in the order of type ids.
std::span<const Rule> rules();

struct AllowedCasts {
  bool all = false;
  bool views = false;
};

/// The path of a field of a struct.
std::string field_path(const std::string& path, const std::string& name);

/// Checks a type at every depth. TypeError names the first type that has no rule or may not be
/// cast. Invalid if types nest too deeply or an inner type is a null pointer.
::arrow::Status check_type(const std::string& path, const ::arrow::DataType& type,
                           AllowedCasts allowed);

}  // namespace numera::extras::intake
