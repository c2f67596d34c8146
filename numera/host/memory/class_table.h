#pragma once

/// \file
/// Fixed properties of each array class.

#include <cstddef>

#include "numera/host/array.h"

namespace numera::host::memory {

struct ClassFacts {
  const char* name;      ///< null if the class has no fixed name or cannot be created
  size_t element_bytes;  ///< 0 if elements are not plain values
  bool numeric;
};

/// Facts of a class; those of `hxClassID::Unknown` for a class that is not in the interface.
constexpr ClassFacts class_facts(hxClassID class_id) {
  switch (class_id) {
    case hxClassID::Cell:
      return {"cell", 0, false};
    case hxClassID::Struct:
      return {"struct", 0, false};
    case hxClassID::Logical:
      return {"logical", 1, false};
    case hxClassID::Char:
      return {"char", 2, false};
    case hxClassID::Double:
      return {"double", 8, true};
    case hxClassID::Single:
      return {"single", 4, true};
    case hxClassID::Int8:
      return {"int8", 1, true};
    case hxClassID::UInt8:
      return {"uint8", 1, true};
    case hxClassID::Int16:
      return {"int16", 2, true};
    case hxClassID::UInt16:
      return {"uint16", 2, true};
    case hxClassID::Int32:
      return {"int32", 4, true};
    case hxClassID::UInt32:
      return {"uint32", 4, true};
    case hxClassID::Int64:
      return {"int64", 8, true};
    case hxClassID::UInt64:
      return {"uint64", 8, true};
    case hxClassID::Unknown:
    case hxClassID::Void:
    case hxClassID::Function:
    case hxClassID::Object:
      break;
  }
  return {nullptr, 0, false};
}

}  // namespace numera::host::memory
