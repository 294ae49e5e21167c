// Files of other statistics programs: kinds of missing values, value labels, dates, encodings, damaged counts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <readstat.h>

#include <cmath>
#include <limits>

#include "cli/TemporaryFolder.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::Contents;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::RefusalOf;
using testing::StatisticsContent;
using testing::WriteStatisticsFile;

class StatisticsFiles : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return m_folder.Path() / name; }

  // A file with one number in every row.
  static StatisticsContent Numbers(const std::vector<double>& values, const char* format = nullptr) {
    StatisticsContent content;
    content.Rows = static_cast<long>(values.size());
    content.Declare = [format](readstat_writer_t* writer) {
      readstat_variable_t* x = readstat_add_variable(writer, "X", READSTAT_TYPE_DOUBLE, 8);
      if (format != nullptr) readstat_variable_set_format(x, format);
    };
    content.Fill = [values](readstat_writer_t* writer) {
      for (const double value : values) {
        readstat_begin_row(writer);
        readstat_insert_double_value(writer, readstat_get_variable(writer, 0), value);
        readstat_end_row(writer);
      }
    };
    return content;
  }

  // A file with one text in every row.
  static StatisticsContent Texts(const std::vector<std::string>& texts) {
    StatisticsContent content;
    content.Rows = static_cast<long>(texts.size());
    content.Declare = [](readstat_writer_t* writer) { readstat_add_variable(writer, "T", READSTAT_TYPE_STRING, 20); };
    content.Fill = [texts](readstat_writer_t* writer) {
      for (const std::string& text : texts) {
        readstat_begin_row(writer);
        readstat_insert_string_value(writer, readstat_get_variable(writer, 0), text.c_str());
        readstat_end_row(writer);
      }
    };
    return content;
  }

  MemoryTable Read(const std::string& name, const StatisticsContent& content) const {
    WriteStatisticsFile(Path(name), content);
    return ReadTable(Path(name));
  }

  const testing::TemporaryFolder m_folder;
};

TEST_F(StatisticsFiles, SpssKeepsLabelsAndDropsWhatItDeclaresMissing) {
  StatisticsContent content;
  content.Rows = 6;
  content.Declare = [](readstat_writer_t* writer) {
    readstat_label_set_t* labels = readstat_add_label_set(writer, READSTAT_TYPE_DOUBLE, "answers");
    readstat_label_double_value(labels, 2, "no");
    readstat_label_double_value(labels, 1, "yes");
    readstat_label_double_value(labels, 9, "refused");
    readstat_label_double_value(labels, -5, "lost");
    readstat_variable_t* x = readstat_add_variable(writer, "X", READSTAT_TYPE_DOUBLE, 8);
    readstat_variable_set_label(x, "Smokes, as told");
    readstat_variable_set_format(x, "F8.2");
    readstat_variable_set_label_set(x, labels);
    readstat_variable_add_missing_double_value(x, 9);
    readstat_variable_add_missing_double_range(x, -10, -1);
  };
  content.Fill = [](readstat_writer_t* writer) {
    for (const double value : {1.0, 2.0, 9.0, -5.0, -10.0, std::nan("")}) {
      readstat_begin_row(writer);
      const readstat_variable_t* x = readstat_get_variable(writer, 0);
      std::isnan(value) ? readstat_insert_missing_value(writer, x) : readstat_insert_double_value(writer, x, value);
      readstat_end_row(writer);
    }
  };
  for (const char* name : {"labels.sav", "labels.zsav", "labels.por"}) {
    const MemoryTable table = Read(name, content);
    EXPECT_EQ(Contents(table), "X number 1 2 M M M M | 1=yes 2=no\n") << name;
    EXPECT_EQ(table.Variable(1).Label, "Smokes, as told") << name;
    EXPECT_THAT(table.Variable(1).Format, HasSubstr("F8.2")) << name;
  }
}

TEST_F(StatisticsFiles, SpssDeclaresTextsMissing) {
  StatisticsContent content = Texts({"low", "?", "high"});
  content.Declare = [](readstat_writer_t* writer) {
    readstat_variable_add_missing_string_value(readstat_add_variable(writer, "T", READSTAT_TYPE_STRING, 4), "?");
  };
  EXPECT_EQ(Contents(Read("texts.sav", content)), "T text 2 M 1 | 1=high 2=low\n");
}

