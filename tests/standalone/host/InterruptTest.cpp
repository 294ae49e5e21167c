#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include "standalone/host/Interrupt.h"
#include "standalone/host/StandaloneHost.h"
#include "standalone/host/TerminalProgress.h"

namespace orv {
namespace {

// Starts each test as a program in the foreground starts, and leaves it so.
class Interrupt : public ::testing::Test {
 protected:
  Interrupt() {
    std::signal(SIGINT, SIG_DFL);
    CatchInterrupts();
  }
  ~Interrupt() override {
    std::signal(SIGINT, SIG_DFL);
    CatchInterrupts();  // forgets what was caught
    std::signal(SIGINT, SIG_DFL);
  }
};

TEST_F(Interrupt, IsKeptUntilItIsCaughtAnew) {
  EXPECT_FALSE(WasInterrupted());
  std::raise(SIGINT);
  EXPECT_TRUE(WasInterrupted());
  EXPECT_TRUE(WasInterrupted());
  CatchInterrupts();
  EXPECT_FALSE(WasInterrupted());
}

TEST_F(Interrupt, TheSecondOneEndsTheProgram) {
  EXPECT_EXIT(
      {
        CatchInterrupts();
        std::raise(SIGINT);
        std::raise(SIGINT);
      },
      ::testing::KilledBySignal(SIGINT), "");
}

TEST_F(Interrupt, IsNotTakenByAProcessThatIsDeafToIt) {
  std::signal(SIGINT, SIG_IGN);
  CatchInterrupts();
  std::raise(SIGINT);
  EXPECT_FALSE(WasInterrupted());
}

TEST_F(Interrupt, BreaksOffAWaitForInput) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const pthread_t reader = pthread_self();
  // The signal is sent again and again, since the first may come before the wait. The handler is put back each time.
  std::atomic<bool> stop = false;
  std::thread sender([&] {
    sigset_t none;
    sigemptyset(&none);
    for (int k = 0; k < 500 && !stop; ++k) {
      CatchInterrupts();
      pthread_kill(reader, SIGINT);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    close(ends[1]);
  });
  char byte = 0;
  errno = 0;
  const ssize_t size = read(ends[0], &byte, 1);
  const int reason = errno;
  stop = true;
  sender.join();
  close(ends[0]);
  EXPECT_EQ(size, -1);
  EXPECT_EQ(reason, EINTR);
}

TEST_F(Interrupt, IsTheCancelQueryOfTheHostAndOfItsBars) {
  const MemoryTable table;
  StandaloneHost host(table);
  TerminalProgress bar(nullptr, 100.0, "Reading");
  EXPECT_EQ(host.pcancel(), 0);
  EXPECT_FALSE(bar.ProgressBarUpdate(1));
  EXPECT_FALSE(host.NewProgressBar(10, "Reading")->ProgressBarUpdate(1));
  std::raise(SIGINT);
  EXPECT_NE(host.pcancel(), 0);
  EXPECT_TRUE(bar.ProgressBarUpdate(2));
  EXPECT_TRUE(host.NewProgressBar(10, "Reading")->ProgressBarUpdate(1));
  EXPECT_FALSE(host.CancelledExternally());
}

}  // namespace
}  // namespace orv
