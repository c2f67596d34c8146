#include <algorithm>
#include <string_view>

#include "tools/exit_status.h"
#include "tools/self_description.h"

namespace numera::tools {
namespace {

/// The text as roff prints it. No line of it begins with what roff takes for a request.
std::string roff(std::string_view text) {
  std::string all = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char character : text) {
    if (character == '\\') {
      all += "\\e";
    } else if (character == '-') {
      all += "\\-";
    } else {
      all += character;
    }
  }
  return all;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

/// A paragraph with a label.
std::string item(const std::string& label, std::string_view text) {
  return ".TP\n" + label + "\n" + roff(text) + "\n";
}

std::string items(const std::vector<DescribedOption>& options) {
  std::string text;
  for (const DescribedOption& option : options) {
    std::string label;
    for (const std::string& name : option.names) {
      label += (label.empty() ? "" : ", ") + (option.is_argument ? italic(name) : bold(name));
    }
    if (!option.is_argument && !option.value.empty()) label += " " + italic(option.value);
    text += item(label, option.help + ".");
  }
  return text;
}

std::string synopsis(const DescribedProgram& program, const DescribedCommand& command) {
  std::string line = bold(program.name + " " + command.name) + " [" + italic("OPTION") + "]...";
  for (const DescribedOption& option : command.options) {
    if (option.is_argument) line += " " + italic(option.value);
  }
  return line + "\n";
}

/// The footer of a command without its first word.
std::string_view example_of(const DescribedCommand& command) {
  const std::string_view text = command.example;
  return text.substr(std::min(text.find(' ') + 1, text.size()));
}

}  // namespace

std::string man_page(const DescribedProgram& program) {
  std::string text = ".TH " + roff(program.name) + " 1 \"\" \"" +
                     roff(program.name + " " + program.version) + "\" \"User Commands\"\n";
  std::string purpose = program.help;
  if (purpose.ends_with('.')) purpose.pop_back();
  text += ".SH NAME\n" + roff(program.name) + " \\- " + roff(purpose) + "\n.SH SYNOPSIS\n.nf\n";
  for (const DescribedCommand& command : program.commands) text += synopsis(program, command);
  text +=
      ".fi\n.SH DESCRIPTION\n"
      "The first bytes of a file tell its format, whatever its name.\n"
      "Results go to standard output, and everything else to standard error.\n"
      "On a terminal, one line shows how far the work is.\n"
      ".SH OPTIONS\n";
  text += items(program.options) + ".SH COMMANDS\n";
  for (const DescribedCommand& command : program.commands) {
    text += ".SS " + roff(command.name) + "\n" + roff(command.help) + ".\n";
    text += items(command.options);
  }
  text += ".SH EXIT STATUS\n";
  for (const ExitStatus& exit : kExitStatuses) text += item(bold(exit.status), exit.meaning);
  text += ".SH ENVIRONMENT\n";
  text += item(bold("COLUMNS"), "The width of tables where no terminal tells it.");
  text += item(bold("NO_COLOR"), "If it is set, terminals get no colours.");
  text += ".SH EXAMPLES\n.nf\n";
  for (const DescribedCommand& command : program.commands) {
    text += roff(example_of(command)) + "\n";
  }
  return text + ".fi\n";
}

}  // namespace numera::tools
