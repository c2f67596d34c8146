#pragma once

#include <arrow/result.h>

#include <string>
#include <vector>

/// What a document shows in a place of its own. A place begins with a line <!-- shown: NAME --> and
/// ends with the next line <!-- end -->.
struct Shown {
  std::string place;
  std::string markdown;
};

/// The rest of a program that is called with the path of a document and, at will, --write: with it,
/// puts everything into its place; without it, fails unless it stands there already, and says what
/// differs or has no place. Returns the exit code of the program.
int keep_document(const std::string& path, bool write,
                  const arrow::Result<std::vector<Shown>>& shown);
