// The most host memory that each conversion holds at a time, over what its result holds at the end.
//
// Each row runs in a process of its own, so that no memory kept from one serves the next.

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
