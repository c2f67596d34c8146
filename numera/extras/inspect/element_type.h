#pragma once

/// \file
/// From the class of an array to the type of its elements.

#include <cstdint>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// Calls `use.template operator()<T>()` with the type of a number of the class; `bool` stands for a
/// truth value, which takes one byte. Calls `otherwise()` for a class that holds neither.
template <class Use, class Otherwise>
auto with_element_type(hxClassID class_id, Use use, Otherwise otherwise) {
  switch (class_id) {
    case hxClassID::Logical:
      return use.template operator()<bool>();
    case hxClassID::Double:
      return use.template operator()<double>();
    case hxClassID::Single:
      return use.template operator()<float>();
    case hxClassID::Int8:
      return use.template operator()<std::int8_t>();
    case hxClassID::UInt8:
      return use.template operator()<std::uint8_t>();
    case hxClassID::Int16:
      return use.template operator()<std::int16_t>();
    case hxClassID::UInt16:
      return use.template operator()<std::uint16_t>();
    case hxClassID::Int32:
      return use.template operator()<std::int32_t>();
    case hxClassID::UInt32:
      return use.template operator()<std::uint32_t>();
    case hxClassID::Int64:
      return use.template operator()<std::int64_t>();
    case hxClassID::UInt64:
      return use.template operator()<std::uint64_t>();
    case hxClassID::Unknown:
    case hxClassID::Cell:
    case hxClassID::Struct:
    case hxClassID::Char:
    case hxClassID::Void:
    case hxClassID::Function:
    case hxClassID::Object:
      break;
  }
  return otherwise();
}

}  // namespace numera::extras::inspect
