// Ctrl-C from outside: the run stops, says so, and leaves files as they were.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "cli/PseudoTerminal.h"
#include "cli/RunningProgram.h"
#include "cli/TemporaryFolder.h"

namespace orv::testing {
namespace {

using ::testing::HasSubstr;

constexpr std::chrono::seconds kPatience{120};  // for builds with sanitizers on a busy machine
constexpr int kCancelled = 130;

int OpenNull() {
  return open("/dev/null", O_RDWR | O_CLOEXEC);
}

std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> FilesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename().string());
  return names;
}

// A factor with hundreds of codes takes a second or so to fit even on a fast machine.
void WriteLongTable(const std::filesystem::path& path) {
  constexpr int kCases = 10000;
  constexpr int kCodes = 400;
  std::ofstream file(path);
  file << "time,status,site\n";
  for (int i = 0; i < kCases; ++i) {
    file << (i * 7919) % 100003 + 1 << ',' << (i % 5 == 0 ? 0 : 1) << ',' << (i * 31) % kCodes << '\n';
  }
}

TEST(Interrupt, StopsAFitAndLeavesFilesAsTheyWere) {
  const TemporaryFolder folder;
  WriteLongTable(folder.Path() / "long.csv");
  std::ofstream(folder.Path() / "old.json") << "an older result\n";
  const int null = OpenNull();
  PseudoTerminal terminal;
  RunningProgram run({ORV_PROGRAM,
                      {"fit", "long.csv", "--time", "time", "--status", "status", "--factors", "site", "--output",
                       "old.json", "--output", "new.txt"},
                      folder.Path(),
                      null,
                      null,
                      terminal.ProgramSide()});
  // The last thing said before the cases are read; the fit begins a moment later.
  ASSERT_TRUE(terminal.WaitForText("1 is taken as an event", kPatience)) << terminal.Shown();
  ASSERT_FALSE(run.WaitFor(std::chrono::milliseconds(200))) << "the fit is too short for this test";
  run.Send(SIGINT);
  ASSERT_TRUE(run.WaitFor(kPatience));
  close(null);
  EXPECT_EQ(run.ExitCode(), kCancelled);
  EXPECT_THAT(terminal.Shown(), HasSubstr("orvcox: cancelled.\r\n"));
  EXPECT_EQ(FilesIn(folder.Path()), (std::set<std::string>{"long.csv", "old.json"}));
  EXPECT_EQ(ContentOf(folder.Path() / "old.json"), "an older result\n");
}

// A program that waits for its input sits in a system call, which has to be broken off.
TEST(Interrupt, StopsTheWaitForStandardInput) {
  const TemporaryFolder folder;
  std::array<int, 2> input{};
  ASSERT_EQ(pipe2(input.data(), O_CLOEXEC), 0);
  const int null = OpenNull();
  PseudoTerminal terminal;
  RunningProgram run({ORV_PROGRAM,
                      {"fit", "-", "--time", "time", "--status", "status"},
                      folder.Path(),
                      input[0],
                      null,
                      terminal.ProgramSide()});
  // More than a pipe holds: when it is gone, the program is reading.
  std::string table = "time,status\n";
  while (table.size() < 300000) table += "5,1\n";
  ASSERT_EQ(write(input[1], table.data(), table.size()), static_cast<ssize_t>(table.size()));
  EXPECT_FALSE(run.WaitFor(std::chrono::milliseconds(50))) << "it did not wait for the rest of its input";
  run.Send(SIGINT);
  const bool ended = run.WaitFor(kPatience);
  close(input[0]);
  close(input[1]);
  close(null);
  ASSERT_TRUE(ended);
  EXPECT_EQ(run.ExitCode(), kCancelled);
  EXPECT_THAT(terminal.Shown(), HasSubstr("orvcox: cancelled.\r\n"));
}

}  // namespace
}  // namespace orv::testing
