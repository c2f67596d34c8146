#pragma once

#include <arrow/result.h>

#include <string>
#include <vector>

/// Generated content of a document. Its place starts with a line <!-- shown: NAME --> and ends with
/// the next line <!-- end -->.
struct Shown {
  std::string place;
  std::string markdown;
};

/// The main part of a program that keeps a document up to date. With `write`, puts everything into
/// its place in the document at `path`. Without it, fails unless it is there already. Reports what
/// differs or has no place. Returns the exit code of the program.
int keep_document(const std::string& path, bool write,
                  const arrow::Result<std::vector<Shown>>& shown);
