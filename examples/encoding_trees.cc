#include <iostream>
#include <string>
#include <vector>

#include "examples/document.h"
#include "examples/encoding_examples.h"

// encoding_trees FOLDER DOCUMENT          fails unless the document shows what the library writes
// encoding_trees FOLDER DOCUMENT --write  writes it into its places in the document

namespace {

arrow::Result<std::vector<Shown>> all_examples(const std::string& data_folder) {
  ARROW_ASSIGN_OR_RAISE(auto examples, encoding_trees(data_folder));
  ARROW_ASSIGN_OR_RAISE(examples.emplace_back(), encoding_types());
  return examples;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool write = arguments.size() == 3 && arguments[2] == "--write";
  if (arguments.size() != 2 && !write) {
    std::cerr << "usage: encoding_trees FOLDER DOCUMENT [--write]\n";
    return 2;
  }
  return keep_document(arguments[1], write, all_examples(arguments[0]));
}
