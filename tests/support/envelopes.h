#pragma once

/// \file
/// Builders of encoded arrays, buffers and tables, based on host_builder.h.

#include <cstdint>
#include <vector>

#include "tests/support/host_builder.h"

namespace numera::testing {

/// A buffer envelope in the form that `to_arrow` reads: without "Length".
inline hxArrayPtr BufferEnvelope(const std::vector<std::uint8_t>& bytes) {
  return Struct({{"ArrowType", Char("buffer")}, {"Values", Column<std::uint8_t>(bytes)}});
}

/// An encoded array of the kind "array". `valid` holds the bytes of the validity bitmap.
inline hxArrayPtr Envelope(std::string_view type, hxArrayPtr data,
                           const std::vector<std::uint8_t>& valid = {}) {
  return Struct({{"ArrowType", Char("array")},
                 {"Type", Char(type)},
                 {"Valid", BufferEnvelope(valid)},
                 {"Data", std::move(data)}});
}

/// An encoded array of another kind.
inline hxArrayPtr KindEnvelope(std::string_view kind, std::string_view type, hxArrayPtr data,
                               const std::vector<std::uint8_t>& valid = {}) {
  return Struct({{"ArrowType", Char(kind)},
                 {"Type", Char(type)},
                 {"Valid", BufferEnvelope(valid)},
                 {"Data", std::move(data)}});
}

/// The validity bitmap of an array, in the form that `to_numera` writes.
inline hxArrayPtr WrittenValidity(double length, const std::vector<std::uint8_t>& bytes = {}) {
  return Struct({{"ArrowType", Char("buffer")},
                 {"Values", Column<std::uint8_t>(bytes)},
                 {"Length", Scalar(length)}});
}

/// A bitmap in the form that `to_numera` writes for logical values and for one chunk of a nested
/// value.
inline hxArrayPtr WrittenBitmap(double length, const std::vector<std::uint8_t>& bytes = {}) {
  return Struct({{"Values", Column<std::uint8_t>(bytes)},
                 {"Length", Scalar(length)},
                 {"ArrowType", Char("buffer")}});
}

/// An envelope in the form that `to_numera` writes.
inline hxArrayPtr WrittenEnvelope(std::string_view kind, std::string_view type, hxArrayPtr valid,
                                  hxArrayPtr data) {
  return Struct({{"ArrowType", Char(kind)},
                 {"Type", Char(type)},
                 {"Valid", std::move(valid)},
                 {"Data", std::move(data)}});
}

/// "Data" of structs with one chunk.
inline hxArrayPtr StructData(hxArrayPtr names, hxArrayPtr children) {
  return Struct({{"FieldName", std::move(names)}, {"FieldData", std::move(children)}});
}

}  // namespace numera::testing
