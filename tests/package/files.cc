// A file is read and written anew in another format, batch by batch.

#include <arrow/status.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "numera/files/read.h"
#include "numera/files/write.h"

static arrow::Result<std::int64_t> copy(const char* from, const char* to) {
  ARROW_ASSIGN_OR_RAISE(const auto source, numera::files::open_source(from));
  ARROW_ASSIGN_OR_RAISE(const auto sink, numera::files::open_sink(to, {.inputs = {from}}));
  std::int64_t rows = 0;
  while (true) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, source->Next());
    if (batch == nullptr) break;
    rows += batch->num_rows();
    ARROW_RETURN_NOT_OK(sink->write(batch));
  }
  ARROW_RETURN_NOT_OK(sink->finish());
  return rows;
}

int main(int argc, char** argv) {
  if (argc != 3) return EXIT_FAILURE;
  const auto rows = copy(argv[1], argv[2]);
  if (!rows.ok()) {
    std::cerr << rows.status().ToString() << "\n";
    return EXIT_FAILURE;
  }
  std::cout << *rows << " rows\n";
}
