#include <arrow/filesystem/filesystem.h>
#include <arrow/util/io_util.h>
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "tools/arguments.h"
#include "tools/characters.h"
#include "tools/exit_status.h"
#include "tools/look.h"

namespace {

using namespace numera::tools;

/// The signal that asked the program to stop.
volatile std::sig_atomic_t end_signal = 0;

arrow::Status run(const Arguments& arguments) {
  const ConvertOptions& options = arguments.convert;
  switch (arguments.command) {
    case Command::kTypes:
      return print_types(options.paths, options.source, arguments.types, std::cout);
    case Command::kSummary:
      return print_summary(options.paths, options.source, arguments.summary, std::cout);
    case Command::kTree:
      return print_tree(options.paths, options.source, arguments.tree, std::cout);
    case Command::kConvert:
      return convert(options, options.output == "-" ? std::cerr : std::cout);
    default:
      return print_rows(options.paths, options.source, arguments.rows, std::cout);
  }
}

/// What a message begins with. Of several files, the reason names the one that is meant.
std::string subject_of(const std::vector<std::string>& paths) {
  if (paths.size() != 1) return "numera-arrow: ";
  return "numera-arrow: " +
         (paths[0] == "-" ? "standard input" : numera::files::path_without_user(paths[0])) + ": ";
}

int report(const std::string& subject, const std::string& reason) {
  std::cout.flush();
  std::cerr << one_line(subject) + shortened(one_line(reason)) << '\n';
  return kFailure;
}

/// The message, followed by the detail of a system error, which is its reason, unless the message
/// ends with it. The detail of a table error only names the column, which the message does, too.
std::string reason_of(const arrow::Status& status) {
  using numera::io::arrow::core::util::TableErrorStatusDetail;
  const auto& detail = status.detail();
  if (detail == nullptr || dynamic_cast<const TableErrorStatusDetail*>(detail.get()) != nullptr) {
    return status.message();
  }
  const int number = arrow::internal::ErrnoFromStatus(status);
  if (status.message().ends_with(std::generic_category().message(number))) return status.message();
  return status.message() + ": " + detail->ToString();
}

/// Whether columns could not be written to standard output.
bool is_about_standard_output(const arrow::Status& status) {
  return status.IsIOError() && status.message().starts_with("cannot write standard output: ");
}

/// Ends the program as a closed pipe ends other programs, without a message, if the reader of
/// standard output is gone.
void end_if_nobody_reads() {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  if (::poll(&output, 1, 0) < 1 || (output.revents & POLLERR) == 0) return;
  std::signal(SIGPIPE, SIG_DFL);
  std::raise(SIGPIPE);
}

int run_and_report(const Arguments& arguments) {
  const std::string subject = subject_of(arguments.convert.paths);
  try {
    arrow::Status status = run(arguments);
    if (status.ok() && !std::cout.flush()) {
      status = arrow::Status::IOError("the result cannot be written");
    }
    if (status.ok()) return kSuccess;
    if (status.IsCancelled()) throw numera::host::memory::InterruptException();
    if (!std::cout || is_about_standard_output(status)) end_if_nobody_reads();
    return report(subject, reason_of(status));
  } catch (const numera::host::memory::InterruptException&) {
    report(subject, "interrupted");
    return kSignal + end_signal;
  } catch (const std::bad_alloc&) {
    return report(subject, "there is not enough memory");
  } catch (const std::exception& error) {
    return report(subject, error.what());
  }
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
/// a file that may not grow or a closed pipe, raise no signal before that file is removed. A signal
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
#ifdef __GLIBC__
  // Each thread would keep freed memory of its own, and freed buffers would stay for smaller ones.
  // NOLINTBEGIN(concurrency-mt-unsafe)
  ::mallopt(M_ARENA_MAX, 1);
  ::mallopt(M_MMAP_THRESHOLD, 4 * 1024 * 1024);
  // NOLINTEND(concurrency-mt-unsafe)
#endif
  const auto read = read_arguments(argc, argv);
  if (const int* status = std::get_if<int>(&read)) return *status;
  Arguments arguments = std::get<Arguments>(read);
  if (arguments.command == Command::kConvert) heed_signals();
  arguments.convert.source.while_waiting = [] {
    return end_signal == 0 ? arrow::Status::OK() : arrow::Status::Cancelled("interrupted");
  };
  const int status = run_and_report(arguments);
  arrow::fs::EnsureFinalized();
  return status;
}
