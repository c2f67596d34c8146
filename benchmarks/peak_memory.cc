// The peak of host memory during one conversion, and the memory that its result holds at the end.
//
// Each row runs in its own process, so that no row reuses memory kept from another.

#include <iostream>
#include <string>
#include <vector>

#include "benchmarks/rows.h"
#include "tests/support/allocation_meter.h"

namespace numera::benchmarks {
namespace {

int run(const std::string& name) {
  for (const Row& row : all_rows(false)) {
    if (row.name != name) continue;
    const ReadyRow ready = row.prepare();
    testing::StartMeter();
    const auto result = ready.make();
    const testing::HeapUse use = testing::StopMeter();
    std::cout << "{\"name\": \"" << name << "\", \"peak_bytes\": " << use.peak_bytes
              << ", \"result_bytes\": " << use.held_bytes << "}\n";
    return 0;
  }
  std::cerr << "there is no row " << name << "\n";
  return 1;
}

}  // namespace
}  // namespace numera::benchmarks

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: numera_peak_memory ROW\n";
    return 2;
  }
  return numera::benchmarks::run(argv[1]);
}
