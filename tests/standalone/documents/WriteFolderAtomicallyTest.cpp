#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "standalone/documents/WriteFolderAtomically.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;

class WriteFolderAtomicallyTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "orv-folder-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    m_place = pattern;
  }
  void TearDown() override { fs::remove_all(m_place); }

  std::string Out() const { return (m_place / "out").string() + "/"; }

  // The message of the OutputError that writing throws, empty when it throws none.
  static std::string Write(const std::string& path, const Files& files) {
    try {
      WriteFolderAtomically(path, [&](const FileSink& sink) {
        for (const auto& [name, content] : files) sink(name, content);
      });
    } catch (const OutputError& error) {
      return error.what();
    }
    return {};
  }
  // All files below a folder but the record, with their contents.
  static Files Read(const fs::path& folder) {
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (!entry.is_regular_file() || entry.path().filename() == ".orvcox-files") continue;
      std::ifstream file(entry.path(), std::ios::binary);
      files[fs::relative(entry.path(), folder).string()] = {std::istreambuf_iterator<char>(file), {}};
    }
    return files;
  }
  static void Make(const fs::path& path, const std::string& content) { std::ofstream(path) << content; }

  fs::path m_place;
};

TEST_F(WriteFolderAtomicallyTest, WritesANewFolder) {
  const Files files = {{"a.csv", "1\n"}, {"b.csv", std::string("\0\xFF", 2)}, {"empty.csv", ""}};
  EXPECT_EQ(Write(Out(), files), "");
  EXPECT_EQ(Read(m_place / "out"), files);
  EXPECT_EQ(std::distance(fs::directory_iterator(m_place), {}), 1) << "nothing else is left";
}

TEST_F(WriteFolderAtomicallyTest, ReplacesItsOwnFolderAsAWholeAndKeepsThePermissions) {
  EXPECT_EQ(Write(Out(), {{"a.csv", "1\n"}, {"old.csv", "2\n"}}), "");
  fs::permissions(m_place / "out", fs::perms::owner_all);
  EXPECT_EQ(Write(Out(), {{"a.csv", "3\n"}}), "");
  EXPECT_EQ(Read(m_place / "out"), (Files{{"a.csv", "3\n"}}));
  EXPECT_EQ(fs::status(m_place / "out").permissions(), fs::perms::owner_all);
  EXPECT_EQ(std::distance(fs::directory_iterator(m_place), {}), 1);
}

TEST_F(WriteFolderAtomicallyTest, FillsAnEmptyFolderAndOneFromWhichAFileWasRemoved) {
  fs::create_directory(m_place / "out");
  EXPECT_EQ(Write(Out(), {{"a.csv", "1\n"}, {"b.csv", "2\n"}}), "");
  fs::remove(m_place / "out" / "a.csv");
  EXPECT_EQ(Write(Out(), {{"c.csv", "3\n"}}), "");
  EXPECT_EQ(Read(m_place / "out"), (Files{{"c.csv", "3\n"}}));
}

TEST_F(WriteFolderAtomicallyTest, RefusesAFolderWithAnythingThatItDidNotWrite) {
  struct {
    const char* what;
    void (*make)(const fs::path& folder);
    const char* named;
  } const cases[] = {
      {"a file", [](const fs::path& folder) { Make(folder / "notes.txt", "mine"); }, "\"notes.txt\", which this"},
      {"a hidden file", [](const fs::path& folder) { Make(folder / ".git", "mine"); }, "\".git\", which this"},
      {"a folder", [](const fs::path& folder) { fs::create_directory(folder / "more"); }, "\"more\", which this"},
      {"a changed file", [](const fs::path& folder) { Make(folder / "a.csv", "mine"); },
       "\"a.csv\" in this folder was"},
      {"a link in place of a file",
       [](const fs::path& folder) {
         fs::rename(folder / "a.csv", folder.parent_path() / "a.csv");
         fs::create_symlink(folder.parent_path() / "a.csv", folder / "a.csv");
       },
       "\"a.csv\", which this"},
      {"no record", [](const fs::path& folder) { fs::remove(folder / ".orvcox-files"); }, "\"a.csv\", which this"},
  };
  for (const auto& c : cases) {
    const fs::path place = m_place / c.what;
    fs::create_directory(place);
    const std::string path = (place / "out").string() + "/";
    ASSERT_EQ(Write(path, {{"a.csv", "1\n"}}), "") << c.what;
    c.make(place / "out");
    const Files before = Read(place);
    EXPECT_THAT(Write(path, {{"b.csv", "2\n"}}), testing::HasSubstr(c.named)) << c.what;
    EXPECT_EQ(Read(place), before) << c.what;
    EXPECT_THROW(CheckFolderTarget(path), OutputError) << c.what;
  }
}

TEST_F(WriteFolderAtomicallyTest, PutsTheOldFolderBackWhenSomebodyElseWritesToItMeanwhile) {
  ASSERT_EQ(Write(Out(), {{"a.csv", "1\n"}}), "");
  std::string message;
  try {
    WriteFolderAtomically(Out(), [&](const FileSink& sink) {
      sink("a.csv", "2\n");
      Make(m_place / "out" / "notes.txt", "mine");
    });
  } catch (const OutputError& error) {
    message = error.what();
  }
  EXPECT_THAT(message, testing::HasSubstr("\"notes.txt\""));
  EXPECT_EQ(Read(m_place), (Files{{"out/a.csv", "1\n"}, {"out/notes.txt", "mine"}}));
}

TEST_F(WriteFolderAtomicallyTest, FollowsALinkToAFolder) {
  fs::create_directory(m_place / "real");
  fs::create_directory_symlink("real", m_place / "out");
  EXPECT_EQ(Write(Out(), {{"a.csv", "1\n"}}), "");
  EXPECT_TRUE(fs::is_symlink(m_place / "out"));
  EXPECT_EQ(Read(m_place / "real"), (Files{{"a.csv", "1\n"}}));
}

TEST_F(WriteFolderAtomicallyTest, RefusesAFileAndAMissingPlace) {
  Make(m_place / "out", "a file");
  EXPECT_EQ(Write(Out(), {}), Out() + ": cannot be written: this is a file. Name a folder.");
  EXPECT_EQ(Write((m_place / "no" / "out/").string(), {}), (m_place / "no" / "out/").string() +
                                                               ": cannot be written: there is no folder \"" +
                                                               (m_place / "no").string() + "\". Create it first.");
  EXPECT_NE(Write("/", {}), "");
}

TEST_F(WriteFolderAtomicallyTest, LeavesTheOldFolderAloneWhenWritingFailsHalfway) {
  ASSERT_EQ(Write(Out(), {{"a.csv", "1\n"}}), "");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{4096, before.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::string error = Write(Out(), {{"a.csv", "2\n"}, {"b.csv", std::string(100000, 'x')}});
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(error, Out() + ": cannot be written: it would exceed the largest size that a file may have here.");
  EXPECT_EQ(Read(m_place), (Files{{"out/a.csv", "1\n"}}));
  EXPECT_EQ(std::distance(fs::directory_iterator(m_place), {}), 1);
}

}  // namespace
}  // namespace orv
