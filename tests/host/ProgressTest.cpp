#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "host/Progress.h"
#include "standalone/tables/MemoryTable.h"
#include "support/TestHost.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestHost;

class Progress : public ::testing::Test {
 protected:
  // Steps through all of the work and returns the position of the first cancel, 0 when there was none.
  int StepThrough(int total) {
    double threshold = 1.0;
    bool cancelled = false;
    for (int done = 1; done <= total; ++done) {
      StepProgress(m_holder, done, threshold, cancelled);
      if (cancelled) return done;
    }
    return 0;
  }

  MemoryTable m_table;
  TestHost m_host{m_table};
  ProgressHolder m_holder;
};

TEST_F(Progress, OpensABarWithItsRangeAndTitleAndShowsItAtOnce) {
  OpenProgress(m_host, m_holder, 250, "Reading data");
  EXPECT_EQ(m_holder.Total, 250);
  EXPECT_NE(m_holder.Bar, nullptr);
  EXPECT_THAT(m_host.Trace, ElementsAre("open 250 Reading data", "show"));
}

TEST_F(Progress, TheTotalIsAtLeastTwo) {
  for (const int total : {-3, 0, 1, 2}) {
    OpenProgress(m_host, m_holder, total, "t");
    EXPECT_EQ(m_holder.Total, 2) << "total " << total;
    EXPECT_EQ(m_host.Bars.back().Total, 2) << "total " << total;
  }
  OpenProgress(m_host, m_holder, 3, "t");
  EXPECT_EQ(m_host.Bars.back().Total, 3);
}

TEST_F(Progress, OpeningClosesTheBarThatIsOpen) {
  OpenProgress(m_host, m_holder, 10, "first");
  OpenProgress(m_host, m_holder, 20, "second");
  EXPECT_THAT(m_host.Trace, ElementsAre("open 10 first", "show", "lock", "close", "unlock", "open 20 second", "show"));
}

TEST_F(Progress, ClosingDestroysTheBarWithTheResultsLocked) {
  OpenProgress(m_host, m_holder, 10, "t");
  m_host.Trace.clear();
  CloseProgress(m_host, m_holder);
  EXPECT_EQ(m_holder.Bar, nullptr);
  EXPECT_THAT(m_host.Trace, ElementsAre("lock", "close", "unlock"));
}

TEST_F(Progress, ClosingWithoutABarTouchesNothing) {
  CloseProgress(m_host, m_holder);
  EXPECT_THAT(m_host.Trace, IsEmpty());
}

TEST_F(Progress, ABarMovesOnceAPercent) {
  OpenProgress(m_host, m_holder, 1000, "t");
  EXPECT_EQ(StepThrough(1000), 0);
  const std::vector<int>& positions = m_host.Bars[0].Positions;
  ASSERT_EQ(positions.size(), 100U);
  for (std::size_t k = 0; k < positions.size(); ++k) EXPECT_EQ(positions[k], static_cast<int>(k + 1) * 10);
}

TEST_F(Progress, ABarIsTouchedAtMostAHundredTimesHoweverManyCasesThereAre) {
  for (const int total : {1, 2, 3, 7, 99, 100, 101, 150, 333, 1001, 12345, 200001}) {
    OpenProgress(m_host, m_holder, total, "t");
    StepThrough(total);
    const std::vector<int>& positions = m_host.Bars.back().Positions;
    EXPECT_LE(positions.size(), 100U) << "total " << total;
    EXPECT_GE(positions.size(), static_cast<std::size_t>(total >= 100 ? 99 : total)) << "total " << total;
  }
}

TEST_F(Progress, TheThresholdRisesByOneAtEachMove) {
  OpenProgress(m_host, m_holder, 4, "t");
  double threshold = 30.0;
  bool cancelled = false;
  StepProgress(m_holder, 1, threshold, cancelled);  // 25 %
  EXPECT_EQ(threshold, 30.0);
  EXPECT_THAT(m_host.Bars[0].Positions, IsEmpty());
  StepProgress(m_holder, 2, threshold, cancelled);  // 50 %
  EXPECT_EQ(threshold, 31.0);
  EXPECT_THAT(m_host.Bars[0].Positions, ElementsAre(2));
  threshold = 75.0;
  StepProgress(m_holder, 3, threshold, cancelled);  // reached exactly
  EXPECT_EQ(threshold, 76.0);
  EXPECT_THAT(m_host.Bars[0].Positions, ElementsAre(2, 3));
  EXPECT_FALSE(cancelled);
}

TEST_F(Progress, CancelIsReadFromTheBarWhenItMoves) {
  OpenProgress(m_host, m_holder, 1000, "t");
  m_host.CancelBarAt = 234;
  EXPECT_EQ(StepThrough(1000), 240);
}

}  // namespace
}  // namespace orv
