#pragma once

#include "numera/files/read.h"
#include "tools/convert.h"

namespace CLI {
class App;
}

namespace numera::tools {

/// Adds the options that say how CSV is read.
void add_csv(CLI::App* command, files::ReadOptions& options);

/// Adds the options that say how the output is written.
void add_encoding(CLI::App* convert, ConvertOptions& options);

}  // namespace numera::tools
