#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

#include "host/WorkArray.h"
#include "support/HeapOnlyHost.h"

namespace orv {
namespace {

TEST(WorkArray, StartsAtZeroThoughTheHostsMemoryDoesNot) {
  HeapOnlyHost host;
  const WorkArray<double> values(host, 5);
  ASSERT_FALSE(values.Failed());
  EXPECT_EQ(values.Count(), 5U);
  for (std::size_t k = 0; k < values.Count(); ++k) EXPECT_EQ(values[k], 0.0) << "element " << k;
}

TEST(WorkArray, HoldsWhatIsWrittenAndClearsIt) {
  HeapOnlyHost host;
  WorkArray<std::int16_t> values(host, 3);
  ASSERT_FALSE(values.Failed());
  values[2] = 7;
  EXPECT_EQ(values.Data()[2], 7);
  values.Clear();
  EXPECT_EQ(values[2], 0);
}

TEST(WorkArray, GoesBackToTheHostOnEveryWayOut) {
  HeapOnlyHost host;
  {
    const WorkArray<double> values(host, 5);
    EXPECT_EQ(host.LiveBlocks(), 1);
  }
  EXPECT_EQ(host.LiveBlocks(), 0);
  const auto fail = [&host] {
    const WorkArray<int> values(host, 2);
    throw std::runtime_error("numbers fail");
  };
  EXPECT_THROW(fail(), std::runtime_error);
  EXPECT_EQ(host.LiveBlocks(), 0);
}

TEST(WorkArray, AFailedAllocationLeavesItEmpty) {
  HeapOnlyHost host;
  host.FailAllocation(1);
  const WorkArray<double> values(host, 5);
  EXPECT_TRUE(values.Failed());
  EXPECT_EQ(values.Data(), nullptr);
  EXPECT_EQ(host.LiveBlocks(), 0);
}

// A host that has no block of no bytes.
class StrictHeapHost : public HeapOnlyHost {
 public:
  int AllocMem(void** address, std::size_t size) override {
    return size > 0 ? HeapOnlyHost::AllocMem(address, size) : 1;
  }
};

TEST(WorkArray, NoElementsAreNotTakenForMemoryThatIsOut) {
  StrictHeapHost host;
  const WorkArray<double> values(host, 0);
  EXPECT_FALSE(values.Failed());
  EXPECT_EQ(values.Count(), 0U);
}

TEST(WorkMatrix, IsOneBlockReachedByRow) {
  HeapOnlyHost host;
  WorkMatrix matrix(host, 3);
  ASSERT_FALSE(matrix.Failed());
  for (std::size_t row = 0; row < 3; ++row) {
    EXPECT_EQ(matrix.Rows()[row], matrix.Data() + row * 3) << "row " << row;
    for (std::size_t column = 0; column < 3; ++column) EXPECT_EQ(matrix[row][column], 0.0);
  }
  matrix[2][1] = 4.0;
  EXPECT_EQ(matrix.Data()[7], 4.0);
  matrix.Clear();
  EXPECT_EQ(matrix[2][1], 0.0);
}

TEST(WorkMatrix, AFailureOfEitherPartLeavesNothingBehind) {
  for (const int failing : {1, 2}) {
    HeapOnlyHost host;
    host.FailAllocation(failing);
    {
      const WorkMatrix matrix(host, 4);
      EXPECT_TRUE(matrix.Failed()) << "allocation " << failing;
    }
    EXPECT_EQ(host.LiveBlocks(), 0) << "allocation " << failing;
  }
}

TEST(WorkMatrix, OrderZeroIsNoFailure) {
  StrictHeapHost host;
  const WorkMatrix matrix(host, 0);
  EXPECT_FALSE(matrix.Failed());
}

}  // namespace
}  // namespace orv
