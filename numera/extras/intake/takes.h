#pragma once

/// \file
/// How the arrays of a type are taken in: functions for the table of rules. All results have offset
/// 0 at every depth.

#include <string>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// \name Kept types
/// @{
DataResult take_null(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult take_bits(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult take_fixed_width(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Text and bytes; the values stay where they are, and offsets may begin above 0.
template <class Offset>
DataResult take_text(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Lists and maps.
template <class Offset>
DataResult take_list(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult take_struct(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Dictionaries of other than text are cast to their values.
DataResult take_dictionary(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// @}

/// \name Casts
/// Values at null slots become 0 or empty.
/// @{

/// Rounds to the nearest double.
DataResult cast_decimal(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult cast_half_float(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult cast_view(Work& work, const std::string& path, const ::arrow::ArrayData& array);

/// ISO 8601 durations with a sign of its own for every part, none converted into another: "P14M",
/// "P-3DT0.005S", "P1M2DT-0.000000003S", "P0D".
DataResult cast_month_interval(Work& work, const std::string& path,
                               const ::arrow::ArrayData& array);
DataResult cast_day_time_interval(Work& work, const std::string& path,
                                  const ::arrow::ArrayData& array);
DataResult cast_month_day_nano_interval(Work& work, const std::string& path,
                                        const ::arrow::ArrayData& array);

/// The elements stay as they are where the views follow one another without gap or overlap.
template <class Offset>
DataResult cast_list_view(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Only offsets are made: null slots keep their elements.
DataResult cast_fixed_size_list(Work& work, const std::string& path,
                                const ::arrow::ArrayData& array);
DataResult cast_run_end_encoded(Work& work, const std::string& path,
                                const ::arrow::ArrayData& array);
DataResult cast_extension(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// @}

}  // namespace numera::extras::intake
