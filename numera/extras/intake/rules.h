#pragma once

/// \file
/// What becomes of every Arrow type: the one table of rules.

#include <arrow/status.h>
#include <arrow/type.h>

#include <cstdint>
#include <span>
#include <string>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

enum class Fate : std::uint8_t {
  kKept,        ///< fit for `to_numera`, as far as its children are
  kKeptOfText,  ///< the same where its values are text, else cast
  kCast,        ///< refused unless casts are asked for
  kRefused,     ///< there is no rule
};

struct Rule {
  ::arrow::Type::type id;
  const char* type;  ///< as the documentation names it
  Fate fate;
  const char* cast_to;  ///< as the documentation says it; empty where nothing is cast
  Take take;
};

/// A row for every type, in the order of their ids.
std::span<const Rule> rules();

/// What may be cast.
struct Leave {
  bool all = false;
  bool views = false;
};

/// The path of a field of a struct.
std::string field_path(const std::string& path, const std::string& name);

/// TypeError that names the first type, at any depth, for which there is no rule or no leave to
/// cast; Invalid where types are nested too deeply.
::arrow::Status check_type(const std::string& path, const ::arrow::DataType& type, Leave leave);

}  // namespace numera::extras::intake
