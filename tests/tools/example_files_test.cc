// The real files that the project ships: every column goes to the host, and each row tells what
// becomes of it on its way back. Text and categories return from UTF-8 bytes only, so that their
// host form is refused; a field that a string array lacks is refused by the host itself.

#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

/// The table of `convert` for a file of the examples, and its last line.
std::string converted(const std::string& file) {
  const Outcome run = run_program({"convert", std::string(NUMERA_EXAMPLE_DATA "/") + file});
  EXPECT_EQ(run.exit_status, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  return table_rows(run.out) + line_that_starts(run.out, "as one table") + "\n";
}

TEST(ExampleFiles, PenguinsGoToTheHost) {
  EXPECT_EQ(
      converted("penguins.parquet"),
      R"(study | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 344 | 1 | 0 | Incorrect type 'string' for struct array field 'Categories'
sample_number | int16 | int16 | int16 | 344 | 1 | 0 | equal
species | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 344 | 1 | 0 | Incorrect type 'string' for struct array field 'Categories'
island | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 344 | 1 | 0 | Incorrect type 'string' for struct array field 'Categories'
individual | string | string | string | 344 | 1 | 0 | Wrong field name.
clutch_complete | bool | logical | logical | 344 | 1 | 0 | equal
egg_date | date32[day] | datetime | datetime | 344 | 1 | 0 | Incorrect type 'int32' for struct array field 'Values'
culmen_length_mm | double | double | double | 344 | 1 | 2 | equal
culmen_depth_mm | double | double | double | 344 | 1 | 2 | equal
flipper_length_mm | int16 | int16 | int16 | 344 | 1 | 2 | equal
body_mass_g | int32 | int32 | int32 | 344 | 1 | 2 | equal
sex | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 344 | 1 | 11 | Incorrect type 'string' for struct array field 'Categories'
delta_15_n | float | single | single | 344 | 1 | 14 | equal
comments | string | string | string | 344 | 1 | 290 | Wrong field name.
as one table: 7 of 14 columns there and back, equal
)");
}

TEST(ExampleFiles, FlightsGoToTheHost) {
  EXPECT_EQ(
      converted("flights.parquet"),
      R"(date | date32[day] | datetime | datetime | 336,776 | 7 | 0 | Incorrect type 'int32' for struct array field 'Values'
scheduled_departure | timestamp[ms, tz=America/New_York] | datetime | datetime | 336,776 | 7 | 0 | equal
departure_time | time32[ms] | duration | duration | 336,776 | 7 | 8,255 | equal
arrival_time | time32[ms] | duration | duration | 336,776 | 7 | 8,713 | equal
departure_delay | int16 | int16 | int16 | 336,776 | 7 | 8,255 | equal
arrival_delay | int16 | int16 | int16 | 336,776 | 7 | 9,430 | equal
cancelled | bool | logical | logical | 336,776 | 7 | 0 | equal
carrier | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 336,776 | 7 | 0 | Incorrect type 'string' for struct array field 'Categories'
flight | int32 | int32 | int32 | 336,776 | 7 | 0 | equal
tail_number | string | string | string | 336,776 | 7 | 2,512 | Wrong field name.
origin | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 336,776 | 7 | 0 | Incorrect type 'string' for struct array field 'Categories'
destination | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 336,776 | 7 | 0 | Incorrect type 'string' for struct array field 'Categories'
air_time | duration[s] | int64 | int64 | 336,776 | 7 | 9,430 | returns as int64
distance_miles | double | double | double | 336,776 | 7 | 0 | equal
as one table: 8 of 14 columns there and back, equal
)");
}

TEST(ExampleFiles, CitiesGoToTheHost) {
  EXPECT_EQ(converted("cities.parquet"),
            R"(name | string | string | string | 12,325 | 4 | 0 | Wrong field name.
country | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 12,325 | 4 | 0 | Incorrect type 'string' for struct array field 'Categories'
population | int64 | int64 | int64 | 12,325 | 4 | 0 | equal
location | struct<latitude: double, longitude: double> | struct | table | 12,325 | 4 | 0 | returns 4,000 of 12,325 rows
time_zone | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 12,325 | 4 | 0 | Incorrect type 'string' for struct array field 'Categories'
alternate_names | list<element: string> | list_array | cell | 12,325 | 4 | 755 | Field 'StartOffsets': found a 4001-by-1 int32 array, expected a uint64 array.
as one table: 1 of 6 columns there and back, equal
)");
}

TEST(ExampleFiles, CountriesGoToTheHost) {
  EXPECT_EQ(
      converted("countries.arrow"),
      R"(iso3 | fixed_size_binary[3] | fixed_binary_array | cell | 252 | 3 | 0 | Invalid type for NUMERA to Arrow conversion.
name | large_string | string | string | 252 | 3 | 0 | Wrong field name.
continent | dictionary<values=string, indices=int32, ordered=0> | categorical | categorical | 252 | 3 | 0 | Incorrect type 'string' for struct array field 'Categories'
area_km2 | float | single | single | 252 | 3 | 0 | equal
population | uint64 | uint64 | uint64 | 252 | 3 | 0 | equal
languages | large_list<item: string> | large_list_array | cell | 252 | 3 | 3 | Field 'StartOffsets': found a 101-by-1 int64 array, expected a uint64 array.
neighbours | list<item: string> | list_array | cell | 252 | 3 | 87 | Field 'StartOffsets': found a 101-by-1 int32 array, expected a uint64 array.
codes | map<string, string> | map | cell | 252 | 3 | 0 | Expected 'array' input type, received 'map' instead.
postal_code_pattern | binary | binary_array | cell | 252 | 3 | 74 | Invalid type for NUMERA to Arrow conversion.
capital | struct<name: string, known: bool> | struct | table | 252 | 3 | 6 | Wrong field name.
remarks | null | null | double | 252 | 3 | 252 | returns as int64
as one table: 2 of 11 columns there and back, equal
)");
}

}  // namespace
}  // namespace numera::testing
