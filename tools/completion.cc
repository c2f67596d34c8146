#include <string_view>

#include "tools/self_description.h"

namespace numera::tools {
namespace {

std::string joined(const std::vector<std::string>& texts, const std::string& separator) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : separator) + text;
  return all;
}

/// The text with a backslash before each of some characters.
std::string escaped(std::string_view text, std::string_view characters) {
  std::string all;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) all += '\\';
    all += character;
  }
  return all;
}

/// In single quotation marks, where bash and zsh read nothing but the end.
std::string in_quotes(std::string_view text) {
  std::string all = "'";
  for (const char character : text) {
    if (character == '\'') all += "'\\'";
    all += character;
  }
  return all + "'";
}

std::vector<std::string> names_of_commands(const DescribedProgram& program) {
  std::vector<std::string> names;
  names.reserve(program.commands.size());
  for (const DescribedCommand& command : program.commands) names.push_back(command.name);
  return names;
}

/// The words that may follow: names of options, and the values of arguments.
std::vector<std::string> words_of(const std::vector<DescribedOption>& options) {
  std::vector<std::string> words;
  for (const DescribedOption& option : options) {
    const auto& more = option.is_argument ? option.values : option.names;
    words.insert(words.end(), more.begin(), more.end());
  }
  return words;
}

bool takes_file(const DescribedCommand& command) {
  bool takes = false;
  for (const DescribedOption& option : command.options) {
    takes = takes || (option.is_argument && option.takes_file);
  }
  return takes;
}

std::string bash_value(const DescribedCommand& command, const DescribedOption& option) {
  std::string line = "    ";
  for (const std::string& name : option.names) {
    line += (line.ends_with(' ') ? "'" : " | '") + command.name + " " + name + "'";
  }
  if (option.takes_file) return line + ") compopt -o default && return ;;\n";
  if (option.values.empty()) return line + ") return ;;\n";
  return line + ") words='" + joined(option.values, " ") + "' ;;\n";
}

std::string bash_words(const std::string& command, const std::vector<std::string>& words,
                       bool takes_file) {
  std::string line = "      '" + command + "')";
  if (takes_file) line += " [[ $word == -* ]] || { compopt -o default && return; };";
  return line + " words='" + joined(words, " ") + "' ;;\n";
}

std::string zsh_option(const DescribedOption& option) {
  const std::string action = option.takes_file       ? "_files"
                             : option.values.empty() ? " "
                                                     : "(" + joined(option.values, " ") + ")";
  const std::string value = ":" + option.value + ":" + action;
  if (option.is_argument) return in_quotes((option.is_repeated ? "*" : "1") + value);
  const bool has_value = !option.value.empty();
  std::vector<std::string> names;
  names.reserve(option.names.size());
  for (const std::string& name : option.names) {
    names.push_back(name + (!has_value ? "" : name.starts_with("--") ? "=" : "+"));
  }
  const std::string help =
      in_quotes("[" + escaped(option.help, "[]:\\") + "]" + (has_value ? value : ""));
  const std::string all = names.size() == 1 ? names.front() : "{" + joined(names, ",") + "}";
  if (option.is_repeated) return in_quotes("*") + all + help;
  return (names.size() == 1 ? "" : in_quotes("(" + joined(option.names, " ") + ")")) + all + help;
}

std::string zsh_options(const std::vector<DescribedOption>& options, const std::string& indent) {
  std::string text;
  for (const DescribedOption& option : options) {
    text += " \\\n" + indent + "  " + zsh_option(option);
  }
  return text;
}

std::string fish_quoted(std::string_view text) { return "'" + escaped(text, "'\\") + "'"; }

std::string fish_option(const std::string& start, const DescribedOption& option) {
  std::string line = start;
  if (!option.is_argument) {
    for (const std::string& name : option.names) {
      line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (!option.value.empty()) line += option.takes_file ? " -r" : " -x";
  }
  if (option.takes_file) line += " -F";
  if (!option.values.empty()) line += " -a " + fish_quoted(joined(option.values, " "));
  return line + " -d " + fish_quoted(option.help) + "\n";
}

}  // namespace

std::string bash_completion(const DescribedProgram& program) {
  std::string values;
  std::vector<std::string> first = names_of_commands(program);
  for (const std::string& word : words_of(program.options)) first.push_back(word);
  std::string words = bash_words("", first, false);
  for (const DescribedCommand& command : program.commands) {
    for (const DescribedOption& option : command.options) {
      if (!option.is_argument && !option.value.empty()) values += bash_value(command, option);
    }
    words += bash_words(command.name, words_of(command.options), takes_file(command));
  }
  return "# Completion of " + program.name + " in bash\n" + R"(_numera_arrow() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' words='' i
  if [[ $word == '=' ]]; then
    word=''
  elif [[ $before == '=' ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((i = 1; i < COMP_CWORD && ${#command} == 0; ++i)); do
    [[ ${COMP_WORDS[i]} == -* ]] || command=${COMP_WORDS[i]}
  done
  COMPREPLY=()
  case "$command $before" in
)" + values +
         R"(    *) case $command in
)" + words +
         R"(    esac ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _numera_arrow )" +
         program.name + "\n";
}

std::string zsh_completion(const DescribedProgram& program) {
  std::string names;
  std::string commands;
  for (const DescribedCommand& command : program.commands) {
    names += "    " + in_quotes(command.name + ":" + escaped(command.help, ":\\")) + "\n";
    commands += "        " + command.name + ")\n          _arguments" +
                zsh_options(command.options, "          ") + " ;;\n";
  }
  return "#compdef " + program.name + R"(

_numera-arrow() {
  local state
  local -a commands
  commands=(
)" + names +
         R"(  )
  _arguments -C)" +
         zsh_options(program.options, "  ") + R"( \
    '1:command:->command' \
    '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument)
      case $words[1] in
)" + commands +
         R"(      esac ;;
  esac
}

if [[ $funcstack[1] == _numera-arrow ]]; then
  _numera-arrow "$@"
else
  compdef _numera-arrow )" +
         program.name + "\nfi\n";
}

std::string fish_completion(const DescribedProgram& program) {
  const std::string start = "complete -c " + program.name;
  const std::string at_first = start + " -n __fish_use_subcommand";
  std::string text = "# Completion of " + program.name + " in fish\n" + start + " -f\n";
  for (const DescribedOption& option : program.options) text += fish_option(at_first, option);
  for (const DescribedCommand& command : program.commands) {
    text += at_first + " -a " + command.name + " -d " + fish_quoted(command.help) + "\n";
  }
  for (const DescribedCommand& command : program.commands) {
    const std::string within =
        start + " -n " + fish_quoted("__fish_seen_subcommand_from " + command.name);
    for (const DescribedOption& option : command.options) text += fish_option(within, option);
  }
  return text;
}

}  // namespace numera::tools
