#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>
#include <vector>

namespace numera::tools {

/// What the help says about an option or an argument.
struct DescribedOption {
  std::vector<std::string> names;  ///< with dashes, the short one first; of an argument, its name
  std::string value;               ///< the name of its value; empty for a flag
  std::string help;
  std::vector<std::string> values;  ///< that may be given, if these are few
  bool is_argument = false;
  bool takes_file = false;
  bool is_repeated = false;
};

struct DescribedCommand {
  std::string name;
  std::string help;
  std::string example;
  std::vector<DescribedOption> options;
};

/// What the help says about the program.
struct DescribedProgram {
  std::string name;
  std::string help;
  std::string version;
  std::vector<DescribedOption> options;
  std::vector<DescribedCommand> commands;
};

DescribedProgram describe(const CLI::App& program);

/// \name Completion of commands, options and files, as a script for a shell
/// @{
std::string bash_completion(const DescribedProgram& program);
std::string zsh_completion(const DescribedProgram& program);
std::string fish_completion(const DescribedProgram& program);
/// @}

/// The manual, in roff with the macros "man".
std::string man_page(const DescribedProgram& program);

/// Adds the commands that print the texts above.
void add_self_descriptions(CLI::App& program);

/// What such a command prints; none for another command.
std::optional<std::string> self_description(const CLI::App& program, const CLI::App& command);

}  // namespace numera::tools
