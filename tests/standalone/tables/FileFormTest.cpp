#include <gtest/gtest.h>

#include "cli/TemporaryFolder.h"
#include "standalone/tables/FileForm.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TableWriters.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using namespace std::string_view_literals;

TEST(FileForm, IsToldByTheFirstBytes) {
  const struct {
    std::string_view head;
    FileForm form;
  } cases[] = {
      {"", FileForm::Unknown},
      {"x,y\r\n1,\t2\n", FileForm::Text},
      {"M\xC3\xBCller", FileForm::Text},
      {"M\xFCller", FileForm::Unknown},
      {"a\x01", FileForm::Unknown},
      {"SQLite format 3\0"sv, FileForm::Sqlite},
      {"$FL2@(#)", FileForm::Spss},
      {"$FL3@(#)", FileForm::Spss},
      {"<stata_dta><header>", FileForm::Stata},
      {"\x72\x02\x01\x00"sv, FileForm::Stata},
      {"\x74\x02\x01\x00"sv, FileForm::Unknown},
      {"PK\x03\x04", FileForm::Workbook},
      {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", FileForm::OldWorkbook},
  };
  for (const auto& c : cases) EXPECT_EQ(FormOf(c.head), c.form) << testing::Visible(c.head);
}

// Every file under every other name is refused with the name of what it is.
TEST(FileForm, AWrongEndingIsTold) {
  const testing::TemporaryFolder folder;
  const MemoryTable table = testing::ReadText(testing::kSampleText);
  std::vector<std::string> endings = testing::StatisticsEndings();
  for (const std::string& ending : endings) testing::WriteStatisticsFile(table, folder.Path() / ("sample" + ending));
  WriteTable(table, folder.Path() / "sample.orv");
  WriteTable(table, folder.Path() / "sample.csv");
  endings.insert(endings.end(), {".orv", ".csv"});
  for (const std::string& from : endings) {
    const std::string content = testing::ContentOfFile(folder.Path() / ("sample" + from));
    const FileForm form = FormOf(std::string_view(content).substr(0, 512));
    for (const std::string& to : endings) {
      const bool sameReader = from == to || (from.ends_with("sav") && to.ends_with("sav"));
      const std::string path = folder.Path() / ("wrong" + to);
      testing::WriteContent(path, content);
      const std::string refusal = testing::RefusalOf(path);
      if (sameReader) {
        EXPECT_EQ(refusal, "(it reads)") << from << to;
      } else {
        EXPECT_TRUE(refusal.starts_with(path + ": not ")) << from << to << ": " << refusal;
        EXPECT_NE(refusal.find("its content is " + std::string(FormName(form))), std::string::npos) << refusal;
        EXPECT_FALSE(FormAdvice(form).empty()) << from;
      }
    }
  }
}

}  // namespace
}  // namespace orv
