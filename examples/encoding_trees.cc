#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "examples/encoding_examples.h"

// encoding_trees FOLDER DOCUMENT          fails unless the document shows what the library does
// encoding_trees FOLDER DOCUMENT --write  writes it into its places in the document
//
// A place begins with a line <!-- shown: NAME --> and ends with the next line <!-- end -->.

namespace {

std::string read_file(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// Replaces what stands in the place; false where there is none.
bool put(std::string& document, const EncodingExample& example) {
  const std::string opening = "<!-- shown: " + example.place + " -->\n";
  const size_t mark = document.find(opening);
  if (mark == document.npos) return false;
  const size_t begin = mark + opening.size();
  const size_t end = document.find("<!-- end -->\n", begin);
  if (end == document.npos) return false;
  document.replace(begin, end - begin, example.markdown);
  return true;
}

arrow::Result<std::vector<EncodingExample>> all_examples(const std::string& data_folder) {
  ARROW_ASSIGN_OR_RAISE(auto examples, encoding_trees(data_folder));
  ARROW_ASSIGN_OR_RAISE(examples.emplace_back(), encoding_types());
  return examples;
}

// Puts all examples into their places, and says which have none or show something else.
bool put_all(std::string& document, const std::vector<EncodingExample>& examples) {
  bool shown = true;
  for (const EncodingExample& example : examples) {
    const std::string before = document;
    const bool has_place = put(document, example);
    if (has_place && document == before) continue;
    std::cerr << (has_place ? "changed: " : "without a place: ") << example.place << '\n';
    shown = false;
  }
  return shown;
}

bool write_file(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  return static_cast<bool>(file.flush());
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool write = arguments.size() == 3 && arguments[2] == "--write";
  if (arguments.size() != 2 && !write) {
    std::cerr << "usage: encoding_trees FOLDER DOCUMENT [--write]\n";
    return 2;
  }
  const auto examples = all_examples(arguments[0]);
  if (!examples.ok()) {
    std::cerr << examples.status().message() << '\n';
    return 1;
  }
  std::string document = read_file(arguments[1]);
  const bool shown = put_all(document, *examples);
  if (write) return write_file(arguments[1], document) ? 0 : 1;
  return shown ? 0 : 1;
}
