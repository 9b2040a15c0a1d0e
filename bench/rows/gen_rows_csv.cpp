// Writes generated holdings rows as CSV for `bench_rows --csv`.
//
//   gen_rows_csv FILE [ROWS] [SEED]     (defaults: 1000000 rows, seed 20240601)
#include "bench/rows/holdings_table.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc < 2 || argc > 4) {
    std::fprintf(stderr, "usage: %s FILE [ROWS] [SEED]\n", argv[0]);
    return 2;
  }
  const size_t rows = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1'000'000;
  const auto seed = argc > 3 ? uint32_t(std::strtoul(argv[3], nullptr, 10)) : 20240601u;
  const auto table = vh::bench::HoldingsTable::Generate(rows, seed);
  if (!table.WriteCsv(argv[1])) {
    std::fprintf(stderr, "%s: cannot write\n", argv[1]);
    return 1;
  }
  return 0;
}
