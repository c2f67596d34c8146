#pragma once

#include <array>

namespace numera::tools {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kUsage = 2;
/// The program ends with this and the number of the signal that asked it to stop.
inline constexpr int kSignal = 128;

struct ExitStatus {
  const char* status;
  const char* meaning;
};

/// Every exit status, as the manual lists them.
inline constexpr std::array<ExitStatus, 8> kExitStatuses = {{
    {"0", "All is well."},
    {"1",
     "A file cannot be read or written, a column was refused or came back different, or the "
     "result cannot be written. One line on standard error says why."},
    {"2",
     "Wrong usage. One line on standard error says what is wrong, what was probably meant, and "
     "an example."},
    {"129", "Stopped by SIGHUP."},
    {"130", "Stopped by SIGINT, as Ctrl-C sends it."},
    {"141", "Whoever read the results has closed the pipe. There is no message."},
    {"143", "Stopped by SIGTERM."},
    {"128+N", "Ended by another signal, of the number N."},
}};

}  // namespace numera::tools
