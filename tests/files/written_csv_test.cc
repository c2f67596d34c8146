// What comes back of a CSV file that a sink wrote.

#include <arrow/type.h>
#include <gtest/gtest.h>

#include "numera/files/read.h"
#include "tests/files/written.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using ::arrow::TimeUnit;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// The column, written and read.
std::shared_ptr<::arrow::Table> returned(const TypePtr& type, const std::string& json) {
  const TemporaryFolder folder;
  const std::string path = folder.path("a.csv");
  const auto values = ArrowArray(type, json);
  EXPECT_EQ(write_batches(path, {batch_of("c", values)}), ::arrow::Status::OK());
  return files::open_source(path).ValueOrDie()->ToTable().ValueOrDie();
}

TEST(WrittenCsv, ComesBackEqual) {
  const std::pair<TypePtr, std::string> cases[] = {
      {::arrow::null(), "[null, null]"},
      {::arrow::boolean(), "[true, null, false]"},
      {::arrow::int64(), "[9223372036854775807, null, -9223372036854775808]"},
      {::arrow::float64(), "[0.1, null, 1e300, 5e-324, Inf, -Inf, -0.5]"},
      {::arrow::date32(), "[0, null, -719528, 2932896]"},
      {::arrow::time32(TimeUnit::SECOND), "[0, null, 86399]"},
      {::arrow::timestamp(TimeUnit::SECOND), "[0, null, -1]"},
      {::arrow::timestamp(TimeUnit::NANO), "[0, null, -1]"},
      {::arrow::timestamp(TimeUnit::SECOND, "UTC"), "[0, null]"},
      {::arrow::timestamp(TimeUnit::NANO, "UTC"), "[1, null]"},
      {::arrow::utf8(),
       R"(["", null, "NA", "null", " a ", "x\"y", "\"", "a,b", "1\n2", "\r", "\r\n", "ä"])"}};
  for (const auto& [type, json] : cases) {
    const auto table = returned(type, json);
    EXPECT_TRUE(table->Equals(*table_of({{"c", type, json}}))) << table->ToString();
  }
}

TEST(WrittenCsv, ComesBackInAnotherTypeOrAsNull) {
  const std::tuple<TypePtr, std::string, TypePtr, std::string> cases[] = {
      {::arrow::utf8(), R"(["1", "2"])", ::arrow::int64(), "[1, 2]"},
      {::arrow::utf8(), R"(["true"])", ::arrow::boolean(), "[true]"},
      {::arrow::utf8(), R"(["2024-02-29"])", ::arrow::date32(), "[19782]"},
      {::arrow::utf8(), "[null]", ::arrow::null(), "[null]"},
      {::arrow::int8(), "[-1]", ::arrow::int64(), "[-1]"},
      {::arrow::uint64(), "[18446744073709551615]", ::arrow::float64(), "[18446744073709551615]"},
      {::arrow::float16(), "[1.5]", ::arrow::float64(), "[1.5]"},
      {::arrow::float32(), "[0.1]", ::arrow::float64(), "[0.1]"},
      {::arrow::float64(), "[1, 2]", ::arrow::int64(), "[1, 2]"},
      {::arrow::float64(), "[NaN, 1.5]", ::arrow::float64(), "[null, 1.5]"},
      {::arrow::decimal128(5, 2), R"(["1.10"])", ::arrow::float64(), "[1.1]"},
      {::arrow::date64(), "[86400000]", ::arrow::date32(), "[1]"},
      {::arrow::date32(), "[2932897]", ::arrow::utf8(), R"(["10000-01-01"])"},
      {::arrow::date32(), "[-719529]", ::arrow::utf8(), R"(["-0001-12-31"])"},
      {::arrow::time32(TimeUnit::MILLI), "[1]", ::arrow::utf8(), R"(["00:00:00.001"])"},
      {::arrow::timestamp(TimeUnit::MILLI), "[1]", ::arrow::timestamp(TimeUnit::NANO), "[1000000]"},
      {::arrow::timestamp(TimeUnit::MILLI), "[253402300799999]", ::arrow::utf8(),
       R"(["9999-12-31 23:59:59.999"])"},
      {::arrow::timestamp(TimeUnit::SECOND, "+05:30"), "[7]",
       ::arrow::timestamp(TimeUnit::SECOND, "UTC"), "[7]"},
      {::arrow::duration(TimeUnit::SECOND), "[-5]", ::arrow::int64(), "[-5]"}};
  for (const auto& [type, json, returned_type, returned_json] : cases) {
    const auto table = returned(type, json);
    EXPECT_TRUE(table->Equals(*table_of({{"c", returned_type, returned_json}})))
        << *type << " " << json << table->ToString();
  }
}

}  // namespace
}  // namespace numera::testing
