#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "numera/extras/inspect/inspect.h"
#include "numera/extras/inspect/one_line.h"
#include "numera/extras/inspect/text.h"
#include "numera/extras/inspect/value.h"

namespace numera::extras {
namespace {

using inspect::Content;

// A line still to be written. The lines below it are derived from it.
struct Line {
  enum class Kind : std::uint8_t {
    kValue,    // the label, then the value on one line, or <null> or <empty>
    kElement,  // the label of one element of a struct array
    kLabel,    // the label alone
  };
  Kind kind;
  size_t depth;
  std::string label;
  const hxArray* value = nullptr;
  size_t element = 0;
};

// The lines still to be written form a stack, the next one on top. The lines below a line are
// pushed in print order and then reversed.
class Tree {
 public:
  explicit Tree(const PrintOptions& options) : options_(options) {}

  std::string print(const hxArray* value) {
    pending_.push_back({Line::Kind::kValue, 0, "", value});
    for (size_t lines = 0; !pending_.empty(); ++lines) {
      if (lines > 0) text_ += '\n';
      if (lines >= options_.max_lines) {
        text_ += "...";
        break;
      }
      const Line line = std::move(pending_.back());
      pending_.pop_back();
      write(line);
    }
    return std::move(text_);
  }

 private:
  void write(const Line& line) {
    const size_t indent = 2 * line.depth;
    text_.append(indent, ' ');
    text_ += line.label;
    if (line.kind == Line::Kind::kValue) {
      const size_t used = indent + inspect::columns(line.label);
      const size_t room = options_.max_width > used ? options_.max_width - used : 0;
      text_ += inspect::one_line(line.value, line.depth == 0 ? "<null>" : "<empty>",
                                 options_.max_elements, room);
    }
    const size_t written = pending_.size();
    push_lines_below(line);
    if (pending_.size() > written && line.depth >= options_.max_depth) {
      pending_.resize(written);
      text_ += " ...";
    }
    std::reverse(pending_.begin() + static_cast<std::ptrdiff_t>(written), pending_.end());
  }

  void push_lines_below(const Line& line) {
    if (line.value == nullptr || line.kind == Line::Kind::kLabel) return;
    const Content content = inspect::content_of(line.value);
    if (line.kind == Line::Kind::kElement) {
      push_fields(line);
    } else if (content == Content::kCells) {
      push_elements(line, Line::Kind::kValue);
    } else if (content == Content::kFields) {
      const bool one = hxGetNumberOfElements(line.value) == 1;
      const bool none = hxIsEmpty(line.value);
      if (one || none) push_fields(line);
      if (!one) push_elements(line, Line::Kind::kElement);
    }
  }

  // The fields of one element, or their names if there is no element.
  void push_fields(const Line& line) {
    const bool none = hxIsEmpty(line.value);
    const size_t fields = inspect::field_count(line.value);
    for (size_t i = 0; i < fields; ++i) {
      const char* const name = hxGetFieldName(line.value, static_cast<int>(i));
      const std::string label = inspect::name_text(name) + ":";
      if (none) {
        pending_.push_back({Line::Kind::kLabel, line.depth + 1, label});
      } else {
        pending_.push_back({Line::Kind::kValue, line.depth + 1, label + " ",
                            inspect::slot_value(line.value, line.element * fields + i)});
      }
    }
  }

  // The cells of a cell array, as values, or the elements of a struct array.
  void push_elements(const Line& line, Line::Kind kind) {
    const size_t elements = hxGetNumberOfElements(line.value);
    const size_t listed = std::min(elements, options_.max_elements);
    const std::span<const size_t> dims = hxGetDimensions(line.value);
    for (size_t i = 0; i < listed; ++i) {
      const std::string index = inspect::index_text(dims, i);
      if (kind == Line::Kind::kValue) {
        pending_.push_back(
            {kind, line.depth + 1, "{" + index + "}: ", inspect::slot_value(line.value, i)});
      } else {
        pending_.push_back({kind, line.depth + 1, "(" + index + "):", line.value, i});
      }
    }
    if (listed < elements) {
      const std::string rest = "... " + std::to_string(elements - listed) + " more";
      pending_.push_back({Line::Kind::kLabel, line.depth + 1, rest});
    }
  }

  const PrintOptions& options_;
  std::string text_;
  std::vector<Line> pending_;
};

}  // namespace

std::string print(const hxArray* value, const PrintOptions& options) {
  return Tree(options).print(value);
}

}  // namespace numera::extras
