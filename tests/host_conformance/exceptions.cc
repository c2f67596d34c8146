#include "numera/host/message_id_exception.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Broken {
  static constexpr const char* catalog = "some:catalog";
  static constexpr const char* key = "Broken";
};

TEST(TaggedException, JoinsCatalogAndKeyToItsIdentifier) {
  const hxTaggedException<Broken> error;
  EXPECT_EQ(error.identifier(), "some:catalog:Broken");
  EXPECT_STREQ(error.what(), "some:catalog:Broken");
  EXPECT_EQ(error.message(), u"some:catalog:Broken");
  EXPECT_TRUE(error.arguments().empty());
}

TEST(TaggedException, CarriesItsArguments) {
  const hxTaggedException<Broken> error({std::uint64_t{3}, std::string("text")});
  const std::vector<hxMessageArgument> arguments(error.arguments().begin(),
                                                 error.arguments().end());
  EXPECT_EQ(arguments, (std::vector<hxMessageArgument>{std::uint64_t{3}, std::string("text")}));
  EXPECT_EQ(error.message(), u"some:catalog:Broken (3, text)");
  EXPECT_STREQ(error.what(), "some:catalog:Broken");
}

TEST(TaggedException, IsCaughtAsEitherBase) {
  const auto raise = [] { throw hxTaggedException<Broken>(); };
  EXPECT_THROW(raise(), std::exception);
  EXPECT_THROW(raise(), MessageIdException);
}

TEST(TaggedException, TakesAStandardBaseWithAMessage) {
  const auto raise = [] { throw hxTaggedException<Broken, std::runtime_error>(); };
  EXPECT_THROW(raise(), std::runtime_error);
  EXPECT_THROW(raise(), MessageIdException);
}

template <class Tag>
void expect_argument_error(void (*raise)(), const char* identifier) {
  SCOPED_TRACE(identifier);
  try {
    raise();
    ADD_FAILURE() << "returned";
  } catch (const hxTaggedException<Tag>& error) {
    EXPECT_EQ(error.identifier(), identifier);
    EXPECT_TRUE(error.arguments().empty());
  }
}

TEST(ArgumentCountErrors, AreExceptionsOfTheirOwn) {
  expect_argument_error<hxTooManyOutputs>(hxErrorMaxLhs, "NUMERA:host:TooManyOutputs");
  expect_argument_error<hxTooFewInputs>(hxErrorMinRhs, "NUMERA:host:TooFewInputs");
  expect_argument_error<hxTooManyInputs>(hxErrorMaxRhs, "NUMERA:host:TooManyInputs");
}

}  // namespace
