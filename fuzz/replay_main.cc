/// \file
/// Runs a fuzzer on the files and folders of the command line, with any compiler.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzzer.h"

namespace {

using Paths = std::vector<std::filesystem::path>;

Paths files_of(const std::filesystem::path& named) {
  if (!std::filesystem::is_directory(named)) return {named};
  Paths files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(named)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return false;
  }
  const std::vector<char> read{std::istreambuf_iterator<char>(file), {}};
  const std::vector<std::uint8_t> input(read.begin(), read.end());  // of exactly its size
  std::fprintf(stderr, "%s\n", path.c_str());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    size_t replayed = 0;
    for (int i = 1; i < count; ++i) {
      for (const auto& path : files_of(arguments[i])) {
        if (!replay(path)) return 1;
        ++replayed;
      }
    }
    std::printf("replayed %zu inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "an exception came out: %s\n", error.what());
    return 1;
  }
}
