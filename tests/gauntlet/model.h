#pragma once

/// \file
/// What `to_numera` gives, said again as plainly as can be: one element after another, nothing of
/// the library used.
///
/// What honours the offset of a slice: numbers, dates, times, timestamps, durations, texts, bytes,
/// codes, the children of structs and the offsets of lists and maps. What does not, on purpose:
/// truth values and validity bits, which are read from the first bit of their buffers, and the
/// children of lists and maps, which are taken whole (map keys and items without the offset of the
/// entries between).

#include "numera/host/array.h"
#include "tests/gauntlet/column.h"
#include "tests/gauntlet/element.h"

namespace numera::gauntlet {

/// The encoded array of a column. Throws `Refused` where its buffers end before its elements.
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
