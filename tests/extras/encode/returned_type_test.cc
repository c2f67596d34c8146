#include <arrow/api.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "numera/core/limits.h"
#include "numera/extras/encode/encode.h"

namespace numera::testing {
namespace {

using namespace ::arrow;  // NOLINT(google-build-using-namespace)
using extras::returned_type;
using extras::returns_as;
using TypePtr = std::shared_ptr<DataType>;

struct Row {
  TypePtr from;
  TypePtr to;
};

std::vector<Row> rows() {
  return {
      {null(), float64()},
      {boolean(), boolean()},
      {int8(), int8()},
      {float32(), float32()},
      {float64(), float64()},
      {utf8(), large_utf8()},
      {large_utf8(), large_utf8()},
      {binary(), large_binary()},
      {large_binary(), large_binary()},
      {fixed_size_binary(4), large_binary()},
      {date32(), timestamp(TimeUnit::SECOND)},
      {date64(), timestamp(TimeUnit::MILLI)},
      {time32(TimeUnit::SECOND), time32(TimeUnit::SECOND)},
      {timestamp(TimeUnit::MICRO, "Europe/Paris"), timestamp(TimeUnit::MICRO, "Europe/Paris")},
      {duration(TimeUnit::NANO), int64()},
      {dictionary(int8(), utf8(), true), dictionary(int8(), large_utf8(), true)},
      {list(int32()), large_list(int32())},
      {large_list(utf8()), large_list(large_utf8())},
      {struct_({field("a", date32()), field("b", utf8())}),
       struct_({field("a", timestamp(TimeUnit::SECOND)), field("b", large_utf8())})},
      {map(utf8(), int16()),
       large_list(struct_({field("key", large_utf8()), field("value", int16())}))},
  };
}

TEST(ReturnedType, ATimeZoneThatIsNoUtf8HasACharacterAByte) {
  const TypePtr text = timestamp(TimeUnit::MILLI, "São");
  EXPECT_TRUE((*returned_type(*text))->Equals(*text));
  EXPECT_TRUE((*returned_type(*timestamp(TimeUnit::MILLI, "S\xE3o")))->Equals(*text));
}

TEST(ReturnedType, IsThatOfTheTable) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.from->ToString());
    const auto returned = returned_type(*row.from);
    ASSERT_TRUE(returned.has_value());
    EXPECT_TRUE((*returned)->Equals(*row.to)) << **returned;
    EXPECT_TRUE(returns_as(*row.from, *row.to));
  }
}

TEST(ReturnedType, IsTheTypeItselfForTheOtherNumbersAndTimes) {
  for (const TypePtr& type :
       {int16(), int32(), int64(), uint8(), uint16(), uint32(), uint64(), time32(TimeUnit::MILLI),
        time64(TimeUnit::MICRO), time64(TimeUnit::NANO), timestamp(TimeUnit::NANO)}) {
    EXPECT_TRUE((*returned_type(*type))->Equals(*type)) << *type;
  }
}

/// The first two columns of the table in the documentation.
std::vector<std::string> documented_rows() {
  std::ifstream file(std::string(NUMERA_SOURCE_DIR) + "/docs/encode.md");
  std::vector<std::string> found;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("| `")) found.push_back(line.substr(0, line.rfind("` | ") + 1));
  }
  return found;
}

TEST(ReturnedType, IsThatOfTheDocumentation) {
  std::vector<std::string> stated;
  for (const Row& row : rows()) {
    const TypePtr returned = *returned_type(*row.from);
    stated.push_back("| `" + row.from->ToString() + "` | `" + returned->ToString() + "`");
  }
  EXPECT_EQ(documented_rows(), stated);
}

TEST(ReturnedType, IsNoneWhereAValueCannotGoThereAndBack) {
  const std::vector<TypePtr> types = {
      float16(),
      decimal32(3, 1),
      decimal64(3, 1),
      decimal128(3, 1),
      decimal256(3, 1),
      month_interval(),
      day_time_interval(),
      month_day_nano_interval(),
      fixed_size_list(int8(), 2),
      list_view(int8()),
      large_list_view(int8()),
      utf8_view(),
      binary_view(),
      run_end_encoded(int32(), int8()),
      sparse_union({field("a", int8())}),
      dense_union({field("a", int8())}),
      dictionary(int8(), int32()),
      struct_({}),
      list(float16()),
      large_list(struct_({})),
      struct_({field("a", int8()), field("b", float16())}),
      map(utf8(), float16()),
      map(float16(), utf8()),
  };
  for (const TypePtr& type : types) {
    EXPECT_FALSE(returned_type(*type).has_value()) << *type;
    EXPECT_FALSE(returns_as(*type, *type)) << *type;
  }
}

TEST(ReturnedType, IsNoneWhereATypeIsMissing) {
  const TypePtr none;
  const std::pair<const char*, TypePtr> types[] = {
      {"list", list(none)},
      {"list without a field", list(std::shared_ptr<::arrow::Field>())},
      {"large list", large_list(none)},
      {"struct", struct_({field("a", int8()), field("b", none)})},
      {"keys", map(none, int8())},
      {"items", map(int8(), none)},
      {"map of no struct", std::make_shared<MapType>(field("entries", int8()))},
      {"dictionary", dictionary(int8(), none)},
      {"list in a struct", struct_({field("a", list(none))})},
      {"dictionary in a map", map(utf8(), dictionary(int8(), none))},
  };
  for (const auto& [what, type] : types) {
    EXPECT_FALSE(returned_type(*type).has_value()) << what;
    EXPECT_FALSE(returns_as(*type, *large_list(int8()))) << what;
  }
}

TEST(ReturnedType, IsNoTypeThatLacksAnother) {
  const TypePtr none;
  EXPECT_FALSE(returns_as(*list(int8()), *large_list(none)));
  EXPECT_FALSE(
      returns_as(*struct_({field("a", list(int8()))}), *struct_({field("a", large_list(none))})));
  EXPECT_FALSE(returns_as(*dictionary(int8(), utf8()), *dictionary(int8(), none)));
}

TEST(ReturnedType, IsNoneBeyondTheDepthThatTheCoreReads) {
  TypePtr type = int8();
  for (int i = 0; i < io::arrow::core::kMaxNestingLevels; ++i) type = list(type);
  EXPECT_TRUE(returned_type(*type).has_value());
  EXPECT_FALSE(returned_type(*list(type)).has_value());

  TypePtr maps = int8();
  for (int i = 0; i < io::arrow::core::kMaxNestingLevels / 2; ++i) maps = map(int8(), maps);
  EXPECT_TRUE(returned_type(*maps).has_value());
  EXPECT_FALSE(returned_type(*map(int8(), maps)).has_value());
  EXPECT_FALSE(returned_type(*list(maps)).has_value());
}

TEST(ReturnedType, MayBeThatOfMergedDictionaries) {
  const TypePtr from = dictionary(int8(), utf8(), true);
  EXPECT_TRUE(returns_as(*from, *dictionary(int16(), large_utf8())));
  EXPECT_FALSE(returns_as(*from, *dictionary(int16(), large_utf8(), true)));
  EXPECT_FALSE(returns_as(*from, *dictionary(int16(), utf8())));
  EXPECT_FALSE(returns_as(*from, *large_utf8()));
  EXPECT_FALSE(returns_as(*utf8(), *dictionary(int16(), large_utf8())));
}

}  // namespace
}  // namespace numera::testing
