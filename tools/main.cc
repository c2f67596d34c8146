#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "numera/version.h"
#include "tools/characters.h"
#include "tools/convert.h"
#include "tools/look.h"

namespace {

using namespace numera::tools;

enum Exit { kSuccess = 0, kFailure = 1, kUsage = 2, kSignal = 128 };

/// The signal that asked the program to stop.
volatile std::sig_atomic_t end_signal = 0;

struct Arguments {
  ConvertOptions convert;
  ShowOptions show;
};

struct Commands {
  CLI::App* types;
  CLI::App* show;
  CLI::App* convert;
};

void add_input(CLI::App* command, ConvertOptions& options) {
  command->add_option("FILE", options.file, "A Parquet, Arrow IPC or CSV file")->required();
  command
      ->add_option("--columns", options.source.columns,
                   "Read only these columns, in this order, separated by commas")
      ->delimiter(',')
      ->allow_extra_args(false);  // FILE may follow
}

Commands add_commands(CLI::App& program, Arguments& arguments) {
  ConvertOptions& options = arguments.convert;
  Commands commands{};
  commands.types = program.add_subcommand(
      "types", "List the columns, their Arrow types and their types in the host");
  commands.types->add_option("FILE", options.file, "A Parquet, Arrow IPC or CSV file")->required();

  commands.show = program.add_subcommand("show", "Print the first rows as encoded host values");
  add_input(commands.show, options);
  commands.show->add_option("--rows", arguments.show.rows, "Number of rows to print (default: 10)")
      ->check(CLI::NonNegativeNumber);
  commands.show->add_flag("--cast", arguments.show.cast, "Cast types that have no host form");

  commands.convert = program.add_subcommand(
      "convert", "Convert every column to the host and back, and compare it with the input");
  add_input(commands.convert, options);
  commands.convert->add_flag("--cast", options.cast, "Cast types that have no host form");
  commands.convert
      ->add_option("--output", options.output,
                   "Write the returned columns to this file: .parquet, .arrow, .feather or .ipc")
      ->check([](const std::string& path) { return path.empty() ? "the name is empty" : ""; });
  commands.convert
      ->add_option("--batch-rows", options.source.batch_rows,
                   "Maximum number of rows per batch (default: 65536)")
      ->check(CLI::PositiveNumber);
  commands.convert->add_flag("--show", options.show,
                             "Also print the first rows, like the command show");
  commands.convert->add_flag("--strict", options.strict, "Treat a change of type as a failure");
  commands.convert
      ->add_option("--threads", options.threads,
                   "Number of threads that convert columns (default: 1; 0: one per processor)")
      ->check(CLI::NonNegativeNumber);
  return commands;
}

arrow::Status run(const Commands& commands, const Arguments& arguments) {
  const ConvertOptions& options = arguments.convert;
  if (commands.types->parsed()) return print_types(options.file, options.source, std::cout);
  if (commands.show->parsed()) {
    return print_values(options.file, options.source, arguments.show, std::cout);
  }
  return convert(options, std::cout);
}

int report(const std::string& file, const std::string& reason) {
  std::cout.flush();
  std::cerr << one_line("numera-arrow: " + file + ": ") + shortened(one_line(reason)) << '\n';
  return kFailure;
}

/// The message, followed by the detail of a system error, which is its reason. The detail of a
/// table error only names the column, which the message does, too.
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
  } catch (const std::bad_alloc&) {
    return report(file, "there is not enough memory");
  } catch (const std::exception& error) {
    return report(file, error.what());
  }
}

/// Prints what is wrong with the arguments. They may hold any bytes.
int report_usage(const CLI::App& program, const CLI::ParseError& error) {
  std::stringstream text;
  const std::vector<std::string> unknown = program.remaining();
  if (unknown.empty()) {
    program.exit(error, text, text);
  } else {  // else the message only says that a command is missing
    program.exit(CLI::ExtrasError(program.get_name(), unknown), text, text);
  }
  for (std::string line; std::getline(text, line);) {
    std::cerr << shortened(one_line(line)) << '\n';
  }
  return kUsage;
}

/// Opens each standard stream that the program was started without. Otherwise a file opened later
/// would get its descriptor, and output for the stream would go into that file.
void occupy_standard_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    // open() returns the lowest free descriptor. The wrong access mode makes each use of it fail.
    const int flags = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (::open("/dev/null", flags) != stream) std::_Exit(kFailure);
  }
}

/// The program stops between two columns, so that no half-written file stays. Write errors, such as
/// a file that may not grow or a closed pipe, are reported as errors and raise no signal. A signal
/// that was ignored at the start, as under nohup, stays ignored.
void heed_signals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto before = std::signal(signal, [](int number) {
      end_signal = number;
      numera::host::memory::RequestInterrupt();
    });
    if (before == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  for (const int signal : {SIGXFSZ, SIGPIPE}) std::signal(signal, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
  occupy_standard_streams();
  // Arrow's other memory pools keep freed memory. They would add half to a bounded memory use.
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread as yet
  ::setenv("ARROW_DEFAULT_MEMORY_POOL", "system", 0);
  CLI::App program(
      "Converts the columns of Parquet, Arrow IPC and CSV files to host arrays and back.",
      "numera-arrow");
  program.set_version_flag("--version", "numera-arrow " + std::string(numera::kVersion));
  program.require_subcommand(1);
  Arguments arguments;
  const Commands commands = add_commands(program, arguments);
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& answer) {
    const int status = program.exit(answer);
    return std::cout.flush() ? status : kFailure;
  } catch (const CLI::ParseError& error) {
    return report_usage(program, error);
  }
  if (commands.convert->parsed()) heed_signals();
  return run_and_report(commands, arguments);
}
