#pragma once

/// \file
/// The array values of the host environment, as the library sees them.
///
/// This header declares functions that a host supplies at link time. The project includes one host,
/// which works in memory (numera/host/memory.h).
///
/// Every array has a class and at least two dimensions. The number of elements is the product of
/// the dimensions; elements are in column-major order. The class determines what an array holds:
/// - numeric, logical: a block of values (logical: one byte per element, 0 or 1)
/// - char: a block of UTF-16 code units
/// - cell, struct: slots, each of which owns another array or is empty; in a struct array,
///   slot = index * number of fields + field number
/// - string array: an object whose elements are texts or missing (string_array.h)
///
/// Ownership: creation returns an owning `hxArrayPtr`. Storing it in a field or cell passes the
/// ownership to the container; the stored array keeps its address. A pointer read from a container
/// is borrowed. It is valid until the container is destroyed or written. A write can invalidate the
/// pointers of all slots: if the container shares its storage, the write first replaces every value
/// by a copy.
///
/// Errors: operations report failure by throwing. Those that cannot fail are `noexcept`.
///
/// Threads: any number of threads may create, read and destroy arrays, as long as no two threads
/// use the same array while one of them writes it. Two shared copies are two arrays.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "numera/export.h"

/// An array value. Only the host knows its definition; all other code holds pointers to it.
class hxArray;

/// Class of an array. The numbers are part of the interface.
enum class hxClassID : std::int32_t {
  Unknown = 0,    ///< in a field check: any class
  Cell = 1,       ///< slots, found by index
  Struct = 2,     ///< slots, found by element and field
  Logical = 3,    ///< booleans, one byte each: 0 or 1
  Char = 4,       ///< UTF-16 code units
  Void = 5,       ///< no value; the interface neither creates nor reads one
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
  Function = 16,  ///< a function handle; the interface neither creates nor reads one
  Object = 18,    ///< of a named class; its fields are read like those of a struct
};

/// Whether the elements of a numeric array are single numbers or pairs.
enum class hxComplexity : std::int32_t {
  Real = 0,    ///< one number per element
  Complex = 1  ///< two numbers per element, the real part first
};

/// Frees the array and everything it owns. `array` may be null. Any depth of nesting is safe.
NUMERA_EXPORT void hxDestroyArray(hxArray* array) noexcept;

/// The deleter of `hxArrayPtr`. It has no state, so the handle has the size of a pointer.
struct hxDestroy_deleter {
  /// Calls `hxDestroyArray`.
  void operator()(hxArray* array) const noexcept { hxDestroyArray(array); }
};

/// The owning handle of an array.
using hxArrayPtr = std::unique_ptr<hxArray, hxDestroy_deleter>;

/// \name Creation
/// `dims` has at least two entries. `dims`, names and text are copied. The caller owns the result.
/// Throws `std::bad_alloc` if memory runs out or the number of elements overflows; nothing leaks.
/// @{

/// A numeric or logical array of zeros. `class_id` is a numeric class, or `Logical` if `complexity`
/// is `Real`. Cost: at worst linear in the bytes of the elements.
NUMERA_EXPORT hxArrayPtr hxCreateNumericArray(std::span<const size_t> dims, hxClassID class_id,
                                              hxComplexity complexity);
/// The same with uninitialized elements: the caller must write all of them. This is faster, because
/// the host does not touch their memory.
NUMERA_EXPORT hxArrayPtr hxCreateUninitNumericArray(std::span<const size_t> dims,
                                                    hxClassID class_id, hxComplexity complexity);
/// A cell array; all slots are empty.
NUMERA_EXPORT hxArrayPtr hxCreateCellArray(std::span<const size_t> dims);
/// A struct array with the given fields in the given order; all slots are empty.
NUMERA_EXPORT hxArrayPtr hxCreateStructArray(std::span<const size_t> dims,
                                             std::span<const char* const> field_names);
/// A 1-by-length char array of the given code units.
NUMERA_EXPORT hxArrayPtr hxCreateCharArray(const char16_t* text, size_t length);
/// A 1-by-length char array with one code unit (0 to 255) per byte; nothing is decoded.
NUMERA_EXPORT hxArrayPtr hxCreateCharArray(const char* text, size_t length);
/// A new array of the same class, dimensions and contents. It shares storage with `array` until
/// either is written, so its cost does not depend on the size. Throws `std::invalid_argument` for a
/// null array.
NUMERA_EXPORT hxArrayPtr hxSharedCopy(const hxArray* array);
/// @}

/// \name Inspection
/// `array` is not null. These functions take constant time, except two that are linear in the
/// elements: `hxGetString`, and the writable `hxGetData` of a shared array.
/// @{

