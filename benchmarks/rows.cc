#include "benchmarks/rows.h"

namespace numera::benchmarks {

std::vector<Row> all_rows(bool quick) {
  std::vector<Row> rows;
  add_to_host_rows(rows, quick);
  add_table_rows(rows, quick);
  add_file_rows(rows);
  add_to_arrow_rows(rows, quick);
  add_gateway_rows(rows, quick);
  add_encode_rows(rows, quick);
  add_parallel_rows(rows, quick);
  return rows;
}

}  // namespace numera::benchmarks
