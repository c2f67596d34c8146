#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <exception>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"

namespace numera::testing {
namespace {

using extras::make_readable;
using io::arrow::core::to_arrow;
using io::arrow::core::to_arrow_table;
using io::arrow::core::to_numera;

struct SlotPlace {
  hxArray* container;
  size_t slot;
};

/// Collects every slot below `value` in a fixed order. The test owns the value and may change it.
void collect_slots(const hxArray* value, std::vector<SlotPlace>& places) {
  if (value == nullptr || hxIsStringArray(value)) return;
  const auto fields = static_cast<size_t>(std::max(hxGetNumberOfFields(value), 0));
  const bool cells = hxGetClassID(value) == hxClassID::Cell;
  if (!cells && fields == 0) return;
  const size_t slots = hxGetNumberOfElements(value) * (cells ? 1 : fields);
  for (size_t slot = 0; slot < slots; ++slot) {
    places.push_back({const_cast<hxArray*>(value), slot});
    collect_slots(cells ? hxGetCell(value, slot)
                        : hxGetField(value, slot / fields,
                                     hxGetFieldName(value, static_cast<int>(slot % fields))),
                  places);
  }
}

std::vector<hxArrayPtr> bad_values() {
  std::vector<hxArrayPtr> values;
  values.push_back(Empty());
  values.push_back(Scalar(1e300));
  values.push_back(Scalar(-1.0));
  values.push_back(Scalar<std::int64_t>(-5));
  values.push_back(Column<std::int8_t>({-1, 100, -128, 5}));
  values.push_back(Column<std::int32_t>({0, 1, 100}));
  values.push_back(Column<std::int32_t>({0, -1, 2}));
  values.push_back(Column<std::int64_t>({2, 1, std::numeric_limits<std::int64_t>::max()}));
  values.push_back(Column<std::uint64_t>({0, 1, std::numeric_limits<std::uint64_t>::max()}));
  values.push_back(Column<std::uint64_t>({}));
  values.push_back(Column<std::uint8_t>({}));
  values.push_back(Column<std::uint8_t>({0xFF}));
  values.push_back(Matrix<double>({1, 0, 3}, {}));
  values.push_back(Complex<double>({1, 1}, {{1, 2}}));
  values.push_back(host::memory::CreateSparseArray(Dims{3, 3}, hxClassID::Int32));
  values.push_back(Logical({true, false}));
  values.push_back(Char(""));
  values.push_back(Char("array"));
  values.push_back(Char("struct"));
  values.push_back(Char("null"));
  values.push_back(Char(u"\xD800"));
  values.push_back(CharMatrix({2, 2, 2}, u"abcdefgh"));
  values.push_back(Strings({u"a", std::nullopt, u"\xDC00"}));
  values.push_back(Cell({}));
  values.push_back(Cell({Empty(), Char("a")}));
  values.push_back(Cell({Column<std::uint8_t>({1}), Column<std::uint8_t>({2})}));
  values.push_back(Struct({}));
  values.push_back(StructArray({0, 1}, {"Values", "StartOffsets", "ArrowType"}, {}));
  values.push_back(ListData(Empty(), Empty()));
  values.push_back(Numbers<double>({1}));
  values.push_back(WrittenBitmap(1e18, {1}));
  values.push_back(ObjectArray("Point", {1, 1}, {"Values"}, {{Scalar(1.0)}}));
  return values;
}

/// Reads an encoded value and validates it with Arrow.
::arrow::Status read_fully(const hxArray* readable) {
  const std::string kind = hxGetString(hxGetField(readable, 0, "ArrowType"));
  if (kind == "buffer") return to_arrow<::arrow::Buffer>(readable).status();
  if (kind == "table") {
    ARROW_ASSIGN_OR_RAISE(const auto table, to_arrow_table(readable));
    for (const auto& column : table->columns()) ARROW_RETURN_NOT_OK(column->ValidateFull());
    return {};
  }
  ARROW_ASSIGN_OR_RAISE(const auto array, to_arrow<::arrow::Array>(readable));
  return array->ValidateFull();
}

/// Expects that the value is refused, or that Arrow's validation accepts its encoded form.
void expect_refused_or_readable(const hxArray* value) {
  const auto readable = make_readable(value);
  if (!readable.ok()) {
    EXPECT_TRUE(readable.status().IsTypeError() || readable.status().IsInvalid())
        << readable.status();
    return;
  }
  const ::arrow::Status status = read_fully(readable->get());
  EXPECT_TRUE(status.ok()) << status << "\n" << extras::print(value);
}

/// The four values of an envelope and the three of its "Valid".
constexpr size_t kLeastSlots = 7;

void replace_every_slot(const std::function<hxArrayPtr()>& make) {
  const hxArrayPtr sound = make();
  std::vector<SlotPlace> places;
  collect_slots(sound.get(), places);
  const size_t bad_count = bad_values().size();
  for (size_t place = 0; place < places.size(); ++place) {
    for (size_t bad = 0; bad < bad_count; ++bad) {
      SCOPED_TRACE("slot " + std::to_string(place) + ", value " + std::to_string(bad));
      const hxArrayPtr value = make();
      std::vector<SlotPlace> own_places;
      collect_slots(value.get(), own_places);
      const SlotPlace target = own_places.at(place);
      hxReplaceCell(target.container, target.slot, std::move(bad_values()[bad]));
      expect_refused_or_readable(value.get());
    }
  }
  EXPECT_GE(places.size(), kLeastSlots);
}

TEST(EncodeHostileValues, EveryPartOfAWrittenArrayMayBeAnything) {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  const struct {
    std::shared_ptr<DataType> type;
    std::vector<std::string> json;
  } rows[] = {
      {float64(), {"[1, null]"}},
      {boolean(), {"[true, null]"}},
      {utf8(), {R"(["a", null])"}},
      {binary(), {R"(["a", null])"}},
      {date32(), {"[1, null]"}},
      {time32(TimeUnit::SECOND), {"[1, null]"}},
      {timestamp(TimeUnit::SECOND, "é"), {"[1, null]"}},
      {dictionary(int8(), utf8()), {R"(["a", null])"}},
      {null(), {"[null]"}},
      {list(int8()), {"[[1, 2], null]"}},
      {large_list(utf8()), {R"([["a"], null])", R"([["b"]])"}},
      {struct_({field("a", int8()), field("b", dictionary(int8(), utf8()))}),
       {R"([{"a": 1, "b": "x"}, null])", R"([{"a": 2, "b": "y"}])"}},
      {map(utf8(), list(int8())), {R"([[["a", [1]]], null])", R"([[["b", null]]])"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type->ToString());
    replace_every_slot([&] { return to_numera(ArrowChunks(row.type, row.json)).ValueOrDie(); });
  }
}

TEST(EncodeHostileValues, EveryPartOfAReadableArrayMayBeAnything) {
  const auto type = ::arrow::large_list(
      ::arrow::struct_({::arrow::field("t", ::arrow::utf8()),
                        ::arrow::field("d", ::arrow::dictionary(::arrow::int8(), ::arrow::utf8())),
                        ::arrow::field("b", ::arrow::boolean())}));
  const hxArrayPtr written =
      to_numera(ArrowChunks(type, {R"([[{"t": "a", "d": "b", "b": true}], null])"})).ValueOrDie();
  replace_every_slot([&] { return make_readable(written.get()).ValueOrDie(); });
}

TEST(EncodeHostileValues, EveryPartOfATableMayBeAnything) {
  const auto table = ::arrow::Table::Make(
      ::arrow::schema({::arrow::field("a", ::arrow::int8()), ::arrow::field("b", ::arrow::utf8())}),
      {ArrowArray(::arrow::int8(), "[1, null]"), ArrowArray(::arrow::utf8(), R"(["x", null])")});
  replace_every_slot([&] { return to_numera(table).ValueOrDie(); });
}

}  // namespace
}  // namespace numera::testing