/// Never `hxClassID::Unknown`. A string array returns `hxClassID::Object`.
NUMERA_EXPORT hxClassID hxGetClassID(const hxArray* array) noexcept;
/// "cell", "struct", "logical", "char", "double", "single", "int8" to "uint64", or the class name
/// of an object ("string" for a string array). Lives as long as the array.
NUMERA_EXPORT const char* hxGetClassName(const hxArray* array) noexcept;
NUMERA_EXPORT bool hxIsEmpty(const hxArray* array) noexcept;  ///< no elements
/// double, single, int8 to uint64; complex and sparse ones included.
NUMERA_EXPORT bool hxIsNumeric(const hxArray* array) noexcept;
/// Elements are pairs. False for arrays that are not numeric.
NUMERA_EXPORT bool hxIsComplex(const hxArray* array) noexcept;
/// Only some elements are stored. Only the host knows their layout, so the library rejects such
/// arrays.
NUMERA_EXPORT bool hxIsSparse(const hxArray* array) noexcept;
/// Another array shares the element block.
NUMERA_EXPORT bool hxIsDataShared(const hxArray* array) noexcept;
/// Bytes per element; for a complex array, of both parts together.
NUMERA_EXPORT size_t hxGetElementSize(const hxArray* array) noexcept;
/// The product of the dimensions. For a struct array it counts elements, not slots.
NUMERA_EXPORT size_t hxGetNumberOfElements(const hxArray* array) noexcept;
/// At least two. Lives as long as the array.
NUMERA_EXPORT std::span<const size_t> hxGetDimensions(const hxArray* array) noexcept;
/// The element block of a numeric, logical or char array, borrowed; null for other classes. The
/// block moves only when the array itself is written while shared.
NUMERA_EXPORT const void* hxGetData(const hxArray* array) noexcept;
/// The same for writing; null for other classes, which stay shared. The array is unshared first,
/// which may copy the block. Earlier pointers then refer to the old block, which lives as long as
/// other arrays share it. Throws `std::bad_alloc`.
NUMERA_EXPORT void* hxGetData(hxArray* array);
/// The text of a char array (all elements in storage order) as UTF-8; NUL is kept. Throws
/// `hxCodecError` on an unpaired surrogate and `std::invalid_argument` "Array is not char array."
NUMERA_EXPORT std::string hxGetString(const hxArray* array);
/// @}

/// \name Fields and cells
/// Only the checked functions accept a null array. The search for a name is at worst linear in the
/// number of fields; everything else takes constant time. If two fields have the same name, the
/// first one is found.
/// @{

/// Number of the field, or -1 if no field has this name.
NUMERA_EXPORT int hxGetFieldNumber(const hxArray* array, const char* name) noexcept;
/// Number of fields of a struct or object; 0 for every other array, string arrays included.
NUMERA_EXPORT int hxGetNumberOfFields(const hxArray* array) noexcept;
/// Name of the field, or null if there is no field `number`. Lives as long as the array.
NUMERA_EXPORT const char* hxGetFieldName(const hxArray* array, int number) noexcept;

/// Value of a field of element `index`, borrowed; null if the slot is empty or does not exist.
NUMERA_EXPORT const hxArray* hxGetField(const hxArray* array, size_t index,
                                        const char* name) noexcept;
/// The same with checks, in this order: `std::invalid_argument` "Array is not struct array." for a
/// null array or one that is neither struct nor object, `std::invalid_argument` "Wrong field
/// name.", `std::out_of_range` "Struct index is out of range.". Null if the slot is empty.
NUMERA_EXPORT const hxArray* hxGetFieldChecked(const hxArray* array, size_t index,
                                               const char* name);
/// Value of a cell, borrowed; null if the slot is empty or does not exist.
NUMERA_EXPORT const hxArray* hxGetCell(const hxArray* array, size_t index) noexcept;
/// The same with checks, in this order: `std::invalid_argument` "Array is not cell array." (also
/// for a null array), `std::out_of_range` "Cell index is out of range.".
NUMERA_EXPORT const hxArray* hxGetCellChecked(const hxArray* array, size_t index);

/// Stores a value in an empty slot of a cell or struct array, which then owns the value. If this
/// fails, the value is destroyed. The slot must exist: a host need not check it. A shared container
/// is unshared first, which may throw `std::bad_alloc`.
NUMERA_EXPORT void hxSetCell(hxArray* array, size_t slot, hxArrayPtr value);
/// The same for a slot that may hold a value; that value is destroyed. A null value empties the
/// slot.
NUMERA_EXPORT void hxReplaceCell(hxArray* array, size_t slot, hxArrayPtr value);
/// Stores the value of a field, as `hxReplaceCell` does. Throws like `hxGetFieldChecked`; a host
/// may also refuse with `std::invalid_argument` "Struct array is not writable.".
NUMERA_EXPORT void hxSetField(hxArray* array, size_t index, const char* name, hxArrayPtr value);
/// @}

/// Throws the host's interrupt exception if the user has asked to stop the running computation. The
/// host defines its type; the library passes it through. Table conversions call this once per
/// column, on the caller's thread, so it should be cheap when nothing is pending.
NUMERA_EXPORT void hxThrowIfInterruptPending();
