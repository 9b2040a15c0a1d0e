// Allocation failures inside the engine, injected by counting allocations on
// this thread. The replacement operators below are plain malloc/free while
// no failure is armed, so the rest of the test program is unaffected.
#include "grid/expression.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {
thread_local long tAllocationsBeforeFailure = -1;
thread_local bool tFired = false;

void* Allocate(std::size_t size) {
  if (tAllocationsBeforeFailure == 0) {
    tAllocationsBeforeFailure = -1;
    tFired = true;
    throw std::bad_alloc();
  }
  if (tAllocationsBeforeFailure > 0)
    --tAllocationsBeforeFailure;
  if (void* p = std::malloc(size ? size : 1))
    return p;
  throw std::bad_alloc();
}

// Fails the allocation number `n` (1-based) made while alive.
class FailAllocation {
public:
  explicit FailAllocation(long n) {
    tAllocationsBeforeFailure = n - 1;
    tFired = false;
  }
  ~FailAllocation() { tAllocationsBeforeFailure = -1; }
  bool Fired() const { return tFired; }
};
} // namespace

// The library's array and nothrow forms forward to these.
void* operator new(std::size_t size) {
  return Allocate(size);
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}

namespace {

// Long enough that both passes allocate more than once.
constexpr std::string_view kText = "(1 + 2) * 3 - 4 / 5 + 6 * (7 - 8) + 9 * 10 - 11 + 12 * 13";

// Fails allocation 1, 2, ... of a whole evaluation until one runs through.
// A failed conversion is code 4; a failed evaluation is code 4 from
// EvaluatePostfix but 0 from the whole-text call. Either keeps the value.
TEST(ExpressionFaults, EveryFailedAllocationIsReportedAndKeepsTheValue) {
  double expected = 0;
  ASSERT_EQ(EvaluateExpression(kText, expected), 0);
  int conversionAllocations = 0;
  for (long n = 1;; ++n) {
    std::string postfix;
    FailAllocation fail(n);
    const int code = ConvertToPostfix(kText, postfix);
    if (!fail.Fired())
      break;
    EXPECT_EQ(code, 4);
    conversionAllocations = static_cast<int>(n);
  }
  ASSERT_GT(conversionAllocations, 0);

  bool evaluationFailed = false;
  for (long n = 1;; ++n) {
    double value = -1;
    int code = 0;
    bool fired = false;
    { // disarmed before the checks, which may allocate
      FailAllocation fail(n);
      code = EvaluateExpression(kText, value);
      fired = fail.Fired();
    }
    if (!fired) {
      EXPECT_EQ(code, 0);
      EXPECT_EQ(value, expected);
      break;
    }
    EXPECT_EQ(code, n <= conversionAllocations ? 4 : 0) << "allocation " << n;
    EXPECT_EQ(value, -1) << "allocation " << n;
    evaluationFailed |= n > conversionAllocations;
  }
  EXPECT_TRUE(evaluationFailed);

  std::string postfix;
  ASSERT_EQ(ConvertToPostfix(kText, postfix), 0);
  double value = -1;
  FailAllocation fail(1);
  EXPECT_EQ(EvaluatePostfix(postfix, value), 4);
  EXPECT_TRUE(fail.Fired());
  EXPECT_EQ(value, -1);
}

} // namespace
