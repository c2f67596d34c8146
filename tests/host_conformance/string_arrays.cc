#include "numera/host/string_array.h"

#include <optional>
#include <random>
#include <stdexcept>
#include <utility>

#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct StringArrays : Claim {};

TEST_F(StringArrays, HoldsEmptyTextsAtFirst) {
  const auto strings = hxMakeStringArray(Dims{2, 2});
  EXPECT_EQ(strings->size(), 4u);
  EXPECT_EQ(Dims(strings->dimensions().begin(), strings->dimensions().end()), Dims({2, 2}));
  EXPECT_EQ(texts_of(*strings), Texts({u"", u"", u"", u""}));
}

TEST_F(StringArrays, MayHaveNoElements) {
  const auto strings = hxMakeStringArray(Dims{0, 1});
  EXPECT_EQ(strings->size(), 0u);
  EXPECT_EQ(texts_of(*strings), Texts());
}

TEST_F(StringArrays, KeepsTextsSetInOrder) {
  const auto strings = hxMakeStringArray(Dims{3, 1});
  strings->set(0, u"a");
  strings->set(1, u"");
  strings->set(2, u"ccc");
  EXPECT_EQ(texts_of(*strings), Texts({u"a", u"", u"ccc"}));
}

TEST_F(StringArrays, LeavesTextsEmptyThatAreSkipped) {
  const auto strings = hxMakeStringArray(Dims{4, 1});
  strings->set(1, u"one");
  strings->set(3, u"three");
  EXPECT_EQ(texts_of(*strings), Texts({u"", u"one", u"", u"three"}));
}

TEST_F(StringArrays, TakesTextsInAnyOrderAndAgain) {
  const auto strings = hxMakeStringArray(Dims{3, 1});
  strings->set(2, u"two");
  strings->set(0, u"zero");
  strings->set(1, u"one");
  strings->set(2, u"a longer two");
  strings->set(0, u"0");
  EXPECT_EQ(texts_of(*strings), Texts({u"0", u"one", u"a longer two"}));
}

TEST_F(StringArrays, TakesATextOfItsOwn) {
  const auto strings = hxMakeStringArray(Dims{3, 1});
  strings->set(0, u"some text");
  strings->set(1, *strings->element(0));
  strings->set(2, strings->element(1)->substr(5));
  strings->set(0, strings->element(0)->substr(5));
  strings->set(2, *strings->element(1));
  EXPECT_EQ(texts_of(*strings), Texts({u"text", u"some text", u"some text"}));
}

TEST_F(StringArrays, MarksMissingElementsUntilTheyAreSet) {
  const auto strings = hxMakeStringArray(Dims{130, 1});
  strings->set(1, u"one");
  strings->set_missing(0);
  strings->set_missing(1);
  strings->set_missing(129);
  EXPECT_EQ(strings->element(0), std::nullopt);
  EXPECT_EQ(strings->element(1), std::nullopt);
  EXPECT_EQ(strings->element(2), u"");
  EXPECT_EQ(strings->element(129), std::nullopt);
  strings->set(1, u"again");
  strings->set(129, u"");
  EXPECT_EQ(strings->element(1), u"again");
  EXPECT_EQ(strings->element(129), u"");
}

TEST_F(StringArrays, ChecksItsIndex) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  EXPECT_THROW(strings->element(2), std::out_of_range);
  EXPECT_THROW(strings->set(2, u"a"), std::out_of_range);
  EXPECT_THROW(strings->set_missing(2), std::out_of_range);
}

TEST_F(StringArrays, IsAnObjectOfTheClassStringWithoutFields) {
  auto strings = hxMakeStringArray(Dims{2, 1});
  const hxStringArray* const address = strings.get();
  strings->set(0, u"text");
  const hxArrayPtr array = hxCreateStringArrayFrom(std::move(strings));
  EXPECT_TRUE(hxIsStringArray(array.get()));
  EXPECT_EQ(hxGetClassID(array.get()), hxClassID::Object);
  EXPECT_STREQ(hxGetClassName(array.get()), "string");
  EXPECT_EQ(hxGetNumberOfFields(array.get()), 0);
  EXPECT_EQ(dims_of(array), Dims({2, 1}));
  EXPECT_EQ(hxGetNumberOfElements(array.get()), 2u);
  EXPECT_EQ(hxGetData(array.get()), nullptr);
  EXPECT_FALSE(hxIsNumeric(array.get()));
  EXPECT_EQ(&hxGetStringArray(array.get()), address);
  EXPECT_EQ(texts_of(hxGetStringArray(array.get())), Texts({u"text", u""}));
}

TEST_F(StringArrays, IsReadFromStringArraysOnly) {
  for (const hxArrayPtr& other : {zeros({1, 1}), hxArrayPtr()}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxGetStringArray(other.get()); }),
              "Array is not string array.");
  }
  EXPECT_THROW(hxCreateStringArrayFrom(nullptr), std::invalid_argument);
}

TEST_F(StringArrays, AgreesWithAPlainListThroughRandomChanges) {
  std::mt19937 random(1);
  for (const size_t size : {size_t{1}, size_t{7}, size_t{200}}) {
    SCOPED_TRACE(size);
    const auto strings = hxMakeStringArray(Dims{size, 1});
    Texts model(size, std::u16string());
    for (int step = 0; step < 5000; ++step) {
      const size_t i = random() % size;
      if (random() % 8 == 0) {
        strings->set_missing(i);
        model[i] = std::nullopt;
      } else {
        const std::u16string text(random() % 40, static_cast<char16_t>(u'a' + random() % 26));
        strings->set(i, text);
        model[i] = text;
      }
      if (step % 500 == 0) {
        ASSERT_EQ(texts_of(*strings), model);
      }
    }
    ASSERT_EQ(texts_of(*strings), model);
  }
}

}  // namespace
}  // namespace numera::host_conformance
