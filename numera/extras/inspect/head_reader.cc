#include "numera/extras/inspect/head_reader.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

namespace numera::extras::inspect {
namespace {

struct ClassName {
  std::string_view name;
  hxClassID class_id;
  Content content;
};

constexpr ClassName kClasses[] = {
    {"double", hxClassID::Double, Content::kNumbers},
    {"single", hxClassID::Single, Content::kNumbers},
    {"int8", hxClassID::Int8, Content::kNumbers},
    {"uint8", hxClassID::UInt8, Content::kNumbers},
    {"int16", hxClassID::Int16, Content::kNumbers},
    {"uint16", hxClassID::UInt16, Content::kNumbers},
    {"int32", hxClassID::Int32, Content::kNumbers},
    {"uint32", hxClassID::UInt32, Content::kNumbers},
    {"int64", hxClassID::Int64, Content::kNumbers},
    {"uint64", hxClassID::UInt64, Content::kNumbers},
    {"logical", hxClassID::Logical, Content::kNumbers},
    {"char", hxClassID::Char, Content::kChars},
    {"string", hxClassID::Object, Content::kStrings},
    {"cell", hxClassID::Cell, Content::kCells},
    {"struct", hxClassID::Struct, Content::kFields},
    {"object", hxClassID::Object, Content::kFields},
};

Dims read_dims(Scanner& scanner) {
  Dims dims{scanner.take_count()};
  do {
    scanner.expect("x");
    dims.push_back(scanner.take_count());
  } while (scanner.peek() == 'x');
  return dims;
}

}  // namespace

Head read_head(Scanner& scanner) {
  Head head;
  size_t begin = scanner.position();
  std::string_view word = scanner.take_word();
  if (word == "complex") {
    head.complex = true;
    scanner.skip_blanks();
    begin = scanner.position();
    word = scanner.take_word();
  }
  const auto row = std::ranges::find(kClasses, word, &ClassName::name);
  if (row == std::end(kClasses)) {
    scanner.fail_at(begin, head.complex ? "a numeric class" : "a class or a text in quotes");
  }
  head.content = row->content;
  head.class_id = row->class_id;
  const bool numeric = row->content == Content::kNumbers && row->class_id != hxClassID::Logical;
  if (head.complex && !numeric) scanner.fail_at(begin, "a numeric class");
  scanner.skip_blanks();
  if (word == "object") {
    if (scanner.peek() != '"') scanner.fail("the name of its class in quotes");
    head.object_class = scanner.take_name();
    scanner.skip_blanks();
  }
  if (scanner.at_digit()) head.dims = read_dims(scanner);
  return head;
}

size_t checked_element_count(const Dims& dims, const Scanner& scanner) {
  if (std::ranges::find(dims, size_t{0}) != dims.end()) return 0;
  size_t count = 1;
  for (const size_t dim : dims) {
    if (dim > std::numeric_limits<size_t>::max() / count) {
      scanner.fail_at(scanner.position(), "a size beyond 64 bits", "a number of elements");
    }
    count *= dim;
  }
  return count;
}

}  // namespace numera::extras::inspect