TEST_F(StatisticsFiles, StataKeepsLabelsOfWholeNumbersAndTakesTaggedValuesAsMissing) {
  StatisticsContent content;
  content.Rows = 4;
  content.Declare = [](readstat_writer_t* writer) {
    readstat_label_set_t* labels = readstat_add_label_set(writer, READSTAT_TYPE_INT32, "arms");
    readstat_label_int32_value(labels, 1, "standard");
    readstat_label_int32_value(labels, 7, "test");
    readstat_label_tagged_value(labels, 'a', "withdrawn");
    readstat_variable_set_label_set(readstat_add_variable(writer, "arm", READSTAT_TYPE_INT32, 4), labels);
    readstat_add_variable(writer, "small", READSTAT_TYPE_INT8, 1);
    readstat_add_variable(writer, "half", READSTAT_TYPE_FLOAT, 4);
  };
  content.Fill = [](readstat_writer_t* writer) {
    const readstat_variable_t* arm = readstat_get_variable(writer, 0);
    const readstat_variable_t* small = readstat_get_variable(writer, 1);
    const readstat_variable_t* half = readstat_get_variable(writer, 2);
    for (int row = 0; row < 4; ++row) {
      readstat_begin_row(writer);
      row == 2 ? readstat_insert_tagged_missing_value(writer, arm, 'a')
               : readstat_insert_int32_value(writer, arm, row == 0 ? 7 : 1);
      row == 3 ? readstat_insert_missing_value(writer, small)
               : readstat_insert_int8_value(writer, small, static_cast<std::int8_t>(row - 100));
      readstat_insert_float_value(writer, half, static_cast<float>(row) + 0.5F);
      readstat_end_row(writer);
    }
  };
  EXPECT_EQ(Contents(Read("labels.dta", content)),
            "arm number 7 1 M 1 | 1=standard 7=test\nsmall number -100 -99 -98 M\nhalf number 0.5 1.5 2.5 3.5\n");
}

TEST_F(StatisticsFiles, SasTakesLettersAsMissing) {
  StatisticsContent content = Numbers({1, 2, 3});
  content.Fill = [](readstat_writer_t* writer) {
    const readstat_variable_t* x = readstat_get_variable(writer, 0);
    for (const char tag : {'A', '_', '0'}) {
      readstat_begin_row(writer);
      tag == '0' ? readstat_insert_double_value(writer, x, 0.0) : readstat_insert_tagged_missing_value(writer, x, tag);
      readstat_end_row(writer);
    }
  };
  EXPECT_EQ(Contents(Read("tags.xpt", content)), "X number M M 0\n");
  EXPECT_EQ(Contents(Read("tags.sas7bdat", content)), "X number M M 0\n");
}

TEST_F(StatisticsFiles, TimesOfDayArePartsOfADay) {
  constexpr double kSpssDay = 86400.0;
  const double spssNoon = (141428.0 + 18321.0) * kSpssDay + kSpssDay / 2.0;  // 2020-02-29 12:00
  EXPECT_EQ(Contents(Read("time.sav", Numbers({spssNoon}, "DATETIME20"))), "X date 18321.5\n");
  EXPECT_EQ(Contents(Read("time.sav", Numbers({spssNoon}, "F20.0"))), "X number 13802356800\n");
  EXPECT_EQ(Contents(Read("time.sav", Numbers({3600}, "TIME8"))), "X number 3600\n");
  const double stataNoon = (3653.0 + 18321.5) * 86400000.0;
  EXPECT_EQ(Contents(Read("time.dta", Numbers({stataNoon}, "%tc"))), "X date 18321.5\n");
  EXPECT_EQ(Contents(Read("time.dta", Numbers({240}, "%tm"))), "X number 240\n");
  const double sasNoon = (3653.0 + 18321.5) * 86400.0;
  EXPECT_EQ(Contents(Read("time.xpt", Numbers({sasNoon}, "DATETIME20"))), "X date 18321.5\n");
  EXPECT_EQ(Contents(Read("time.sas7bdat", Numbers({sasNoon}, "DATETIME20"))), "X date 18321.5\n");
}

TEST_F(StatisticsFiles, TextsAreTakenAsInCsv) {
  const std::vector<std::string> texts = {"b", " a ", "", "NA", ".", "nan", "12", "B"};
  for (const std::string& ending : testing::StatisticsEndings()) {
    EXPECT_EQ(Contents(Read("texts" + ending, Texts(texts))), "T text 4 3 M M M M 1 2 | 1=12 2=B 3=a 4=b\n") << ending;
    // A row of blanks at the end of a transport file is what fills its last record, not a case.
    if (ending == ".xpt") continue;
    EXPECT_EQ(Contents(Read("none" + ending, Texts({"", " "}))), "T number M M\n") << ending;
  }
}

TEST_F(StatisticsFiles, TextsBecomeUtf8) {
  for (const char* name : {"utf8.sav", "utf8.dta", "utf8.sas7bdat", "utf8.xpt"})
    EXPECT_EQ(Contents(Read(name, Texts({"M\xC3\xBCller"}))), "T text 1 | 1=M\xC3\xBCller\n") << name;
  // Older Stata files and transport files hold the characters of their machine.
  StatisticsContent old = Texts({"M\xFCller"});
  old.Version = 114;
  EXPECT_EQ(Contents(Read("old.dta", old)), "T text 1 | 1=M\xC3\xBCller\n");
  EXPECT_EQ(Contents(Read("old.xpt", Texts({"M\xFCller"}))), "T text 1 | 1=M\xC3\xBCller\n");
}

