#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "numera/extras/inspect/literal.h"
#include "numera/host/memory.h"

namespace numera::testing {
namespace {

std::string failure_of(const std::string& text) {
  try {
    extras::parse(text);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "no failure";
}

struct FailureCase {
  const char* text;
  const char* failure;
};

void expect_failures(std::initializer_list<FailureCase> cases) {
  const size_t before = host::memory::LiveArrays();
  for (const FailureCase& one : cases) {
    SCOPED_TRACE(one.text);
    EXPECT_EQ(failure_of(one.text), one.failure);
  }
  EXPECT_EQ(host::memory::LiveArrays(), before) << "arrays that are never destroyed";
}

TEST(ParseFailure, NamesWhatIsNoClass) {
  expect_failures({
      {"", "line 1, column 1: found the end of the text, expected a class or a text in quotes."},
      {"float [1]", "line 1, column 1: found \"float\", expected a class or a text in quotes."},
      {"sparse double 3x3",
       "line 1, column 1: found \"sparse\", expected a class or a text in quotes."},
      {"class 16 1x1", "line 1, column 1: found \"class\", expected a class or a text in quotes."},
      {"<empty>", "line 1, column 1: found \"<empty>\", expected a class or a text in quotes."},
      {"cell {<null>}",
       "line 1, column 7: found \"<null>\", expected a class or a text in quotes."},
      {"complex char \"a\"", "line 1, column 9: found \"char\", expected a numeric class."},
      {"complex logical [true]", "line 1, column 9: found \"logical\", expected a numeric class."},
      {"complex real [1]", "line 1, column 9: found \"real\", expected a numeric class."},
      {"object Point()",
       "line 1, column 8: found \"Point\", expected the name of its class in quotes."},
  });
}

TEST(ParseFailure, NamesTheElementThatIsNone) {
  expect_failures({
      {"int8 [1 1.5]", "line 1, column 9: found \"1.5\", expected a number of class int8."},
      {"int8 [128]", "line 1, column 7: found \"128\", expected a number of class int8."},
      {"uint8 [-1]", "line 1, column 8: found \"-1\", expected a number of class uint8."},
      {"double [+1]", "line 1, column 9: found \"+1\", expected a number of class double."},
      {"double [nan]", "line 1, column 9: found \"nan\", expected a number of class double."},
      {"double [infinity]",
       "line 1, column 9: found \"infinity\", expected a number of class double."},
      {"double [1e400]", "line 1, column 9: found \"1e400\", expected a number of class double."},
      {"single [0x1]", "line 1, column 9: found \"0x1\", expected a number of class single."},
      {"double [-]", "line 1, column 9: found \"-\", expected a number of class double."},
      {"logical [1]", "line 1, column 10: found \"1\", expected a number of class logical."},
      {"complex double [1]",
       "line 1, column 17: found \"1\", expected a number of class complex double."},
      {"complex double [1+-2i]",
       "line 1, column 17: found \"1+-2i\", expected a number of class complex double."},
      {"complex double [1+2]",
       "line 1, column 17: found \"1+2\", expected a number of class complex double."},
      {"double [1 ... 2 more]",
       "line 1, column 11: found \"...\", expected a number of class double."},
      {"string [\"é\" 1]",
       "line 1, column 13: found \"1\", expected a text in quotes or <missing>."},
      {"char [1]", "line 1, column 7: found \"1\", expected a row of chars in quotes."},
      {"char 1", "line 1, column 7: found the end of the text, expected \"x\"."},
  });
}

TEST(ParseFailure, ComparesTheContentWithTheSize) {
  expect_failures({
      {"double 3x1 [1 2]", "line 1, column 16: found 2 elements, expected 3 elements."},
      {"double 0x1 [1]", "line 1, column 14: found 1 element, expected 0 elements."},
      {"double 1000000x1000000 []",
       "line 1, column 25: found 0 elements, expected 1000000000000 elements."},
      {"double 4294967296x4294967296 []",
       "line 1, column 31: found a size beyond 64 bits, expected a number of elements."},
      {"double 99999999999999999999x1 []",
       "line 1, column 8: found \"99999999999999999999\", expected a count within 64 bits."},
      {"double 3 [1]", "line 1, column 9: found \" \", expected \"x\"."},
      {"double [1 2; 3]",
       "line 1, column 15: found a row of 1 element, expected rows of 2 elements."},
      {"double 2x2 [1 2 3; 4]",
       "line 1, column 21: found a row of 3 elements, expected rows of 2 elements."},
      {"double [1;]", "line 1, column 11: found \"]\", expected a number."},
      {"char 1x3 \"ab\"", "line 1, column 14: found 2 elements, expected 3 elements."},
      {"char 2x2 \"ab\"", "line 1, column 14: found one text, expected a list of rows."},
      {"char 0x2 \"ab\"", "line 1, column 14: found 2 elements, expected 0 elements."},
      {"char [\"ab\" \"c\"]", "line 1, column 15: found 1 element, expected 2 elements."},
      {"char 2x1000000000000 [\"a\" \"b\"]",
       "line 1, column 30: found 1 element, expected 1000000000000 elements."},
      {"char [\"a\"; \"b\"]", "line 1, column 15: found \";\", expected a list of rows."},
      {"cell 2x1 {\"a\"}", "line 1, column 15: found 1 element, expected 2 elements."},
      {"struct 2x1 {()}", "line 1, column 16: found 1 element, expected 2 elements."},
  });
}

TEST(ParseFailure, NamesWhatIsNoText) {
  expect_failures({
      {"\"abc",
       "line 1, column 5: found the end of the text, expected a quote that ends the text."},
      {"\"a\nb\"",
       "line 1, column 3: found the end of the line, expected a quote that ends the text."},
      {R"("a\q")",
       R"(line 1, column 3: found "\\q", expected \", \\, \n, \t or \u with four digits.)"},
      {R"("\u12g4")", "line 1, column 6: found \"g4\", expected a hexadecimal digit."},
      {R"("\x41")", R"(line 1, column 2: found "\\x41", expected no byte of its own in a text.)"},
      {"\"\xFF\"", R"(line 1, column 2: found "\xFF", expected text in UTF-8.)"},
      {R"(struct("\uD800"=<empty>))",
       R"(line 1, column 9: found "\\uD800", expected a character.)"},
      {R"(struct("a\u0000"=<empty>))",
       "line 1, column 8: found \"\\\"a\\\\u0000\", expected a name without NUL."},
  });
}

TEST(ParseFailure, NamesWhatDoesNotFollow) {
  expect_failures({
      {"double", "line 1, column 7: found the end of the text, expected \"[\"."},
      {"double [1", "line 1, column 10: found the end of the text, expected a number."},
      {"double([1]", "line 1, column 11: found the end of the text, expected \")\"."},
      {"double [1] 2", "line 1, column 12: found \"2\", expected the end of the text."},
      {"cell", "line 1, column 5: found the end of the text, expected a size, or \"{\"."},
      {"cell {\"a\" \"b\"}", "line 1, column 11: found \"\\\"b\", expected \",\", \";\" or \"}\"."},
      {"cell {cell 2x1}", "line 1, column 15: found \"}\", expected \"{\"."},
      {"struct(A)", "line 1, column 9: found \")\", expected \"=\"."},
      {"struct(1=<empty>)", "line 1, column 8: found \"1\", expected a name."},
      {"struct(A=<empty> B=<empty>)", "line 1, column 18: found \"B\", expected \",\" or \")\"."},
      {"struct 0x1(A=<empty>)", "line 1, column 13: found \"=<empty>\", expected \",\" or \")\"."},
      {"struct {(A=<empty>), (B=<empty>)}", "line 1, column 23: found field B, expected field A."},
      {"struct {(A=<empty>), ()}", "line 1, column 24: found \"}\", expected field A."},
      {"struct {(), (A=<empty>)}",
       "line 1, column 14: found field A, expected no more fields than the first element has."},
  });
}

TEST(ParseFailure, NamesTheLineOfATree) {
  expect_failures({
      {"cell 2x1\n  {0}: \"a\"",
       "line 2, column 11: found the end of the text, expected \"{1}:\"."},
      {"cell 2x1\n  {1}: \"a\"", "line 2, column 3: found \"{1\", expected \"{0}:\"."},
      {"cell 1000000x1000000",
       "line 1, column 21: found the end of the text, expected \"{0,0}:\"."},
      {"struct 2x1\n  A: \"a\"", "line 2, column 3: found \"A:\", expected \"(0):\"."},
      {"struct 1x1\n  A \"a\"", "line 2, column 4: found \" \", expected \":\"."},
      {"struct 1x1\n  A: \"a\" b", "line 2, column 10: found \"b\", expected the end of the line."},
      {"struct 1x1\n  A: \"a\"\n   B: \"b\"",
       "line 3, column 4: found \"B:\", expected an indent of 2 blanks or fewer."},
      {"struct 1x1\n  A: cell 1x1 ...",
       "line 2, column 15: found \"...\", expected the end of the line."},
      {"struct 1x1\n  A: \"a\"\n...",
       "line 3, column 1: found \"...\", expected the end of the text."},
      {"struct 2x1\n  (0):\n    A: <empty>\n  (1):\n",
       "line 5, column 1: found the end of the text, expected field A."},
  });
}

}  // namespace
}  // namespace numera::testing
