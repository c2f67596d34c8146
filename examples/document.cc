#include "examples/document.h"

#include <fstream>
#include <iostream>
#include <sstream>

namespace {

std::string read_file(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// Replaces the content of the place. Returns false if the document has no such place.
bool put(std::string& document, const Shown& shown) {
  const std::string opening = "<!-- shown: " + shown.place + " -->\n";
  const size_t mark = document.find(opening);
  if (mark == document.npos) return false;
  const size_t begin = mark + opening.size();
  const size_t end = document.find("<!-- end -->\n", begin);
  if (end == document.npos) return false;
  document.replace(begin, end - begin, shown.markdown);
  return true;
}

// Puts everything into its place. Reports what has no place or differed.
bool put_all(std::string& document, const std::vector<Shown>& all) {
  bool same = true;
  for (const Shown& shown : all) {
    const std::string before = document;
    const bool has_place = put(document, shown);
    if (has_place && document == before) continue;
    std::cerr << (has_place ? "changed: " : "without a place: ") << shown.place << '\n';
    same = false;
  }
  return same;
}

bool write_file(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  return static_cast<bool>(file.flush());
}

}  // namespace

int keep_document(const std::string& path, bool write,
                  const arrow::Result<std::vector<Shown>>& shown) {
  if (!shown.ok()) {
    std::cerr << shown.status().message() << '\n';
    return 1;
  }
  std::string document = read_file(path);
  const bool same = put_all(document, *shown);
  if (write) return write_file(path, document) ? 0 : 1;
  return same ? 0 : 1;
}
