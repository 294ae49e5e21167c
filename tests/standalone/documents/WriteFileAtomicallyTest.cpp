#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "standalone/documents/WriteFileAtomically.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

class WriteFileAtomicallyTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "orv-documents-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    m_folder = pattern;
  }
  void TearDown() override { fs::remove_all(m_folder); }

  static std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void Make(const std::string& name, const std::string& content) { std::ofstream(m_folder / name) << content; }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_folder)) names.push_back(entry.path().filename().string());
    return names;
  }
  // The message of the OutputError that writing throws, empty when it throws none.
  static std::string ErrorOf(const fs::path& path, std::string_view content) {
    try {
      WriteFileAtomically(path.string(), content);
    } catch (const OutputError& error) {
      return error.what();
    }
    return {};
  }

  fs::path m_folder;
};

TEST_F(WriteFileAtomicallyTest, WritesEveryByteAndNothingElse) {
  const std::string content("a\0b\r\n\xFF", 6);
  WriteFileAtomically((m_folder / "results.json").string(), content);
  EXPECT_EQ(Read(m_folder / "results.json"), content);
  WriteFileAtomically((m_folder / "empty.json").string(), "");
  EXPECT_THAT(Names(), testing::UnorderedElementsAre("results.json", "empty.json"));
}

TEST_F(WriteFileAtomicallyTest, ReplacesAFileAndKeepsItsPermissions) {
  Make("results.json", "an earlier, longer content");
  fs::permissions(m_folder / "results.json", fs::perms::owner_read | fs::perms::owner_write);
  WriteFileAtomically((m_folder / "results.json").string(), "new");
  EXPECT_EQ(Read(m_folder / "results.json"), "new");
  EXPECT_EQ(fs::status(m_folder / "results.json").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_THAT(Names(), testing::ElementsAre("results.json"));
}

TEST_F(WriteFileAtomicallyTest, FollowsASymbolicLink) {
  Make("real.json", "old");
  fs::create_symlink("real.json", m_folder / "link.json");
  WriteFileAtomically((m_folder / "link.json").string(), "new");
  EXPECT_TRUE(fs::is_symlink(m_folder / "link.json"));
  EXPECT_EQ(Read(m_folder / "real.json"), "new");
}

TEST_F(WriteFileAtomicallyTest, WritesIntoTheCurrentFolderByABareName) {
  const fs::path before = fs::current_path();
  fs::current_path(m_folder);
  const std::string error = ErrorOf("results.json", "content");
  fs::current_path(before);
  EXPECT_EQ(error, "");
  EXPECT_EQ(Read(m_folder / "results.json"), "content");
}

TEST_F(WriteFileAtomicallyTest, RemovesWhatBrokenRunsLeft) {
  Make(".orvcox-unfinished-1", "left over");
  Make(".orvcox-unfinished-3", "left over");
  fs::create_directory(m_folder / ".orvcox-unfinished-4");
  Make(".orvcox-unfinished-4/03-estimates.csv", "left over");
  WriteFileAtomically((m_folder / "results.json").string(), "content");
  EXPECT_EQ(Read(m_folder / "results.json"), "content");
  EXPECT_THAT(Names(), testing::ElementsAre("results.json"));
}

TEST_F(WriteFileAtomicallyTest, LeavesTheFileOfARunThatIsWritingAlone) {
  Make(".orvcox-unfinished-1", "half a");
  const int other = open((m_folder / ".orvcox-unfinished-1").c_str(), O_RDWR);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  WriteFileAtomically((m_folder / "results.json").string(), "content");
  close(other);
  EXPECT_EQ(Read(m_folder / "results.json"), "content");
  EXPECT_EQ(Read(m_folder / ".orvcox-unfinished-1"), "half a");
  EXPECT_THAT(Names(), testing::UnorderedElementsAre("results.json", ".orvcox-unfinished-1"));
}

TEST_F(WriteFileAtomicallyTest, RemovesNoFolderInsideAFolderThatLooksLeftOver) {
  fs::create_directories(m_folder / ".orvcox-unfinished-1" / "mine");
  Make(".orvcox-unfinished-1/mine/letter.txt", "dear");
  WriteFileAtomically((m_folder / "results.json").string(), "content");
  EXPECT_EQ(Read(m_folder / ".orvcox-unfinished-1" / "mine" / "letter.txt"), "dear");
}

TEST_F(WriteFileAtomicallyTest, RefusesAMissingFolder) {
  const fs::path path = m_folder / "reports" / "results.json";
  EXPECT_EQ(ErrorOf(path, "content"), path.string() + ": cannot be written: there is no folder \"" +
                                          (m_folder / "reports").string() + "\". Create it first.");
  EXPECT_THAT(Names(), testing::IsEmpty());
}

TEST_F(WriteFileAtomicallyTest, RefusesAFileInThePlaceOfItsFolder) {
  Make("reports", "a file");
  EXPECT_THAT(ErrorOf(m_folder / "reports" / "results.json", "content"), testing::HasSubstr("there is no folder"));
  EXPECT_EQ(Read(m_folder / "reports"), "a file");
}

TEST_F(WriteFileAtomicallyTest, RefusesAFolder) {
  fs::create_directory(m_folder / "reports");
  EXPECT_EQ(ErrorOf(m_folder / "reports", "content"),
            (m_folder / "reports").string() + ": cannot be written: this is a folder. Name a file in it.");
  EXPECT_THAT(Names(), testing::ElementsAre("reports"));
}

TEST_F(WriteFileAtomicallyTest, RefusesAFolderWithoutPermission) {
  Make("results.json", "old");
  ASSERT_EQ(chmod(m_folder.c_str(), 0555), 0);
  // The superuser may write everywhere, so the call is made as a user without rights.
  const bool isSuperuser = geteuid() == 0;
  if (isSuperuser) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  const std::string error = ErrorOf(m_folder / "results.json", "content");
  if (isSuperuser) {
    ASSERT_EQ(seteuid(0), 0);
  }
  ASSERT_EQ(chmod(m_folder.c_str(), 0755), 0);
  EXPECT_EQ(error, (m_folder / "results.json").string() +
                       ": cannot be written: no permission to write in the folder \"" + m_folder.string() +
                       "\". Choose another folder.");
  EXPECT_EQ(Read(m_folder / "results.json"), "old");
  EXPECT_THAT(Names(), testing::ElementsAre("results.json"));
}

TEST_F(WriteFileAtomicallyTest, LeavesTheEarlierFileAloneWhenWritingFailsHalfway) {
  Make("results.json", "old");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{4096, before.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::string error = ErrorOf(m_folder / "results.json", std::string(100000, 'x'));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(error, (m_folder / "results.json").string() +
                       ": cannot be written: it would exceed the largest size that a file may have here.");
  EXPECT_EQ(Read(m_folder / "results.json"), "old");
  EXPECT_THAT(Names(), testing::ElementsAre("results.json"));
}

TEST_F(WriteFileAtomicallyTest, SaysThatTheDiskIsFull) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "this system has no device that is always full";
  EXPECT_EQ(ErrorOf("/dev/full", "content"),
            "/dev/full: cannot be written: the disk is full. Free some space or choose another disk.");
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(WriteFileAtomicallyTest, WritesToADeviceWithoutReplacingIt) {
  EXPECT_EQ(ErrorOf("/dev/null", "content"), "");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(WriteFileAtomicallyTest, RefusesAnEmptyName) {
  EXPECT_NE(ErrorOf("", "content"), "");
}

}  // namespace
}  // namespace orv
