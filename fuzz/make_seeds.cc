/// \file
/// usage: numera_fuzz_seeds DATA_FOLDER TARGET_FOLDER
///
/// Writes the seeds of each fuzzer into a folder with its name.

#include <arrow/table.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <map>

#include "fuzz/seeds.h"

namespace numera::fuzz {
namespace {

class SeedFolder {
 public:
  explicit SeedFolder(std::filesystem::path path) : path_(std::move(path)) {
    std::filesystem::remove_all(path_);
  }

  void keep(const std::string& fuzzer, std::span<const std::uint8_t> input) {
    const std::filesystem::path folder = path_ / fuzzer;
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / std::to_string(counts_[fuzzer]++), std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.write(reinterpret_cast<const char*>(input.data()),
               static_cast<std::streamsize>(input.size()));
  }

  void report() const {
    for (const auto& [fuzzer, count] : counts_) std::printf("%s: %zu\n", fuzzer.c_str(), count);
  }

 private:
  std::filesystem::path path_;
  std::map<std::string, size_t> counts_;
};

void make_seeds(const std::filesystem::path& data, const std::filesystem::path& target) {
  SeedFolder folder(target);
  const KeepSeed keep = [&folder](const std::string& fuzzer, auto input) {
    folder.keep(fuzzer, input);
  };
  for (const TablePtr& table : seed_tables(data)) {
    keep_streams(*table, keep);
    keep_host_values(table, keep);
  }
  keep_plain_values(keep);
  folder.report();
}

}  // namespace
}  // namespace numera::fuzz

int main(int count, char** arguments) {
  if (count != 3) {
    std::fprintf(stderr, "usage: numera_fuzz_seeds DATA_FOLDER TARGET_FOLDER\n");
    return 2;
  }
  try {
    numera::fuzz::make_seeds(arguments[1], arguments[2]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "numera_fuzz_seeds: %s\n", error.what());
    return 1;
  }
}