TEST_F(StatisticsFiles, TextsInAnotherEncodingThanTheFileSaysAreRefused) {
  for (const char* name : {"bad.sav", "bad.dta"}) {
    WriteStatisticsFile(Path(name), Texts({"ok", "M\xFCller"}));
    const std::string refusal = RefusalOf(Path(name));
    EXPECT_TRUE(refusal.starts_with(Path(name))) << refusal;
    EXPECT_NE(refusal, "(it reads)");
  }
}

TEST_F(StatisticsFiles, InfiniteValuesAreRefused) {
  WriteStatisticsFile(Path("x.sav"), Numbers({1.0, std::numeric_limits<double>::infinity()}));
  EXPECT_EQ(RefusalOf(Path("x.sav")),
            Path("x.sav") +
                ", case 2, variable \"X\": an infinite value. Replace it by a number, or make "
                "it missing.");
}

TEST_F(StatisticsFiles, ATableWithoutCasesIsRefused) {
  for (const char* name : {"none.sav", "none.dta", "none.por", "none.xpt", "none.sas7bdat"}) {
    WriteStatisticsFile(Path(name), Numbers({}));
    EXPECT_EQ(RefusalOf(Path(name)), Path(name) + ": variables, but no case. Check that this is the whole table.")
        << name;
  }
}

TEST_F(StatisticsFiles, NamesThatDifferOnlyInBlanksAreRefused) {
  // Stata's own names cannot hold blanks, but a damaged or foreign file may.
  StatisticsContent content;
  content.Rows = 1;
  content.Declare = [](readstat_writer_t* writer) {
    readstat_add_variable(writer, "dose", READSTAT_TYPE_DOUBLE, 8);
    readstat_add_variable(writer, "dosf", READSTAT_TYPE_DOUBLE, 8);
  };
  content.Fill = [](readstat_writer_t* writer) {
    readstat_begin_row(writer);
    for (int v = 0; v < 2; ++v) readstat_insert_double_value(writer, readstat_get_variable(writer, v), v);
    readstat_end_row(writer);
  };
  WriteStatisticsFile(Path("names.dta"), content);
  std::string bytes = testing::ContentOfFile(Path("names.dta"));
  bytes.replace(bytes.find("dosf"), 4, "dose");
  testing::WriteContent(Path("names.dta"), bytes);
  EXPECT_EQ(RefusalOf(Path("names.dta")),
            Path("names.dta") + ": variables 1 and 2 have the same name, \"dose\". Rename one of them.");
}

TEST_F(StatisticsFiles, MoreCasesThanTheProgramCountsAreRefused) {
  WriteStatisticsFile(Path("x.dta"), Numbers({1, 2, 3}));
  TableReadOptions options;
  options.MaximumCases = 2;
  EXPECT_THROW(ReadTable(Path("x.dta"), options), TableError);
  options.MaximumCases = 3;
  EXPECT_EQ(ReadTable(Path("x.dta"), options).CaseCount(), 3);
}

TEST_F(StatisticsFiles, CancellingStopsTheReadingAndProgressReachesItsEnd) {
  const std::vector<double> values(200000, 1.5);
  for (const std::string& ending : testing::StatisticsEndings()) {
    const std::string path = Path("long" + ending);
    WriteStatisticsFile(path, Numbers(values));
    TableReadOptions options;
    std::uint64_t last = 0;
    options.Progress = [&last](std::uint64_t done, std::uint64_t) { last = done; };
    EXPECT_EQ(ReadTable(path, options).CaseCount(), 200000) << ending;
    EXPECT_EQ(last, testing::ContentOfFile(path).size()) << ending;
    options.Cancelled = [] { return true; };
    EXPECT_THROW(ReadTable(path, options), TableReadCancelled) << ending;
  }
}

TEST_F(StatisticsFiles, MissingFilesAndFoldersAreTold) {
  EXPECT_EQ(RefusalOf(Path("none.sav")), Path("none.sav") + ": no such file. Check the name and the folder.");
  std::filesystem::create_directory(Path("folder.dta"));
  EXPECT_THAT(RefusalOf(Path("folder.dta")), HasSubstr("a folder, not a file"));
  std::filesystem::create_symlink("/dev/null", Path("null.por"));
  EXPECT_THAT(RefusalOf(Path("null.por")),
              EndsWith("a pipe or a device. Tables of this form are read from ordinary files alone."));
}

}  // namespace
}  // namespace orv
