#include <gtest/gtest.h>
#include <stdlib.h>  // mkdtemp, which <cstdlib> lacks

#include <filesystem>
#include <fstream>
#include <iterator>

#include "AwkwardDocuments.h"
#include "standalone/documents/WriteDocuments.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

class WriteDocumentsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "orv-results-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    m_folder = pattern;
  }
  void TearDown() override { fs::remove_all(m_folder); }

  fs::path m_folder;
};

std::string Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(WriteDocumentsTest, WritesEveryFormToTheEndingThatNamesIt) {
  for (const DocumentFormat& format : DocumentFormats()) {
    const std::string path = (m_folder / ("results" + std::string(format.FileEnding))).string();
    ASSERT_EQ(FindFormatByFileName(path), &format);
    CheckOutputPlace(format, path);
    WriteDocuments(format, path, FullReport(), AwkwardDocuments());
    if (format.WriteFiles != nullptr) {
      EXPECT_TRUE(fs::is_directory(path)) << path;
    } else {
      EXPECT_EQ(Read(path), format.Write(FullReport(), AwkwardDocuments(), {})) << path;
    }
  }
}

TEST_F(WriteDocumentsTest, RefusesAPlaceWithoutItsFolderBeforeThereAreResults) {
  for (const DocumentFormat& format : DocumentFormats()) {
    const std::string path = (m_folder / "no" / ("results" + std::string(format.FileEnding))).string();
    EXPECT_THROW(CheckOutputPlace(format, path), OutputError) << path;
  }
}

TEST_F(WriteDocumentsTest, SaysWhichFormHasNoRoom) {
  ResultDocuments documents;
  documents.Add(Sheet({}, {"a"}, std::vector<SheetColumn>(16384, NumberColumn("x", {1})))).Name = "design";
  for (const DocumentFormat& format : DocumentFormats()) {
    std::string message;
    try {
      CheckDocumentsFit(format, "r.xlsx", documents);
    } catch (const OutputError& error) {
      message = error.what();
    }
    const std::string expected = "r.xlsx: cannot be written: \"design\" has 16385 columns";
    EXPECT_EQ(message.substr(0, expected.size()), format.Name == "xlsx" ? expected : "") << format.Name;
  }
}

}  // namespace
}  // namespace orv
