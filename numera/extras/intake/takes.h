#pragma once

/// \file
/// Functions that take in arrays, for the table of rules. All results have offset 0 at all depths.

#include <string>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// \name Kept types
/// @{
DataResult take_null(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult take_bits(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult take_fixed_width(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Text and bytes. The values stay in place, so offsets may start above 0.
template <class Offset>
DataResult take_text(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Lists and maps.
template <class Offset>
DataResult take_list(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult take_struct(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Dictionaries whose values are not text are cast to their values.
DataResult take_dictionary(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// @}

/// \name Casts
/// Values at null slots become 0 or empty, except in `cast_fixed_size_list`.
/// @{

/// Rounds to the nearest double.
DataResult cast_decimal(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult cast_half_float(Work& work, const std::string& path, const ::arrow::ArrayData& array);
DataResult cast_view(Work& work, const std::string& path, const ::arrow::ArrayData& array);

/// ISO 8601 durations: "P14M", "P-3DT0.005S", "P1M2DT-0.000000003S", "P0D". Every part has its own
/// sign. No part is converted into another.
DataResult cast_month_interval(Work& work, const std::string& path,
                               const ::arrow::ArrayData& array);
DataResult cast_day_time_interval(Work& work, const std::string& path,
                                  const ::arrow::ArrayData& array);
DataResult cast_month_day_nano_interval(Work& work, const std::string& path,
                                        const ::arrow::ArrayData& array);

/// The elements are not rearranged if the views follow one another without gap or overlap.
template <class Offset>
DataResult cast_list_view(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// Only offsets are created. Null slots keep their elements.
DataResult cast_fixed_size_list(Work& work, const std::string& path,
                                const ::arrow::ArrayData& array);
DataResult cast_run_end_encoded(Work& work, const std::string& path,
                                const ::arrow::ArrayData& array);
DataResult cast_extension(Work& work, const std::string& path, const ::arrow::ArrayData& array);
/// @}

}  // namespace numera::extras::intake
