#pragma once

/// \file
/// The result of `to_numera`, computed as plainly as possible: element by element, without code of
/// the library.
///
/// Honours the offset of a slice: numbers, dates, times, timestamps, durations, texts, bytes,
/// codes, the children of structs and the offsets of lists and maps.
///
/// Ignores it on purpose: truth values and validity bits are read from the first bit of their
/// buffers. The children of lists and maps are taken whole; map keys and items also ignore the
/// offset of the entries array.

#include "numera/host/array.h"
#include "tests/gauntlet/column.h"
#include "tests/gauntlet/element.h"

namespace numera::gauntlet {

/// The encoded array of a column. Throws `Refused` if a buffer ends before the last element.
hxArrayPtr model_envelope(const Column& column);

/// \name Parts of the model
/// @{
hxArrayPtr model_data(const Column& column);
hxArrayPtr model_logical(const Column& column);
hxArrayPtr model_validity(const Column& column, bool plain);
hxArrayPtr model_texts(const Column& column);
hxArrayPtr model_categorical(const Column& column);
hxArrayPtr model_lists(const Column& column);
hxArrayPtr model_structs(const Column& column);
hxArrayPtr model_maps(const Column& column);
/// @}

}  // namespace numera::gauntlet
