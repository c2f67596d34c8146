#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "numera/version.h"
#include "tools/convert.h"
#include "tools/look.h"
#include "tools/text_table.h"

namespace {

using namespace numera::tools;

enum Exit { kSuccess = 0, kFailure = 1, kUsage = 2, kSignal = 128 };

/// The signal that asked for an end.
volatile std::sig_atomic_t end_signal = 0;

struct Arguments {
  ConvertOptions convert;
  std::int64_t rows = 10;
};

struct Commands {
  CLI::App* types;
  CLI::App* show;
  CLI::App* convert;
};

void add_input(CLI::App* command, ConvertOptions& options) {
  command->add_option("FILE", options.file, "A Parquet, Arrow IPC or CSV file")->required();
  command->add_option("--columns", options.source.columns, "Only these, separated by commas")
      ->delimiter(',')
      ->allow_extra_args(false);  // FILE may follow
}

Commands add_commands(CLI::App& program, Arguments& arguments) {
  ConvertOptions& options = arguments.convert;
  Commands commands{};
  commands.types = program.add_subcommand("types", "List the columns and what they become");
  commands.types->add_option("FILE", options.file, "A Parquet, Arrow IPC or CSV file")->required();

  commands.show = program.add_subcommand("show", "Print the first rows as encoded host values");
  add_input(commands.show, options);
  commands.show->add_option("--rows", arguments.rows, "How many rows (10)")
      ->check(CLI::NonNegativeNumber);

  commands.convert = program.add_subcommand(
      "convert", "Take every column to the host and back, and say what became of it");
  add_input(commands.convert, options);
  commands.convert->add_flag("--cast", options.cast, "Cast types that have no host form");
  commands.convert->add_option("--output", options.output,
                               "Write what came back: .parquet, or .arrow, .feather, .ipc");
  commands.convert
      ->add_option("--batch-rows", options.source.batch_rows, "Most rows at a time (65536)")
      ->check(CLI::PositiveNumber);
  commands.convert->add_flag("--show", options.show, "Print the first rows, too, like show");
  commands.convert->add_flag("--strict", options.strict, "A change of type is a failure, too");
  commands.convert
      ->add_option("--threads", options.threads,
                   "Convert columns to the host on so many threads (1); 0: all processors")
      ->check(CLI::NonNegativeNumber);
  return commands;
}

arrow::Status run(const Commands& commands, const Arguments& arguments) {
  const ConvertOptions& options = arguments.convert;
  if (commands.types->parsed()) return print_types(options.file, options.source, std::cout);
  if (commands.show->parsed()) {
    return print_values(options.file, options.source, arguments.rows, std::cout);
  }
  ARROW_RETURN_NOT_OK(convert(options, std::cout));
  if (!options.show) return arrow::Status::OK();
  std::cout << '\n';
  return print_values(options.file, options.source, arguments.rows, std::cout);
}

int report(const std::string& file, const std::string& reason) {
  std::cout.flush();
  std::cerr << one_line("numera-arrow: " + file + ": " + reason) << '\n';
  return kFailure;
}

/// The detail of an error of the system is its reason; that of a table names the column, which the
/// message does, too.
std::string reason_of(const arrow::Status& status) {
  using numera::io::arrow::core::util::TableErrorStatusDetail;
  const auto& detail = status.detail();
  if (detail == nullptr || dynamic_cast<const TableErrorStatusDetail*>(detail.get()) != nullptr) {
    return status.message();
  }
  return status.message() + ": " + detail->ToString();
}

int run_and_report(const Commands& commands, const Arguments& arguments) {
  const std::string& file = arguments.convert.file;
  try {
    arrow::Status status = run(commands, arguments);
    if (status.ok() && !std::cout.flush()) {
      status = arrow::Status::IOError("the result cannot be written");
    }
    if (status.ok()) return kSuccess;
    return report(file, reason_of(status));
  } catch (const numera::host::memory::InterruptException&) {
    report(file, "interrupted");
    return kSignal + end_signal;
  } catch (const std::exception& error) {
    return report(file, error.what());
  }
}

/// An end that is asked for comes between two columns, so that nothing half-written stays. What
/// cannot be written is an error of writing, be it a file that may not grow or a closed pipe.
void heed_signals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal, [](int number) {
      end_signal = number;
      numera::host::memory::RequestInterrupt();
    });
  }
  for (const int signal : {SIGXFSZ, SIGPIPE}) std::signal(signal, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
  // Arrow's other pools keep what was freed: half as much memory again, where memory is bounded.
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread as yet
  ::setenv("ARROW_DEFAULT_MEMORY_POOL", "system", 0);
  CLI::App program("Takes the columns of Parquet, Arrow IPC and CSV files to host arrays and back.",
                   "numera-arrow");
  program.set_version_flag("--version", "numera-arrow " + std::string(numera::kVersion));
  program.require_subcommand(1);
  Arguments arguments;
  const Commands commands = add_commands(program, arguments);
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
    return kUsage;
  }
  if (commands.convert->parsed()) heed_signals();
  return run_and_report(commands, arguments);
}
