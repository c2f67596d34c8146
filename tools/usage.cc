#include "tools/usage.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>

#include "tools/characters.h"

namespace numera::tools {
namespace {

/// How many letters must be added, removed or replaced, or swapped with the next one, to get from
/// one word to the other.
size_t distance(std::string_view one, std::string_view other) {
  std::vector<size_t> before_last;
  std::vector<size_t> last(other.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 0; i < one.size(); ++i) {
    std::vector<size_t> row = {i + 1};
    for (size_t j = 0; j < other.size(); ++j) {
      size_t least = last[j] + (one[i] == other[j] ? 0 : 1);
      least = std::min({least, last[j + 1] + 1, row[j] + 1});
      const bool swapped = i > 0 && j > 0 && one[i] == other[j - 1] && one[i - 1] == other[j];
      if (swapped) least = std::min(least, before_last[j - 1] + 1);
      row.push_back(least);
    }
    before_last = std::move(last);
    last = std::move(row);
  }
  return last.back();
}

std::string without_dashes(std::string_view word) {
  return std::string(word.substr(std::min(word.find_first_not_of('-'), word.size())));
}

std::vector<std::string> names_of_commands(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

std::vector<std::string> names_of_options(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::string no_such_option(const CLI::App& command, const std::string& word) {
  const std::string name = word.substr(0, word.find('='));
  const std::string likely = likely_name(name, names_of_options(command));
  return "there is no option '" + name + "'" +
         (likely.empty() ? "" : "; did you mean '" + likely + "'?");
}

bool is_option(std::string_view word) { return word.size() > 1 && word.front() == '-'; }

/// The first argument that nothing has taken, or "".
std::string unexpected(const CLI::App& program) {
  for (const std::string& word : program.remaining(true)) {
    if (word != "--") return word;
  }
  return "";
}

/// What CLI11 tells in numbers of arguments.
std::string wrong_count(const std::string& message) {
  const bool too_many = message.find("received") != std::string::npos;
  return message.substr(0, message.find(':')) + ": found " +
         (too_many ? "more than one value" : "no value") + ", expected one";
}

std::string reason(const CLI::App& program, const CLI::App* command, const std::string& word,
                   const CLI::ParseError& error) {
  const CLI::App& asked = command == nullptr ? program : *command;
  if (is_option(word)) return no_such_option(asked, word);
  if (!word.empty() && command == nullptr) {
    return no_such_name("command", word, names_of_commands(program));
  }
  if (!word.empty()) return "found '" + word + "', expected nothing more";
  if (command == nullptr)
    return "found no command, expected one of " +
           CLI::detail::join(names_of_commands(program), ", ");
  return error.get_name() == "ArgumentMismatch" ? wrong_count(error.what()) : error.what();
}

}  // namespace

std::string wrong_usage(const CLI::App& program, const CLI::ParseError& error) {
  const auto commands = program.get_subcommands();
  const CLI::App* command = commands.empty() ? nullptr : commands.front();
  const std::string word = unexpected(program);
  std::string text = program.get_name() + (command == nullptr ? "" : " " + command->get_name());
  text += ": " + reason(program, command, word, error);
  if (!text.ends_with('?') && !text.ends_with('.')) text += '.';
  const std::string example = (command == nullptr ? &program : command)->get_footer();
  return shortened(one_line(text)) + " " + example;
}

std::string likely_name(std::string_view word, const std::vector<std::string>& names) {
  const std::string letters = without_dashes(word);
  const size_t longest = 40;  // nobody means one of the names by a longer word
  std::string likely;
  size_t least = letters.size() < 6 ? 2 : 3;
  for (const std::string& name : names) {
    const std::string other = without_dashes(name);
    if (letters.size() < 2 || letters.size() > longest) break;
    const size_t changes = other.starts_with(letters) ? 1 : distance(letters, other);
    if (changes >= least) continue;
    likely = name;
    least = changes;
  }
  return likely;
}

std::string no_such_name(const std::string& kind, const std::string& word,
                         const std::vector<std::string>& names) {
  const std::string likely = likely_name(word, names);
  return "there is no " + kind + " '" + word + "'; " +
         (likely.empty() ? "the " + kind + "s are " + CLI::detail::join(names, ", ")
                         : "did you mean '" + likely + "'?");
}

}  // namespace numera::tools
