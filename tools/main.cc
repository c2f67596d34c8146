#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <vector>

#include "numera/version.h"
#include "tools/convert.h"

int main(int argc, char** argv) {
  using numera::tools::ConvertOptions;

  CLI::App program("Takes the columns of Parquet and Arrow files to host arrays and back.",
                   "numera-arrow");
  program.set_version_flag("--version", "numera-arrow " + std::string(numera::kVersion));
  program.require_subcommand(1);

  ConvertOptions options;
  CLI::App* convert = program.add_subcommand(
      "convert", "Take every column to the host and back, and say what became of it");
  convert->add_option("FILE", options.file, "A Parquet or Arrow IPC file")->required();
  convert->add_flag("--show", options.show, "Print the first values of each encoded column");

  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& answer) {
    return program.exit(answer);
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = program.remaining();
    if (unknown.empty()) {
      program.exit(error, std::cerr, std::cerr);
    } else {  // otherwise only the lack of a command would be told
      program.exit(CLI::ExtrasError(program.get_name(), unknown), std::cerr, std::cerr);
    }
    return 2;
  }
  return numera::tools::convert(options, std::cout, std::cerr);
}
