#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "standalone/host/TerminalProgress.h"

namespace orv {
namespace {

// Longer than work that shows no bar.
void LetItLast() {
  std::this_thread::sleep_for(std::chrono::milliseconds(350));
}

std::string Bar(const std::string& title, int filled, int percent) {
  return "\r" + title + " [" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(30 - filled), ' ') + "] " + std::to_string(percent) + " %";
}

TEST(TerminalProgress, QuickWorkLeavesTheTerminalAlone) {
  std::ostringstream out;
  {
    TerminalProgress bar(&out, 10.0, "Reading");
    bar.ShowNow();
    for (int k = 0; k <= 10; ++k) bar.ProgressBarUpdate(k);
  }
  EXPECT_EQ(out.str(), "");
}

TEST(TerminalProgress, LongWorkShowsABarAndWipesItsLine) {
  std::ostringstream out;
  {
    TerminalProgress bar(&out, 200.0, "Maximizing likelihood");
    LetItLast();
    bar.ProgressBarUpdate(50);
    EXPECT_EQ(out.str(), Bar("Maximizing likelihood", 7, 25));
    bar.ProgressBarUpdate(51);
    EXPECT_EQ(out.str(), Bar("Maximizing likelihood", 7, 25)) << "drawn again for the same percentage";
    bar.ProgressBarUpdate(200);
    EXPECT_EQ(out.str(), Bar("Maximizing likelihood", 7, 25) + Bar("Maximizing likelihood", 30, 100));
    out.str("");
  }
  EXPECT_EQ(out.str(), "\r\x1b[K");
}

TEST(TerminalProgress, StaysWithinItsEnds) {
  std::ostringstream out;
  TerminalProgress bar(&out, 10.0, "Reading");
  LetItLast();
  bar.MoveTo(-5.0);
  EXPECT_EQ(out.str(), Bar("Reading", 0, 0));
  out.str("");
  bar.MoveTo(1e300);
  EXPECT_EQ(out.str(), Bar("Reading", 30, 100));
}

TEST(TerminalProgress, WithoutATotalOrATerminalDrawsNothing) {
  std::ostringstream out;
  {
    TerminalProgress noTotal(&out, 0.0, "Reading");
    TerminalProgress noTerminal(nullptr, 10.0, "Reading");
    LetItLast();
    EXPECT_FALSE(noTotal.ProgressBarUpdate(1));
    EXPECT_FALSE(noTerminal.ProgressBarUpdate(1));
  }
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace orv
