#include "numera/core/to_numera_datatype.h"

#include <gtest/gtest.h>

namespace numera::io::arrow::core {
namespace {

using ::arrow::field;
using ::arrow::TimeUnit;
using TypePtr = std::shared_ptr<::arrow::DataType>;

struct Named {
  TypePtr type;
  std::optional<std::string> name;
};

TEST(ToNumeraDatatype, NamesTheHostClassOfEveryLeafType) {
  const Named cases[] = {{::arrow::null(), "double"},
                         {::arrow::boolean(), "logical"},
                         {::arrow::uint8(), "uint8"},
                         {::arrow::int8(), "int8"},
                         {::arrow::uint16(), "uint16"},
                         {::arrow::int16(), "int16"},
                         {::arrow::uint32(), "uint32"},
                         {::arrow::int32(), "int32"},
                         {::arrow::uint64(), "uint64"},
                         {::arrow::int64(), "int64"},
                         {::arrow::float32(), "single"},
                         {::arrow::float64(), "double"},
                         {::arrow::utf8(), "string"},
                         {::arrow::large_utf8(), "string"},
                         {::arrow::binary(), "cell"},
                         {::arrow::large_binary(), "cell"},
                         {::arrow::fixed_size_binary(3), "cell"},
                         {::arrow::date32(), "datetime"},
                         {::arrow::date64(), "datetime"},
                         {::arrow::timestamp(TimeUnit::SECOND), "datetime"},
                         {::arrow::timestamp(TimeUnit::NANO, "Europe/Paris"), "datetime"},
                         {::arrow::time32(TimeUnit::MILLI), "duration"},
                         {::arrow::time64(TimeUnit::MICRO), "duration"},
                         {::arrow::duration(TimeUnit::SECOND), "int64"},
                         {::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), "categorical"},
                         {::arrow::dictionary(::arrow::int8(), ::arrow::float16()), "categorical"}};
  for (const auto& [type, name] : cases) EXPECT_EQ(to_numera_datatype(type), name) << *type;
}

TEST(ToNumeraDatatype, HasNoNameForTypesWithoutAHostCounterpart) {
  const TypePtr types[] = {::arrow::float16(),
                           ::arrow::month_interval(),
                           ::arrow::day_time_interval(),
                           ::arrow::month_day_nano_interval(),
                           ::arrow::decimal32(5, 2),
                           ::arrow::decimal64(5, 2),
                           ::arrow::decimal128(5, 2),
                           ::arrow::decimal256(5, 2),
                           ::arrow::sparse_union({field("a", ::arrow::int8())}),
                           ::arrow::dense_union({field("a", ::arrow::int8())}),
                           ::arrow::fixed_size_list(::arrow::int8(), 2),
                           ::arrow::list_view(::arrow::int8()),
                           ::arrow::large_list_view(::arrow::int8()),
                           ::arrow::utf8_view(),
                           ::arrow::binary_view(),
                           ::arrow::run_end_encoded(::arrow::int32(), ::arrow::int8())};
  for (const TypePtr& type : types) EXPECT_EQ(to_numera_datatype(type), std::nullopt) << *type;
  EXPECT_EQ(to_numera_datatype(nullptr), std::nullopt);
}

TEST(ToNumeraDatatype, NamesNestedTypesWhoseChildrenAllHaveNames) {
  using ::arrow::list;
  using ::arrow::map;
  using ::arrow::struct_;
  const TypePtr no_name = ::arrow::float16();
  const Named cases[] = {
      {list(::arrow::int32()), "cell"},
      {list(list(::arrow::int32())), "cell"},
      {::arrow::large_list(::arrow::utf8()), "cell"},
      {list(no_name), std::nullopt},
      {list(list(no_name)), std::nullopt},
      {::arrow::large_list(no_name), std::nullopt},
      {map(::arrow::utf8(), ::arrow::int32()), "cell"},
      {map(::arrow::utf8(), ::arrow::decimal128(5, 2)), std::nullopt},
      {map(no_name, ::arrow::int32()), std::nullopt},
      {map(::arrow::utf8(), list(no_name)), std::nullopt},
      {struct_({}), "table"},
      {struct_({field("a", ::arrow::int8()), field("b", ::arrow::null())}), "table"},
      {struct_({field("a", no_name), field("b", ::arrow::int8())}), std::nullopt},
      {struct_({field("a", ::arrow::int8()), field("b", no_name)}), std::nullopt},
      {struct_({field("a", map(::arrow::int8(), struct_({})))}), "table"},
      {list(struct_({field("a", struct_({field("b", no_name)}))})), std::nullopt}};
  for (const auto& [type, name] : cases) EXPECT_EQ(to_numera_datatype(type), name) << *type;
}

TEST(ToNumeraDatatype, HasNoNameForTypesThatLackATypeWithin) {
  const TypePtr none;
  const TypePtr types[] = {::arrow::list(none),
                           ::arrow::large_list(none),
                           ::arrow::list(::arrow::list(none)),
                           ::arrow::list(std::shared_ptr<::arrow::Field>()),
                           ::arrow::struct_({field("a", none)}),
                           ::arrow::struct_({field("a", ::arrow::int8()), field("b", none)}),
                           ::arrow::map(::arrow::utf8(), none),
                           ::arrow::map(none, ::arrow::utf8()),
                           ::arrow::fixed_size_list(none, 2),
                           ::arrow::dictionary(::arrow::int8(), none)};
  for (size_t i = 0; i < std::size(types); ++i) {
    EXPECT_EQ(to_numera_datatype(types[i]), std::nullopt) << "type " << i;
  }
}

TEST(ToNumeraDatatype, NamesWhatConvertsAndNothingDeeper) {
  TypePtr type = ::arrow::int8();
  for (int i = 0; i < 1024; ++i) type = ::arrow::list(type);
  EXPECT_EQ(to_numera_datatype(type), "cell");
  EXPECT_EQ(to_numera_datatype(::arrow::list(type)), std::nullopt);
}

}  // namespace
}  // namespace numera::io::arrow::core
