#include "tools/self_description.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "numera/version.h"

namespace numera::tools {
namespace {

using Script = std::string (*)(const DescribedProgram&);

constexpr std::pair<const char*, Script> kShells[] = {
    {"bash", bash_completion}, {"zsh", zsh_completion}, {"fish", fish_completion}};

DescribedOption describe(const CLI::Option& option) {
  DescribedOption described;
  described.help = option.get_description();
  described.is_argument = option.get_positional();
  described.is_repeated = option.get_expected_max() > 1;
  if (described.is_argument) {
    described.names.push_back(option.get_name(true));
    described.value = option.get_name(true);
  }
  for (const std::string& name : option.get_snames()) described.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) described.names.push_back("--" + name);
  const std::string type = option.get_type_name();
  if (option.get_type_size_max() > 0 && !described.is_argument) described.value = type;
  // Such a name of a type lists the values: "bash|zsh|fish".
  if (type.find('|') != std::string::npos) described.values = CLI::detail::split(type, '|');
  described.takes_file = described.value.starts_with("FILE") || described.value == "OUT";
  return described;
}

std::vector<DescribedOption> describe(const std::vector<const CLI::Option*>& options) {
  std::vector<DescribedOption> described;
  described.reserve(options.size());
  for (const CLI::Option* option : options) described.push_back(describe(*option));
  return described;
}

}  // namespace

DescribedProgram describe(const CLI::App& program) {
  DescribedProgram described{program.get_name(),
                             program.get_description(),
                             std::string(kVersion),
                             describe(program.get_options()),
                             {}};
  for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; })) {
    described.commands.push_back({command->get_name(), command->get_description(),
                                  command->get_footer(), describe(command->get_options())});
  }
  return described;
}

void add_self_descriptions(CLI::App& program) {
  CLI::App* completion = program.add_subcommand(
      "completion", "Print a script that completes commands and options in a shell");
  completion->footer("Example: source <(numera-arrow completion bash)");
  completion->add_option("SHELL", "The shell that reads the script")
      ->required()
      ->type_name("bash|zsh|fish")
      ->check([](const std::string& name) -> std::string {
        const auto is_known = [&](const auto& shell) { return name == shell.first; };
        if (std::ranges::any_of(kShells, is_known)) return "";
        return "found " + name + ", expected bash, zsh or fish";
      });
  program.add_subcommand("man", "Print the manual in roff")
      ->footer("Example: numera-arrow man | man -l -");
}

std::optional<std::string> self_description(const CLI::App& program, const CLI::App& command) {
  if (command.get_name() == "man") return man_page(describe(program));
  if (command.get_name() != "completion") return std::nullopt;
  const auto shell = command.get_option("SHELL")->as<std::string>();
  const auto* found =
      std::ranges::find_if(kShells, [&](const auto& known) { return shell == known.first; });
  return found->second(describe(program));
}

}  // namespace numera::tools
