#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "examples/document.h"
#include "examples/lifetimes.h"

// lifetimes DOCUMENT PROGRAM...          fails unless the document shows the table of what is
//                                        copied, and the programs as they are
// lifetimes DOCUMENT --write PROGRAM...  writes them into their places in the document

namespace {

arrow::Result<Shown> program(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  if (text.str().empty()) return arrow::Status::IOError("cannot read ", path);
  const std::string name = path.substr(path.rfind('/') + 1);
  return Shown{name, "\n```cpp\n" + text.str() + "```\n\n"};
}

arrow::Result<std::vector<Shown>> everything(const std::vector<std::string>& programs) {
  std::vector<Shown> shown;
  ARROW_ASSIGN_OR_RAISE(shown.emplace_back(), lifetimes_by_type());
  for (const std::string& path : programs) {
    ARROW_ASSIGN_OR_RAISE(shown.emplace_back(), program(path));
  }
  return shown;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.empty()) {
    std::cerr << "usage: lifetimes DOCUMENT [--write] PROGRAM...\n";
    return 2;
  }
  const std::string document = arguments.front();
  arguments.erase(arguments.begin());
  const bool write = std::erase(arguments, "--write") > 0;
  return keep_document(document, write, everything(arguments));
}
