// The end of the program in the middle of its output: what was there stays whole, and the next run tidies up.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "cli/RunningProgram.h"
#include "cli/TemporaryFolder.h"

namespace orv::testing {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;

constexpr std::chrono::seconds kPatience{120};  // for builds with sanitizers on a busy machine
constexpr int kKilled = 128 + SIGKILL;
constexpr int kFileError = 3;
constexpr int kMoments = 12;  // of the time that a run takes to write, in which runs are killed
constexpr int kMostAttempts = 4 * kMoments;
constexpr int kEnoughKills = 5;
constexpr const char* kUnfinished = ".orvcox-unfinished-1";

// What a run writes: the results of a fit by --output, its job by --save-job, or a table by convert.
struct Written {
  const char* Name;
  const char* Command;
  const char* File;
};

class UnfinishedOutput : public ::testing::TestWithParam<Written> {
 protected:
  void SetUp() override {
    WriteTable("long.csv", "age", "dose");
    WriteTable("age.csv", "age", "none");
    WriteTable("dose.csv", "none", "dose");
    fs::create_directory(m_place.Path() / "out");
  }

  void WriteTable(const char* name, const char* first, const char* second) const {
    constexpr int kCases = 3000;
    std::ofstream file(m_place.Path() / name);
    file << "time,status," << first << ',' << second << '\n';
    for (int i = 0; i < kCases; ++i) {
      file << (i * 7919) % 5003 + 1 << ',' << (i % 5 == 0 ? 0 : 1) << ',' << (i * 31) % 67 << ',' << (i * 17) % 29
           << '\n';
    }
  }

  // A run that writes what goes with the covariate: the residuals of all cases, a job, or a table.
  std::vector<std::string> Arguments(const std::string& covariate) const {
    const std::string command = GetParam().Command;
    if (command == "convert") return {command, "../" + covariate + ".csv", GetParam().File};
    std::vector<std::string> arguments = {"fit",    "../long.csv",  "--time",  "time",   "--status",
                                          "status", "--covariates", covariate, "--quiet"};
    const std::vector<std::string> residuals = {"--show", "residuals", "--residuals",
                                                "martingale,deviance,score,schoenfeld,dfbeta,xbeta"};
    if (command == "--output") arguments.insert(arguments.end(), residuals.begin(), residuals.end());
    arguments.insert(arguments.end(), {command, GetParam().File});
    return arguments;
  }

  int Run(const char* covariate) const {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    RunningProgram run({ORV_PROGRAM, Arguments(covariate), Folder(), null, null, null});
    EXPECT_TRUE(run.WaitFor(kPatience));
    close(null);
    return run.ExitCode();
  }

  // How long a run has something unfinished in the folder.
  std::chrono::microseconds RunAndMeasureWriting(const char* covariate) const {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    RunningProgram run({ORV_PROGRAM, Arguments(covariate), Folder(), null, null, null});
    WaitForWriting(run);
    const auto begin = std::chrono::steady_clock::now();
    while (HasLitter() && !run.WaitFor(std::chrono::milliseconds(0))) {
    }
    const auto end = std::chrono::steady_clock::now();
    EXPECT_TRUE(run.WaitFor(kPatience));
    EXPECT_EQ(run.ExitCode(), 0);
    close(null);
    return std::chrono::duration_cast<std::chrono::microseconds>(end - begin);
  }

  // Starts a run, and kills it so long after it has begun to write. Returns its exit code.
  int RunAndKill(const char* covariate, std::chrono::microseconds after) const {
    fs::remove_all(Folder() / kUnfinished);
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    RunningProgram run({ORV_PROGRAM, Arguments(covariate), Folder(), null, null, null});
    WaitForWriting(run);
    const auto moment = std::chrono::steady_clock::now() + after;
    while (std::chrono::steady_clock::now() < moment) {
    }
    run.Send(SIGKILL);
    EXPECT_TRUE(run.WaitFor(kPatience));
    close(null);
    return run.ExitCode();
  }

  // Until the run has begun to write or has ended. REQUIRES: nothing unfinished was there when it started.
  void WaitForWriting(RunningProgram& run) const {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!HasLitter() && !run.WaitFor(std::chrono::milliseconds(0)) && std::chrono::steady_clock::now() < deadline) {
    }
  }

  fs::path Folder() const { return m_place.Path() / "out"; }

  // All files of the folder and the folders in it, but those that have not got their names yet.
  Files Finished() const {
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(Folder())) {
      const std::string name = fs::relative(entry.path(), Folder()).string();
      if (!entry.is_regular_file() || name.starts_with(".orvcox-unfinished")) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      files[name] = {std::istreambuf_iterator<char>(file), {}};
    }
    return files;
  }

  bool HasLitter() const { return fs::exists(Folder() / kUnfinished); }

 private:
  TemporaryFolder m_place;
};

TEST_P(UnfinishedOutput, OfAKilledRunNeverMixesWithWhatWasThere) {
  ASSERT_EQ(Run("age"), 0);
  const Files first = Finished();
  const std::chrono::microseconds writing = RunAndMeasureWriting("dose");
  const Files second = Finished();
  ASSERT_FALSE(first == second) << "the two runs must differ for this test";

  int killedWhileWriting = 0;
  const Files* before = &second;
  for (int k = 0; k < kMostAttempts && (k < kMoments || killedWhileWriting < kEnoughKills); ++k) {
    const bool isFirst = k % 2 == 0;
    const bool isKilled = RunAndKill(isFirst ? "age" : "dose", writing * (k % kMoments) / kMoments) == kKilled;
    const Files& after = isFirst ? first : second;
    const Files found = Finished();
    ASSERT_TRUE(found == *before || found == after) << "attempt " << k;
    if (found == after) before = &after;
    if (isKilled && HasLitter()) ++killedWhileWriting;
  }
  EXPECT_GT(killedWhileWriting, 0) << "no run was killed while it wrote, so nothing was tested";

  for (int k = 0; k < kMostAttempts && !HasLitter(); ++k) RunAndKill("dose", std::chrono::microseconds(0));
  EXPECT_TRUE(HasLitter());
  EXPECT_EQ(Run("age"), 0);
  EXPECT_TRUE(Finished() == first);
  EXPECT_FALSE(HasLitter()) << "a later run removes what a killed one left";
}

TEST_P(UnfinishedOutput, BeyondTheLargestSizeOfFilesLeavesWhatWasThere) {
  ASSERT_EQ(Run("age"), 0);
  const Files before = Finished();
  rlimit saved{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  std::size_t largest = 0;
  for (const auto& [name, content] : before) largest = std::max(largest, content.size());
  const rlimit small{largest / 2, saved.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const int exitCode = Run("dose");
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &saved), 0);
  EXPECT_EQ(exitCode, kFileError);
  EXPECT_TRUE(Finished() == before);
  EXPECT_FALSE(HasLitter());
}

INSTANTIATE_TEST_SUITE_P(EveryForm,
                         UnfinishedOutput,
                         ::testing::Values(Written{"txt", "--output", "r.txt"},
                                           Written{"md", "--output", "r.md"},
                                           Written{"html", "--output", "r.html"},
                                           Written{"json", "--output", "r.json"},
                                           Written{"xlsx", "--output", "r.xlsx"},
                                           Written{"folder", "--output", "r/"},
                                           Written{"job", "--save-job", "r.toml"},
                                           Written{"table_orv", "convert", "r.orv"},
                                           Written{"table_csv", "convert", "r.csv"}),
                         [](const auto& form) { return form.param.Name; });

}  // namespace
}  // namespace orv::testing
