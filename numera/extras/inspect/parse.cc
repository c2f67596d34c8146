#include <utility>
#include <vector>

#include "numera/extras/inspect/container_reader.h"
#include "numera/extras/inspect/leaf_reader.h"
#include "numera/extras/inspect/literal.h"
#include "numera/extras/inspect/scanner.h"

namespace numera::extras {
namespace {

using inspect::Container;
using inspect::Content;
using inspect::Head;
using inspect::Scanner;

// Containers within one another are a stack, so that no depth of nesting exhausts that of the
// thread.
class Parser {
 public:
  Parser(std::string_view text, const LiteralMakers& makers) : scanner_(text), makers_(makers) {}

  hxArrayPtr parse() {
    start();
    if (scanner_.take("<null>")) {
      end();
      return nullptr;
    }
    read_value();
    while (!open_.empty()) {
      if (inspect::next_slot(scanner_, open_.back())) {
        read_slot();
      } else {
        hxArrayPtr value = inspect::close_container(scanner_, open_.back(), makers_.object);
        const bool ends_line = open_.back().form != Container::Form::kLines;
        open_.pop_back();
        store(std::move(value), ends_line);
      }
    }
    end();
    return std::move(result_);
  }

 private:
  // A tree may be indented as a whole.
  void start() {
    scanner_.skip_blank_lines();
    indent_ = scanner_.indent();
    scanner_.take_indent();
  }

  void end() {
    scanner_.skip_space();
    if (!scanner_.at_end()) scanner_.fail("the end of the text");
  }

  void read_slot() {
    if (scanner_.take("<empty>")) {
      store(nullptr, true);
    } else {
      read_value();
    }
  }

  // A value that holds no others is stored, one that does is opened.
  void read_value() {
    if (scanner_.peek() == '"') {
      store(inspect::read_char_row(scanner_), true);
      return;
    }
    Head head = inspect::read_head(scanner_);
    const bool container = head.content == Content::kCells || head.content == Content::kFields;
    if (!container) {
      store(inspect::read_leaf(scanner_, head, makers_.chars), true);
      return;
    }
    const size_t indent = open_.empty() ? indent_ : line_indent(open_.back());
    const bool in_brackets = !open_.empty() && open_.back().in_brackets();
    open_.push_back(inspect::open_container(scanner_, std::move(head), indent, in_brackets));
  }

  static size_t line_indent(const Container& parent) {
    return parent.indent + (parent.labelled ? 2 : 0);
  }

  // `ends_line`: on lines, the one with the value is still to be ended.
  void store(hxArrayPtr value, bool ends_line) {
    if (open_.empty()) {
      result_ = std::move(value);
      return;
    }
    if (ends_line && !open_.back().in_brackets()) scanner_.end_line();
    open_.back().values.push_back(std::move(value));
  }

  Scanner scanner_;
  const LiteralMakers& makers_;
  size_t indent_ = 0;
  std::vector<Container> open_;
  hxArrayPtr result_;
};

}  // namespace

hxArrayPtr parse(std::string_view text, const LiteralMakers& makers) {
  return Parser(text, makers).parse();
}

}  // namespace numera::extras
