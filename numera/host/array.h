#pragma once

/// \file
/// The array values of the host environment, as the library sees them.
///
/// Everything in this header is declared here and supplied by a host at link time. The project
/// brings one such host of its own, which works in memory (numera/host/memory.h).
///
/// Every array has a class, at least two dimensions, and as many elements as their product, in
/// column-major order. By class it holds a block of numbers or truth values (logical: one byte an
/// element, 0 or 1), UTF-16 code units (char), or slots that own another array or nothing (cell,
/// struct). The slots of a struct lie element by element: slot = index * number of fields + field
/// number. A string array is an object whose elements are texts or missing (string_array.h).
///
/// Ownership: creation gives an owning `hxArrayPtr`; storing it into a field or cell passes the
/// ownership to the container, and the stored array keeps its address. A pointer read out of a
/// container is borrowed and lives as long as the container holds the value.
///
/// Errors: operations report failure by throwing. Those that cannot fail are `noexcept`.
///
/// Threads: arrays may be made, read and destroyed on any number of threads, as long as no two
/// threads touch one array while one of them writes it. Two shared copies are two arrays.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "numera/export.h"

class hxArray;

/// Class of an array. The numbers are part of the interface.
enum class hxClassID : std::int32_t {
  Unknown = 0,  ///< in a field check: any class
  Cell = 1,
  Struct = 2,
  Logical = 3,
  Char = 4,
  Void = 5,
  Double = 6,
  Single = 7,
  Int8 = 8,
  UInt8 = 9,
  Int16 = 10,
  UInt16 = 11,
  Int32 = 12,
  UInt32 = 13,
  Int64 = 14,
  UInt64 = 15,
  Function = 16,
  Object = 18,
};

enum class hxComplexity : std::int32_t { Real = 0, Complex = 1 };

/// Frees the array and everything it owns. Null is allowed. Arrays nested however deep are fine.
NUMERA_EXPORT void hxDestroyArray(hxArray* array) noexcept;

struct hxDestroy_deleter {
  void operator()(hxArray* array) const noexcept { hxDestroyArray(array); }
};

/// The owning handle of an array.
using hxArrayPtr = std::unique_ptr<hxArray, hxDestroy_deleter>;

/// \name Creation
/// `dims` has at least two entries. Throws `std::bad_alloc` where memory ends or the number of
/// elements overflows.
/// @{

/// A numeric or logical array, every element zero.
NUMERA_EXPORT hxArrayPtr hxCreateNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                              hxComplexity complexity);
/// The same with unspecified elements: the caller writes every one of them.
NUMERA_EXPORT hxArrayPtr hxCreateUninitNumericArray(std::span<const size_t> dims,
                                                    hxClassID class_id, hxComplexity complexity);
/// A cell array, every slot empty.
NUMERA_EXPORT hxArrayPtr hxCreateCellArray(std::span<const size_t> dims);
/// A struct array with the given fields in the given order, every slot empty. Names are copied.
NUMERA_EXPORT hxArrayPtr hxCreateStructArray(std::span<const size_t> dims,
                                             std::span<const char* const> field_names);
/// A 1-by-length char array of the given code units.
NUMERA_EXPORT hxArrayPtr hxCreateCharArray(const char16_t* text, size_t length);
/// A 1-by-length char array with one code unit (0 to 255) a byte; nothing is decoded.
NUMERA_EXPORT hxArrayPtr hxCreateCharArray(const char* text, size_t length);
/// A new array of the same class, dimensions and contents. It shares storage with `array` until
/// either is written.
NUMERA_EXPORT hxArrayPtr hxSharedCopy(const hxArray* array);
/// @}

