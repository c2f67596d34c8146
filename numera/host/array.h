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
/// container is borrowed and lives until the container is destroyed or written: a write to a shared
/// copy gives it new values in all its slots.
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

/// An array value. Only the host knows what it is made of; others hold pointers to it.
class hxArray;

/// Class of an array. The numbers are part of the interface.
enum class hxClassID : std::int32_t {
  Unknown = 0,    ///< in a field check: any class
  Cell = 1,       ///< slots found by their index
  Struct = 2,     ///< slots found by their element and field
  Logical = 3,    ///< truth values, one byte each: 0 or 1
  Char = 4,       ///< UTF-16 code units
  Void = 5,       ///< no value; the interface neither makes nor reads one
  Double = 6,     ///< 64-bit floating point; a complex element is a pair, real part first
  Single = 7,     ///< 32-bit floating point; complex as for `Double`
  Int8 = 8,       ///< `std::int8_t`
  UInt8 = 9,      ///< `std::uint8_t`
  Int16 = 10,     ///< `std::int16_t`
  UInt16 = 11,    ///< `std::uint16_t`
  Int32 = 12,     ///< `std::int32_t`
  UInt32 = 13,    ///< `std::uint32_t`
  Int64 = 14,     ///< `std::int64_t`
  UInt64 = 15,    ///< `std::uint64_t`
  Function = 16,  ///< a function handle; the interface neither makes nor reads one
  Object = 18,    ///< of a class with a name; its fields are read like those of a struct
};

/// Whether the elements of a numeric array are single numbers or pairs.
enum class hxComplexity : std::int32_t {
  Real = 0,    ///< one number an element
  Complex = 1  ///< two numbers an element, the real part first
};

/// Frees the array and everything it owns. Null is allowed. Arrays nested however deep are fine.
NUMERA_EXPORT void hxDestroyArray(hxArray* array) noexcept;

/// Lets `hxArrayPtr` destroy what it owns. It has no state: the handle is as large as a pointer.
struct hxDestroy_deleter {
  /// `hxDestroyArray`.
  void operator()(hxArray* array) const noexcept { hxDestroyArray(array); }
};

/// The owning handle of an array.
using hxArrayPtr = std::unique_ptr<hxArray, hxDestroy_deleter>;

/// \name Creation
/// `dims` has at least two entries; it, names and text are copied. The result belongs to the
/// caller. Throws `std::bad_alloc` where memory ends or the number of elements overflows, and then
/// leaves nothing behind.
/// @{

/// A numeric or logical array, every element zero. `class_id` is a numeric class or, for real
/// elements, `Logical`. Cost: linear in the bytes of the elements, at worst.
NUMERA_EXPORT hxArrayPtr hxCreateNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                              hxComplexity complexity);
/// The same with unspecified elements: the caller writes every one of them. A host leaves their
/// memory untouched, which is what this is for.
NUMERA_EXPORT hxArrayPtr hxCreateUninitNumericArray(std::span<const size_t> dims,
                                                    hxClassID class_id, hxComplexity complexity);
/// A cell array, every slot empty.
NUMERA_EXPORT hxArrayPtr hxCreateCellArray(std::span<const size_t> dims);
/// A struct array with the given fields in the given order, every slot empty.
NUMERA_EXPORT hxArrayPtr hxCreateStructArray(std::span<const size_t> dims,
                                             std::span<const char* const> field_names);
/// A 1-by-length char array of the given code units.
NUMERA_EXPORT hxArrayPtr hxCreateCharArray(const char16_t* text, size_t length);
/// A 1-by-length char array with one code unit (0 to 255) a byte; nothing is decoded.
NUMERA_EXPORT hxArrayPtr hxCreateCharArray(const char* text, size_t length);
/// A new array of the same class, dimensions and contents. It shares storage with `array` until
/// either is written, so it costs the same whatever the size. Throws `std::invalid_argument` for a
/// null array.
NUMERA_EXPORT hxArrayPtr hxSharedCopy(const hxArray* array);
/// @}

/// \name Inspection
/// `array` is not null. All of it takes constant time, but for the writable `hxGetData` of a shared
/// array and `hxGetString`, which are linear in the elements.
/// @{

/// Never `hxClassID::Unknown`. A string array answers `hxClassID::Object`.
NUMERA_EXPORT hxClassID hxGetClassID(const hxArray* array) noexcept;
/// "cell", "struct", "logical", "char", "double", "single", "int8" to "uint64", or the class name
/// of an object ("string" for a string array). Lives as long as the array.
NUMERA_EXPORT const char* hxGetClassName(const hxArray* array) noexcept;
NUMERA_EXPORT bool hxIsEmpty(const hxArray* array) noexcept;  ///< no elements
/// double, single, int8 to uint64; complex and sparse ones included.
NUMERA_EXPORT bool hxIsNumeric(const hxArray* array) noexcept;
/// Elements are pairs. False for whatever is not numeric.
NUMERA_EXPORT bool hxIsComplex(const hxArray* array) noexcept;
/// Only some elements are stored. How they lie is the host's own: the library refuses such arrays.
NUMERA_EXPORT bool hxIsSparse(const hxArray* array) noexcept;
/// Another array shares the element block.
NUMERA_EXPORT bool hxIsDataShared(const hxArray* array) noexcept;
/// Bytes an element takes; for a complex array both of its parts together.
NUMERA_EXPORT size_t hxGetElementSize(const hxArray* array) noexcept;
/// The product of the dimensions: of a struct array its elements, not its slots.
NUMERA_EXPORT size_t hxGetNumberOfElements(const hxArray* array) noexcept;
/// At least two. Lives as long as the array.
NUMERA_EXPORT std::span<const size_t> hxGetDimensions(const hxArray* array) noexcept;
/// The element block of a numeric, logical or char array, borrowed; null for every other. It
/// moves only when the array itself is written while shared.
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
/// Only the checked access takes a null array. Looking for a name may cost as much as there are
/// fields; all else takes constant time. Of two fields of one name the first is found.
/// @{

/// Number of the field, or -1 where the struct has none of this name.
NUMERA_EXPORT int hxGetFieldNumber(const hxArray* array, const char* name) noexcept;
/// Fields of a struct or object; 0 for every other array, string arrays included.
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

/// Stores a value into an empty slot of a cell or struct array, which owns it from then on; where
/// that fails, the value is destroyed. The array has that slot: a host need not check it. A shared
/// container is unshared first, which may throw `std::bad_alloc`.
NUMERA_EXPORT void hxSetCell(hxArray* array, size_t slot, hxArrayPtr value);
/// The same for a slot that may hold a value, which is destroyed. A null value empties the slot.
NUMERA_EXPORT void hxReplaceCell(hxArray* array, size_t slot, hxArrayPtr value);
/// Stores the value of a field, as `hxReplaceCell` does. Throws like `hxGetFieldChecked`; a host
/// may also refuse with `std::invalid_argument` "Struct array is not writable.".
NUMERA_EXPORT void hxSetField(hxArray* array, size_t index, const char* name, hxArrayPtr value);
/// @}

/// Throws the host's interrupt exception when the user has asked to stop the running computation.
/// Its type is the host's own: the library lets it pass. Conversions of tables call this once a
/// column, on the thread of their caller, so it should cost little when nothing is pending.
NUMERA_EXPORT void hxThrowIfInterruptPending();
