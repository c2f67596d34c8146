#pragma once

#include <string>
#include <vector>

#include "numera/files/write.h"

namespace numera::tools {

/// The formats that the option `--to` names: the ends of the names of files, without the dot.
std::vector<std::string> names_of_formats();

/// The compressions that the option `--compression` names. Not every format has each of them.
std::vector<std::string> names_of_compressions();

/// Selects a format by one of `names_of_formats`, whatever the name of the file says.
void select_format(const std::string& name, files::WriteOptions& options);

/// Whether standard output is a terminal and the format, or its compression, is not text.
bool would_garble_terminal(const files::WriteOptions& options);

}  // namespace numera::tools