/// \name Inspection
/// `array` is not null.
/// @{
NUMERA_EXPORT hxClassID hxGetClassID(const hxArray* array) noexcept;
/// "cell", "struct", "logical", "char", "double", "single", "int8" to "uint64", or the class name
/// of an object ("string" for a string array). Lives as long as the array.
NUMERA_EXPORT const char* hxGetClassName(const hxArray* array) noexcept;
NUMERA_EXPORT bool hxIsEmpty(const hxArray* array) noexcept;  ///< no elements
/// double, single, int8 to uint64; complex and sparse ones included.
NUMERA_EXPORT bool hxIsNumeric(const hxArray* array) noexcept;
NUMERA_EXPORT bool hxIsComplex(const hxArray* array) noexcept;
NUMERA_EXPORT bool hxIsSparse(const hxArray* array) noexcept;
/// Another array shares the element block.
NUMERA_EXPORT bool hxIsDataShared(const hxArray* array) noexcept;
/// Bytes an element takes; for a complex array both of its parts together.
NUMERA_EXPORT size_t hxGetElementSize(const hxArray* array) noexcept;
NUMERA_EXPORT size_t hxGetNumberOfElements(const hxArray* array) noexcept;
/// Lives as long as the array.
NUMERA_EXPORT std::span<const size_t> hxGetDimensions(const hxArray* array) noexcept;
/// The element block of a numeric, logical or char array; null for every other. It moves only
/// when the array itself is written while shared.
NUMERA_EXPORT const void* hxGetData(const hxArray* array) noexcept;
/// The same for writing. Unshares first: it may copy the block, and then pointers taken earlier
/// stay on the old one, which lives as long as the arrays that still share it. Throws
/// `std::bad_alloc`.
NUMERA_EXPORT void* hxGetData(hxArray* array);
/// The text of a char array (all its elements in storage order) as UTF-8, NUL kept. Throws
/// `hxCodecError` on an unpaired surrogate and `std::invalid_argument` "Array is not char array."
NUMERA_EXPORT std::string hxGetString(const hxArray* array);
/// @}

/// \name Fields and cells
/// Only the checked access takes a null array.
/// @{

/// Number of the field, or -1 where the struct has none of this name.
NUMERA_EXPORT int hxGetFieldNumber(const hxArray* array, const char* name) noexcept;
NUMERA_EXPORT int hxGetNumberOfFields(const hxArray* array) noexcept;
/// Name of the field, or null where `number` is no field. Lives as long as the array.
NUMERA_EXPORT const char* hxGetFieldName(const hxArray* array, int number) noexcept;

/// Value of a field of element `index`, borrowed; null where the slot is empty or there is none.
NUMERA_EXPORT const hxArray* hxGetField(const hxArray* array, size_t index,
                                        const char* name) noexcept;
/// The same, and checked in this order: `std::invalid_argument` "Array is not struct array." for a
/// null array or one that is neither struct nor object, `std::invalid_argument` "Wrong field
/// name.", `std::out_of_range` "Struct index is out of range.". Still null where the slot is empty.
NUMERA_EXPORT const hxArray* hxGetFieldChecked(const hxArray* array, size_t index,
                                               const char* name);
/// Value of a cell, borrowed; null where the slot is empty or there is none.
NUMERA_EXPORT const hxArray* hxGetCell(const hxArray* array, size_t index) noexcept;
/// The same, and checked in this order: `std::invalid_argument` "Array is not cell array." (a null
/// array too), `std::out_of_range` "Cell index is out of range.".
NUMERA_EXPORT const hxArray* hxGetCellChecked(const hxArray* array, size_t index);

/// Stores a value into an empty slot of a cell or struct array.
NUMERA_EXPORT void hxSetCell(hxArray* array, size_t slot, hxArrayPtr value);
/// Destroys what the slot holds, then stores the value. A null value empties the slot.
NUMERA_EXPORT void hxReplaceCell(hxArray* array, size_t slot, hxArrayPtr value);
/// Stores the value of a field, destroying what the slot held. Throws like `hxGetFieldChecked`; a
/// host may also refuse with `std::invalid_argument` "Struct array is not writable.".
NUMERA_EXPORT void hxSetField(hxArray* array, size_t index, const char* name, hxArrayPtr value);
/// @}

/// Throws the host's interrupt exception when the user has asked to stop the running computation.
NUMERA_EXPORT void hxThrowIfInterruptPending();
