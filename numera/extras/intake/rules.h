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

/// The memory layout of the values of a kept type. Every `switch` over it has no default, so a new
/// layout compiles only when every `switch` handles it.
enum class Layout : std::uint8_t {
  kNoValues,
  kBits,
  kFixedWidth,  ///< also the codes of dictionaries
  kText,
  kLargeText,
  kList,
  kLargeList,
  kMap,
  kStruct,
};

struct Rule {
  ::arrow::Type::type id;
  const char* type;  ///< the name in the documentation
  Fate fate;
  Layout layout;        ///< only for kept types
  const char* cast_to;  ///< the target in the documentation; empty if nothing is cast
  Take take;
};

/// One row per type, in the order of type ids.
std::span<const Rule> rules();

/// The layout of a kept type.
Layout layout_of(const ::arrow::DataType& type);

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
