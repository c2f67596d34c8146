#include "tests/tools/program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <system_error>

#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

void throw_where_failed(int error, const char* what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

int wait_for(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) == -1) {
    if (errno != EINTR) throw_where_failed(errno, "waitpid");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int spawn_and_wait(const std::vector<std::string>& arguments, const std::string& out,
                   const std::string& errors) {
  std::vector<std::string> texts = {NUMERA_PROGRAM};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  throw_where_failed(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kFlags, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), kFlags, 0600);
  pid_t process = 0;
  const int error =
      posix_spawn(&process, texts[0].c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  throw_where_failed(error, "posix_spawn");
  return wait_for(process);
}

}  // namespace

void PrintTo(const Outcome& run, std::ostream* stream) {
  *stream << "exit status " << run.exit_status << "\nstandard output:\n"
          << run.out << "\nstandard error:\n"
          << run.errors;
}

Outcome run_program(const std::vector<std::string>& arguments) {
  const TemporaryFolder folder;
  const std::string out = folder.path("out");
  Outcome run = run_program_into(out, arguments);
  run.out = read_text(out);
  return run;
}

Outcome run_program_into(const std::string& output_file,
                         const std::vector<std::string>& arguments) {
  const TemporaryFolder folder;
  const std::string errors = folder.path("errors");
  const int exit_status = spawn_and_wait(arguments, output_file, errors);
  return {exit_status, "", read_text(errors)};
}

std::string table_rows(const std::string& printed) {
  std::istringstream lines(printed);
  std::string line;
  std::getline(lines, line);  // the heading
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
