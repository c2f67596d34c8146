// The real files of the project: every column goes to the host and comes back. Each row says with
// which types.

#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

/// The rows that `convert` prints for an example file. The two long dictionary types are
/// abbreviated.
std::string way_of(const std::string& file) {
  std::string rows = table_rows(converted(std::string(NUMERA_EXAMPLE_DATA "/") + file));
  const std::pair<std::string, std::string> names[] = {
      {"dictionary<values=string, indices=int32, ordered=0>", "DICTIONARY"},
      {"dictionary<values=large_string, indices=int32, ordered=0>", "LARGE DICTIONARY"}};
  for (const auto& [type, name] : names) {
    for (size_t at = rows.find(type); at != std::string::npos; at = rows.find(type, at)) {
      rows.replace(at, type.size(), name);
    }
  }
  return rows;
}

TEST(ExampleFiles, PenguinsReturn) {
  EXPECT_EQ(
      way_of("penguins.parquet"),
      R"(study | DICTIONARY | categorical | categorical | 344 | 1 | 0 | equal as LARGE DICTIONARY
sample_number | int16 | int16 | int16 | 344 | 1 | 0 | equal
species | DICTIONARY | categorical | categorical | 344 | 1 | 0 | equal as LARGE DICTIONARY
island | DICTIONARY | categorical | categorical | 344 | 1 | 0 | equal as LARGE DICTIONARY
individual | string | string | string | 344 | 1 | 0 | equal as large_string
clutch_complete | bool | logical | logical | 344 | 1 | 0 | equal
egg_date | date32[day] | datetime | datetime | 344 | 1 | 0 | equal as timestamp[s]
culmen_length_mm | double | double | double | 344 | 1 | 2 | equal
culmen_depth_mm | double | double | double | 344 | 1 | 2 | equal
flipper_length_mm | int16 | int16 | int16 | 344 | 1 | 2 | equal
body_mass_g | int32 | int32 | int32 | 344 | 1 | 2 | equal
sex | DICTIONARY | categorical | categorical | 344 | 1 | 11 | equal as LARGE DICTIONARY
delta_15_n | float | single | single | 344 | 1 | 14 | equal
comments | string | string | string | 344 | 1 | 290 | equal as large_string
)");
}

TEST(ExampleFiles, FlightsReturn) {
  EXPECT_EQ(way_of("flights.parquet"),
            R"(date | date32[day] | datetime | datetime | 336,776 | 7 | 0 | equal as timestamp[s]
scheduled_departure | timestamp[ms, tz=America/New_York] | datetime | datetime | 336,776 | 7 | 0 | equal
departure_time | time32[ms] | duration | duration | 336,776 | 7 | 8,255 | equal
arrival_time | time32[ms] | duration | duration | 336,776 | 7 | 8,713 | equal
departure_delay | int16 | int16 | int16 | 336,776 | 7 | 8,255 | equal
arrival_delay | int16 | int16 | int16 | 336,776 | 7 | 9,430 | equal
cancelled | bool | logical | logical | 336,776 | 7 | 0 | equal
carrier | DICTIONARY | categorical | categorical | 336,776 | 7 | 0 | equal as LARGE DICTIONARY
flight | int32 | int32 | int32 | 336,776 | 7 | 0 | equal
tail_number | string | string | string | 336,776 | 7 | 2,512 | equal as large_string
origin | DICTIONARY | categorical | categorical | 336,776 | 7 | 0 | equal as LARGE DICTIONARY
destination | DICTIONARY | categorical | categorical | 336,776 | 7 | 0 | equal as LARGE DICTIONARY
air_time | duration[s] | int64 | int64 | 336,776 | 7 | 9,430 | equal as int64
distance_miles | double | double | double | 336,776 | 7 | 0 | equal
)");
}

TEST(ExampleFiles, CitiesReturn) {
  EXPECT_EQ(way_of("cities.parquet"),
            R"(name | string | string | string | 12,325 | 4 | 0 | equal as large_string
country | DICTIONARY | categorical | categorical | 12,325 | 4 | 0 | equal as LARGE DICTIONARY
population | int64 | int64 | int64 | 12,325 | 4 | 0 | equal
location | struct<latitude: double, longitude: double> | struct | table | 12,325 | 4 | 0 | equal
time_zone | DICTIONARY | categorical | categorical | 12,325 | 4 | 0 | equal as LARGE DICTIONARY
alternate_names | list<element: string> | list_array | cell | 12,325 | 4 | 755 | equal as large_list<item: large_string>
)");
}

TEST(ExampleFiles, CountriesReturn) {
  EXPECT_EQ(
      way_of("countries.arrow"),
      R"(iso3 | fixed_size_binary[3] | fixed_binary_array | cell | 252 | 3 | 0 | equal as large_binary
name | large_string | string | string | 252 | 3 | 0 | equal
continent | DICTIONARY | categorical | categorical | 252 | 3 | 0 | equal as LARGE DICTIONARY
area_km2 | float | single | single | 252 | 3 | 0 | equal
population | uint64 | uint64 | uint64 | 252 | 3 | 0 | equal
languages | large_list<item: string> | large_list_array | cell | 252 | 3 | 3 | equal as large_list<item: large_string>
neighbours | list<item: string> | list_array | cell | 252 | 3 | 87 | equal as large_list<item: large_string>
codes | map<string, string> | map | cell | 252 | 3 | 0 | equal as large_list<item: struct<key: large_string, value: large_string>>
postal_code_pattern | binary | binary_array | cell | 252 | 3 | 74 | equal as large_binary
capital | struct<name: string, known: bool> | struct | table | 252 | 3 | 6 | equal as struct<name: large_string, known: bool>
remarks | null | null | double | 252 | 3 | 252 | equal as double
)");
}

}  // namespace
}  // namespace numera::testing
