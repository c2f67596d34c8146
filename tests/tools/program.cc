#include "tests/tools/program.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace numera::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr uid_t kNobody = 65534;

void throw_where_failed(bool failed, const char* what) {
  if (failed) throw std::system_error(errno, std::generic_category(), what);
}

void open_as(int descriptor, const std::string& path, int flags) {
  const int file = ::open(path.c_str(), flags, 0600);
  if (file < 0 || ::dup2(file, descriptor) < 0) ::_exit(126);
}

/// The program and its arguments.
std::vector<std::string> command(const std::vector<std::string>& arguments) {
  std::vector<std::string> texts = {NUMERA_PROGRAM};
  for (const std::string& argument : arguments) texts.push_back(argument);
  return texts;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

void limit(int resource, const std::optional<std::uint64_t>& most) {
  if (!most) return;
  const rlimit both{*most, *most};
  if (::setrlimit(resource, &both) != 0) ::_exit(126);
}

void open_closed_pipe() {
  int ends[2];
  if (::pipe(ends) != 0 || ::close(ends[0]) != 0) ::_exit(126);
  if (::dup2(ends[1], STDOUT_FILENO) < 0 || ::close(ends[1]) != 0) ::_exit(126);
}

/// Runs between fork and exec.
void apply(const RunOptions& options) {
  limit(RLIMIT_FSIZE, options.file_size);
  limit(RLIMIT_CPU, options.cpu_seconds);
  if (options.unprivileged && ::geteuid() == 0 && ::setuid(kNobody) != 0) ::_exit(126);
  for (const int stream : options.closed) ::close(stream);
  if (options.closed_pipe) open_closed_pipe();
  for (const int signal : options.ignored) std::signal(signal, SIG_IGN);
}

}  // namespace

void PrintTo(const Outcome& run, std::ostream* stream) {
  *stream << "exit status " << run.exit_status << "\nstandard output:\n"
          << run.out << "\nstandard error:\n"
          << run.errors;
}

RunningProgram::RunningProgram(const std::vector<std::string>& arguments, const RunOptions& options)
    : out_(options.out.empty() ? folder_.path("out") : options.out) {
  std::vector<std::string> texts = command(arguments);
  const std::vector<char*> pointers = pointers_to(texts);
  constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
  process_ = ::fork();
  throw_where_failed(process_ < 0, "fork");
  if (process_ > 0) return;
  open_as(STDIN_FILENO, options.in.empty() ? "/dev/null" : options.in, O_RDONLY);
  open_as(STDOUT_FILENO, out_, kWrite);
  open_as(STDERR_FILENO, folder_.path("errors"), kWrite);
  apply(options);
  ::execv(pointers[0], pointers.data());
  ::_exit(127);
}

RunningProgram::~RunningProgram() {
  if (process_ == 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void RunningProgram::send(int signal) const {
  throw_where_failed(::kill(process_, signal) != 0, "kill");
}

Outcome RunningProgram::wait() {
  int status = 0;
  rusage usage = {};
  while (::wait4(process_, &status, 0, &usage) == -1) throw_where_failed(errno != EINTR, "wait4");
  process_ = 0;
  peak_bytes_ = std::int64_t{usage.ru_maxrss} * 1024;
  const bool own_file = out_ == folder_.path("out");
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
          own_file ? read_text(out_) : "", read_text(folder_.path("errors"))};
}

Outcome run_program(const std::vector<std::string>& arguments, const RunOptions& options) {
  return RunningProgram(arguments, options).wait();
}

std::string run_on_terminal(const std::vector<std::string>& arguments, unsigned short width) {
  std::vector<std::string> texts = command(arguments);
  const std::vector<char*> pointers = pointers_to(texts);
  int terminal = -1;
  winsize window = {};
  window.ws_col = width;
  const pid_t process = ::forkpty(&terminal, nullptr, nullptr, &window);
  throw_where_failed(process < 0, "forkpty");
  if (process == 0) {
    ::execv(pointers[0], pointers.data());
    ::_exit(127);
  }
  std::string written;
  char buffer[4096];
  while (true) {  // the end shows as an error, because the other side is gone
    const ssize_t size = ::read(terminal, buffer, sizeof buffer);
    if (size <= 0) break;
    written.append(buffer, static_cast<size_t>(size));
  }
  ::close(terminal);
  ::waitpid(process, nullptr, 0);
  return written;
}

std::string printed_by_shell(const std::string& command) {
  std::FILE* pipe = ::popen(("(" + command + ") 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string printed;
  char buffer[4096];
  for (size_t size = 1; size > 0;) {
    size = std::fread(buffer, 1, sizeof buffer, pipe);
    printed.append(buffer, size);
  }
  ::pclose(pipe);
  return printed;
}

std::string printed(const std::string& command, const std::string& file,
                    const std::vector<std::string>& options) {
  std::vector<std::string> arguments = {command, file};
  arguments.insert(arguments.end(), options.begin(), options.end());
  Outcome run = run_program(arguments);
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_EQ(run.errors, "");
  return std::move(run.out);
}

std::string converted(const std::string& file, const std::vector<std::string>& options) {
  return printed("convert", file, options);
}

void expect_refusal(const std::string& file, const std::string& reason, const RunOptions& options) {
  const Outcome run = run_program({"convert", file}, options);
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_THAT(run.out, IsEmpty());
  EXPECT_THAT(run.errors, StartsWith("numera-arrow: " + file + ": "));
  EXPECT_THAT(run.errors, HasSubstr(reason));
  EXPECT_THAT(run.errors, EndsWith("\n"));
  EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
}

std::string table_rows(const std::string& printed) {
  std::istringstream lines(printed);
  std::string line;
  std::getline(lines, line);  // skips the heading
  std::string rows;
  while (std::getline(lines, line) && !line.empty()) {
    for (size_t at = line.find("  "); at != std::string::npos; at = line.find("  ", at)) {
      const size_t end = line.find_first_not_of(' ', at);
      line.replace(at, end - at, " | ");
      at += 3;
    }
    rows += line + '\n';
  }
  return rows;
}

std::string line_that_starts(const std::string& printed, const std::string& start) {
  std::istringstream lines(printed);
  std::string line;
  while (std::getline(lines, line)) {
    if (line.starts_with(start)) return line;
  }
  return "";
}

}  // namespace numera::testing
