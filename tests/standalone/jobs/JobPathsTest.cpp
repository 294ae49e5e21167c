#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "standalone/jobs/JobPaths.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

Job JobWith(const std::string& table) {
  Job job;
  job.Table = table;
  job.Outputs = {"out.txt", "tables/"};
  job.Definition.StartValuesFile = "start.orv";
  return job;
}

TEST(JobPaths, NamesAreTakenFromTheFolderOfTheJob) {
  struct {
    const char* Table;
    const char* JobFile;
    const char* Seen;
  } const cases[] = {
      {"trial.csv", "trial.toml", "trial.csv"},
      {"trial.csv", "jobs/a/trial.toml", "jobs/a/trial.csv"},
      {"../trial.csv", "jobs/trial.toml", "jobs/../trial.csv"},
      {"/data/trial.csv", "jobs/trial.toml", "/data/trial.csv"},
      {"-", "jobs/trial.toml", "-"},
      {"sqlite:trial.db?table=cases", "50%/trial.toml", "sqlite:50%25/trial.db?table=cases"},
  };
  for (const auto& c : cases) EXPECT_EQ(FromFolderOf(c.JobFile, JobWith(c.Table)).Table, c.Seen) << c.Table;
  const Job job = FromFolderOf("jobs/trial.toml", JobWith("trial.csv"));
  EXPECT_EQ(job.Outputs, (std::vector<std::string>{"jobs/out.txt", "jobs/tables/"}));
  EXPECT_EQ(job.Definition.StartValuesFile, "jobs/start.orv");
}

TEST(JobPaths, NamesAreWrittenAsTheFolderOfTheJobSeesThem) {
  struct {
    const char* Table;
    const char* JobFile;
    const char* Written;
  } const cases[] = {
      {"trial.csv", "trial.toml", "trial.csv"},
      {"data/trial.csv", "data/trial.toml", "trial.csv"},
      {"trial.csv", "jobs/trial.toml", "../trial.csv"},
      {"data/x/../trial.csv", "jobs/trial.toml", "../data/trial.csv"},
      {"/data/trial.csv", "jobs/trial.toml", "/data/trial.csv"},
      {"-", "jobs/trial.toml", "-"},
      {"sqlite:trial.db?query=SELECT 1", "jobs/trial.toml", "sqlite:../trial.db?query=SELECT 1"},
  };
  for (const auto& c : cases) EXPECT_EQ(ToFolderOf(c.JobFile, JobWith(c.Table)).Table, c.Written) << c.Table;
  const Job job = ToFolderOf("jobs/trial.toml", JobWith("trial.csv"));
  EXPECT_EQ(job.Outputs, (std::vector<std::string>{"../out.txt", "../tables/"}));
  EXPECT_EQ(job.Definition.StartValuesFile, "../start.orv");
}

TEST(JobPaths, FoldersThatAreLinksAreSeenThrough) {
  const fs::path folder = fs::temp_directory_path() / ("orvcox-paths-" + std::to_string(getpid()));
  fs::create_directories(folder / "real" / "deep");
  fs::create_directory_symlink(folder / "real" / "deep", folder / "link");
  std::ofstream(folder / "trial.csv") << "time\n";
  fs::create_symlink(folder / "trial.csv", folder / "today.csv");
  const fs::path before = fs::current_path();
  fs::current_path(folder);
  const std::string written = ToFolderOf("link/trial.toml", JobWith("today.csv")).Table;
  EXPECT_EQ(written, "../../today.csv") << "a link to a file stays, since it may lead elsewhere tomorrow";
  EXPECT_TRUE(fs::exists(FromFolderOf("link/trial.toml", JobWith(written)).Table));
  fs::current_path(before);
  fs::remove_all(folder);
}

}  // namespace
}  // namespace orv
