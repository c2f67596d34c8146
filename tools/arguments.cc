#include "tools/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "numera/version.h"
#include "tools/exit_status.h"
#include "tools/file_options.h"
#include "tools/self_description.h"
#include "tools/usage.h"

namespace numera::tools {
namespace {

std::optional<std::int64_t> to_number(const std::string& text) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/// Adds an option for a number that is at least `least`.
template <typename Number>
void add_number(CLI::App* command, const std::string& names, Number& number, std::int64_t least,
                const std::string& help) {
  command
      ->add_option_function<std::string>(
          names,
          [&number](const std::string& text) { number = static_cast<Number>(*to_number(text)); },
          help)
      ->type_name("NUMBER")
      ->check([least](const std::string& text) -> std::string {
        if (to_number(text).value_or(least - 1) >= least) return "";
        return "found " + text + ", expected a number from " + std::to_string(least) + " to " +
               std::to_string(std::numeric_limits<std::int64_t>::max());
      });
}

CLI::App* add_command(CLI::App& program, Arguments& arguments, const std::string& name,
                      const std::string& help, const std::string& example) {
  CLI::App* command = program.add_subcommand(name, help);
  command->footer("Example: numera-arrow " + name + " rows.parquet" + example);
  command
      ->add_option(
          "FILE", arguments.convert.paths,
          "Files of Parquet, Arrow IPC, CSV, JSON lines or other formats, folders, patterns, "
          "URIs, or - for standard input. Several are read as one table")
      ->required()
      ->type_name("...");
  return command;
}

void add_columns(CLI::App* command) {
  const auto read_later = [](const std::vector<std::string>&) {};  // by columns_of
  const std::pair<const char*, const char*> options[] = {
      {"--columns", "Read only these columns, in this order, separated by commas"},
      {"--column", "Read this column; may be repeated. A name may have commas and blanks"}};
  for (const auto& [name, help] : options) {
    command->add_option_function<std::vector<std::string>>(name, read_later, help)
        ->type_name(name == std::string("--column") ? "NAME" : "NAMES")
        ->allow_extra_args(false);  // FILE may follow
  }
}

/// The columns that both options ask for, in the order of the command line.
std::vector<std::string> columns_of(const CLI::App& command) {
  std::vector<std::string> columns;
  std::map<const CLI::Option*, size_t> read;
  for (const CLI::Option* option : command.parse_order()) {
    const std::string name = option->get_name();
    if (name != "--columns" && name != "--column") continue;
    const std::string& value = option->results().at(read[option]++);
    if (name == "--column") {
      columns.push_back(value);
      continue;
    }
    for (std::string& part : CLI::detail::split(value, ',')) {
      if (!part.empty()) columns.push_back(std::move(part));
    }
  }
  return columns;
}

CLI::Option* add_json(CLI::App* command, bool& json, const std::string& what) {
  return command->add_flag("--json", json, "Print JSON: " + what);
}

void add_types(CLI::App& program, Arguments& arguments) {
  CLI::App* types =
      add_command(program, arguments, "types",
                  "List the columns, their Arrow types and their types in the host", "");
  types->add_flag("--count", arguments.types.count,
                  "Read the whole file to count rows, chunks and nulls");
  add_json(types, arguments.types.json, "an object per column and line");
}

void add_rows(CLI::App& program, Arguments& arguments) {
  const std::pair<const char*, const char*> commands[] = {
      {"head", "Print the first rows"},
      {"tail", "Print the last rows; reads the whole file"},
      {"show", "Print the first rows and how many rows there are"}};
  for (const auto& [name, help] : commands) {
    CLI::App* command = add_command(program, arguments, name, help, " --rows 5");
    add_columns(command);
    add_number(command, "-n,--rows", arguments.rows.rows, 0,
               "Number of rows to print (default: 10)");
    CLI::Option* json =
        add_json(command, arguments.rows.json, "an object per row and line, with every column");
    command
        ->add_flag("--vertical", arguments.rows.vertical,
                   "Print a block of lines per row, with every column")
        ->excludes(json);
  }
}

void add_summary(CLI::App& program, Arguments& arguments) {
  CLI::App* summary =
      add_command(program, arguments, "summary",
                  "Print what the values of each column are like; reads the whole file", "");
  add_columns(summary);
  add_json(summary, arguments.summary.json, "an object per column and line, with every digit");
}

void add_tree(CLI::App& program, Arguments& arguments) {
  CLI::App* tree =
      add_command(program, arguments, "tree",
                  "Print the first rows as the encoded host table they become", " --rows 5");
  add_columns(tree);
  add_number(tree, "-n,--rows", arguments.tree.rows, 0, "Number of rows to print (default: 10)");
  tree->add_flag("--cast", arguments.tree.cast, "Cast types that have no host form");
  add_json(tree, arguments.tree.json, "an object per column and line, with every value");
}

void add_convert(CLI::App& program, Arguments& arguments) {
  ConvertOptions& options = arguments.convert;
  CLI::App* convert =
      add_command(program, arguments, "convert",
                  "Convert every column to the host and back, and compare it with the input",
                  " --output back.parquet");
  add_columns(convert);
  convert->add_flag("--cast", options.cast, "Cast types that have no host form");
  convert
      ->add_option(
          "-o,--output", options.output,
          "Write the returned columns to this file: .parquet, .arrow, .csv, .jsonl and others")
      ->type_name("OUT")
      ->check([](const std::string& path) { return path.empty() ? "the name is empty" : ""; });
  add_encoding(convert, options);
  convert->add_flag("--skip-unsupported", options.skip_unsupported,
                    "Leave out columns whose type has no host form, and say so");
  add_number(convert, "--batch-rows", options.source.batch_rows, 1,
             "Maximum number of rows per batch (default: 65536)");
  CLI::Option* json =
      add_json(convert, options.json, "an object per column and line, then one of both ways");
  convert->add_flag("--show", options.show, "Also print the first rows, like the command tree")
      ->excludes(json);
  convert->add_flag_callback(
      "--no-check", [&options] { options.check = false; },
      "Do not compare what comes back with the input");
  convert->add_flag("--strict", options.strict, "Treat a change of type as a failure");
  add_number(convert, "--threads", options.threads, 0,
             "Number of threads that convert and write columns (default: 1; 0: one per processor)");
}

/// What remains to be set when the command line has been read.
void complete(const CLI::App& command, Arguments& arguments) {
  static const std::map<std::string, Command> kCommands = {
      {"types", Command::kTypes},    {"head", Command::kHead},       {"tail", Command::kTail},
      {"show", Command::kShow},      {"summary", Command::kSummary}, {"tree", Command::kTree},
      {"convert", Command::kConvert}};
  arguments.command = kCommands.at(command.get_name());
  arguments.convert.source.columns = columns_of(command);
  arguments.rows.part = arguments.command == Command::kTail ? Part::kLast : Part::kFirst;
  arguments.rows.count = arguments.command == Command::kShow;
}

}  // namespace

std::variant<Arguments, int> read_arguments(int argc, char** argv) {
  CLI::App program(
      "Shows the columns of Parquet, Arrow IPC, CSV and JSON files, and converts them to host "
      "arrays and back.",
      "numera-arrow");
  program.set_version_flag("--version", "numera-arrow " + std::string(kVersion));
  program.require_subcommand(1);
  program.footer("Example: numera-arrow show rows.parquet");
  Arguments arguments;
  add_types(program, arguments);
  add_rows(program, arguments);
  add_summary(program, arguments);
  add_tree(program, arguments);
  add_convert(program, arguments);
  for (CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; })) {
    add_csv(command, arguments.convert.source);
  }
  add_self_descriptions(program);
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& answer) {
    const int status = program.exit(answer);
    return std::cout.flush() ? status : 1;
  } catch (const CLI::ParseError& error) {
    std::cerr << wrong_usage(program, error) << '\n';
    return kUsage;
  }
  const CLI::App& command = *program.get_subcommands().front();
  if (const auto text = self_description(program, command)) {
    std::cout << *text;
    return std::cout.flush() ? 0 : 1;
  }
  complete(command, arguments);
  return arguments;
}

}  // namespace numera::tools
