#pragma once

/// \file
/// Converts host text to UTF-8 bytes and offsets, the form that Arrow uses. Any number of threads
/// may convert at the same time, even the same texts, each into its own outputs.

#include "numera/export.h"
#include "numera/host/array.h"
#include "numera/unicode/exceptions.h"

namespace numera::io::arrow::unicode {

/// Converts one host value, with the signature of a host's gateway functions: `inputs` holds
/// `inputCount` borrowed values, and `outputs` receives the first `outputCount` results.
///
/// inputs[0] is one of
/// - a string array of N-by-1 elements; a missing element becomes an empty text,
/// - an N-by-1 cell array of char rows,
/// - an R-by-C char matrix: R texts of C code units each; trailing blanks are kept.
/// String and cell arrays without columns have no texts.
///
/// outputs[0] receives the bytes, a (T + 1)-by-1 uint8 array: the T bytes of all texts without
/// gaps, then one zero byte. outputs[1] receives the offsets of the N texts (R texts for a char
/// matrix), an (N + 1)-by-1 uint64 array: text i is bytes [offsets[i], offsets[i + 1]). Previous
/// values of the outputs are destroyed.
///
/// Errors are thrown and leave the outputs unchanged:
/// - more than 2 outputs, or not exactly 1 input: thrown by `hxErrorMaxLhs`, `hxErrorMaxRhs` or
///   `hxErrorMinRhs`
/// - any other input: `hxTaggedException` with a tag of exceptions.h. Cells are checked in order,
///   each before it is converted.
/// - exceptions of the host, such as a failed allocation, pass through unchanged
///
/// Cost: one pass over the texts measures them, a second pass converts them. Texts that are
/// contiguous in the host's memory are converted many at a time: ASCII directly into the result,
/// other texts by the host's codec. If the codec rejects texts that are converted together, all
/// texts are converted again one by one to find the first invalid text. The rows of a char matrix
/// are first gathered into a string array.
///
/// \code
///   hxArrayPtr outputs[2];
///   const hxArray* inputs[] = {strings.get()};
///   numera::io::arrow::unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);
/// \endcode
NUMERA_EXPORT void convertUTF16ToUTF8(int outputCount, hxArrayPtr* outputs, int inputCount,
                                      const hxArray** inputs);

}  // namespace numera::io::arrow::unicode
