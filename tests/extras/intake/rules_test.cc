#include "numera/extras/intake/rules.h"

#include <arrow/type.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace numera::testing {
namespace {

using extras::intake::Fate;
using extras::intake::Rule;

std::string line(const std::string& type, bool kept, const std::string& cast_to) {
  return "| " + type + " | " + (kept ? "kept" : "refused") + " | " +
         (cast_to.empty() ? "" : cast_to + " ") + "|";
}

/// The table of the documentation, built from the rules.
std::vector<std::string> lines_of_rules() {
  std::vector<std::string> lines;
  for (const Rule& rule : extras::intake::rules()) {
    const std::string type = rule.type;
    if (rule.fate == Fate::kKeptOfText) {
      lines.push_back(line(type + " of text", true, ""));
      lines.push_back(line(type + " of other than text", false, rule.cast_to));
    } else {
      lines.push_back(line(type, rule.fate == Fate::kKept, rule.cast_to));
    }
  }
  return lines;
}

std::vector<std::string> lines_of_documentation() {
  std::ifstream file(NUMERA_SOURCE_DIR "/docs/intake.md");
  EXPECT_TRUE(file.is_open());
  std::vector<std::string> lines;
  bool in_table = false;
  for (std::string text; std::getline(file, text);) {
    if (in_table && text.empty()) break;
    if (in_table && !text.starts_with("|---")) lines.push_back(text);
    in_table = in_table || text.starts_with("| Arrow type |");
  }
  return lines;
}

TEST(IntakeRules, StandInTheDocumentation) {
  EXPECT_EQ(lines_of_documentation(), lines_of_rules());
}

TEST(IntakeRules, TakeInEveryTypeThatTheyDoNotRefuse) {
  for (const Rule& rule : extras::intake::rules()) {
    SCOPED_TRACE(rule.type);
    EXPECT_EQ(rule.take == nullptr, rule.fate == Fate::kRefused);
    EXPECT_EQ(std::string(rule.cast_to).empty(),
              rule.fate == Fate::kKept || rule.fate == Fate::kRefused);
  }
}

}  // namespace
}  // namespace numera::testing
