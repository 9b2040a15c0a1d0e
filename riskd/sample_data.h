// Deterministic sample data: the same seed and row count always give the same
// database, on every platform (own generator, integer arithmetic only).
#pragma once

#include <cstdint>
#include <string>

#include "riskd/sqlite.h"

namespace riskd {

struct SampleOptions {
  uint64_t seed = 20240601;
  int64_t holdings = 300000; // holdings rows; scrips and clients scale with it
};

struct SampleCounts {
  int64_t scrips = 0;
  int64_t clients = 0;
  int64_t holdings = 0;
};

// Sizes derived from the holdings row count (at least 1).
SampleCounts SampleSizes(int64_t holdings);

// Fills an empty store in one transaction. False with *error on failure, in
// which case the store is left as it was.
bool GenerateSample(Db& db, const SampleOptions& options, std::string* error);

// splitmix64: small, fast and the same everywhere.
class SampleRng {
public:
  explicit SampleRng(uint64_t seed) : state_(seed) {}
  uint64_t Next();
  // Uniform in [0, n); n > 0.
  uint64_t Below(uint64_t n) { return Next() % n; }

private:
  uint64_t state_;
};

} // namespace riskd
