/// \file
/// Types that contain a null pointer where a type belongs.

#include <arrow/api.h>
#include <arrow/extension_type.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/intake/intake.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using namespace ::arrow;  // NOLINT(google-build-using-namespace)
using extras::take_in;
using TypePtr = std::shared_ptr<DataType>;

/// An extension type with any storage type, even none.
class Wrapped : public ExtensionType {
 public:
  explicit Wrapped(TypePtr storage) : ExtensionType(std::move(storage)) {}
  std::string extension_name() const override { return "wrapped"; }
  bool ExtensionEquals(const ExtensionType&) const override { return false; }
  std::shared_ptr<Array> MakeArray(std::shared_ptr<ArrayData>) const override { return nullptr; }
  Result<TypePtr> Deserialize(TypePtr storage, const std::string&) const override {
    return storage;
  }
  std::string Serialize() const override { return ""; }
};

const TypePtr kNone;

struct Row {
  std::string what;
  TypePtr type;
  std::string message;  ///< of the refusal when casts are requested
};

std::string lacks(const std::string& path, const std::string& name) {
  return path + "found type " + name +
         " with a null pointer instead of an inner type, expected a complete type.";
}

std::vector<Row> rows() {
  return {
      {"list", list(kNone), lacks("", "list")},
      {"list without a field", list(std::shared_ptr<Field>()), lacks("", "list")},
      {"large list", large_list(kNone), lacks("", "large_list")},
      {"list view", list_view(kNone), lacks("", "list_view")},
      {"large list view", large_list_view(kNone), lacks("", "large_list_view")},
      {"list of fixed size", fixed_size_list(kNone, 2), lacks("", "fixed_size_list")},
      {"struct", struct_({field("a", int8()), field("b", kNone)}), lacks("", "struct")},
      {"keys", map(kNone, int8()), lacks("", "map")},
      {"items", map(int8(), kNone), lacks("", "map")},
      {"map without entries", std::make_shared<MapType>(field("entries", kNone)), lacks("", "map")},
      {"map of no struct", std::make_shared<MapType>(field("entries", int8())), lacks("", "map")},
      {"map of one field", std::make_shared<MapType>(field("e", struct_({field("key", int8())}))),
       lacks("", "map")},
      {"map of a union",
       std::make_shared<MapType>(
           field("e", dense_union({field("key", int8()), field("value", int8())}))),
       lacks("", "map")},
      {"dictionary", dictionary(int8(), kNone), lacks("", "dictionary")},
      {"runs", run_end_encoded(int32(), kNone), lacks("", "run_end_encoded")},
      {"extension", std::make_shared<Wrapped>(kNone), lacks("", "extension")},
      {"list in a struct", struct_({field("a", list(kNone))}), lacks(".a: ", "list")},
      {"dictionary in a list", list(dictionary(int8(), kNone)), lacks("[]: ", "dictionary")},
      {"list in a dictionary", dictionary(int8(), list(kNone)), lacks("<dictionary>: ", "list")},
      {"list in an item", map(int8(), list(kNone)), lacks("{item}: ", "list")},
      {"list in an extension", std::make_shared<Wrapped>(list(kNone)),
       lacks("<storage>: ", "list")},
  };
}

TEST(IntakeOfIncompleteTypes, RefusesColumns) {
  for (const Row& row : rows()) {
    const auto column = std::make_shared<ChunkedArray>(ArrayVector{}, row.type);
    EXPECT_EQ(take_in(column, {.cast = true}).status(), Status::Invalid(row.message)) << row.what;
    EXPECT_FALSE(take_in(column).ok()) << row.what;
  }
}

TEST(IntakeOfIncompleteTypes, RefusesThemAsInvalidWithoutCastsToo) {
  for (const TypePtr& type : {list(kNone), struct_({field("a", kNone)}), map(kNone, kNone),
                              dictionary(int8(), kNone), fixed_size_list(kNone, 2)}) {
    const auto column = std::make_shared<ChunkedArray>(ArrayVector{}, type);
    EXPECT_EQ(take_in(column).status().code(), StatusCode::Invalid) << type->name();
  }
}

TEST(IntakeOfIncompleteTypes, NamesTheTypeAroundThatIsRefusedFirst) {
  const auto column =
      std::make_shared<ChunkedArray>(ArrayVector{}, fixed_size_list(list(kNone), 2));
  EXPECT_EQ(take_in(column).status(),
            Status::TypeError("found type fixed_size_list, expected one that has a host form; "
                              "casts were not asked for."));
}

TEST(IntakeOfIncompleteTypes, RefusesTables) {
  const auto column = std::make_shared<ChunkedArray>(ArrayVector{}, list(kNone));
  const auto table = Table::Make(schema({field("c", list(kNone))}), {column}, 0);
  EXPECT_EQ(take_in(table).status().message(), lacks("Column 'c' (index 0): ", "list"));
}

TEST(IntakeOfIncompleteTypes, RefusesArraysOfThemBelowOthers) {
  const auto elements = ArrowArray(int8(), "[1]")->data();
  for (const Row& row : rows()) {
    const auto inner = ArrayData::Make(row.type, 0, {nullptr}, {elements});
    const auto outer =
        ArrayData::Make(struct_({field("a", list(int8()))}), 0, {nullptr}, {inner}, 0);
    EXPECT_EQ(take_in(MakeArray(outer), {.cast = true}).status().code(), StatusCode::Invalid)
        << row.what;
  }
}

TEST(IntakeOfIncompleteTypes, RefusesChunksOfThem) {
  const auto elements = ArrowArray(int8(), "[1]")->data();
  const auto lists = ArrayData::Make(struct_({field("a", list(kNone))}), 0, {nullptr}, {elements});
  const auto column = std::make_shared<ChunkedArray>(ArrayVector{MakeArray(lists)},
                                                     struct_({field("a", list(int8()))}));
  EXPECT_EQ(take_in(column).status().code(), StatusCode::Invalid);
}

}  // namespace
}  // namespace numera::testing
