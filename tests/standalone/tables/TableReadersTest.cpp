#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include "standalone/tables/DelimitedReader.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::Contents;

class TableFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = std::filesystem::temp_directory_path() / "orv-tables-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    m_folder = name;
  }
  void TearDown() override { std::filesystem::remove_all(m_folder); }

  std::string Path(const std::string& name) const { return m_folder / name; }
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
  }
  static std::string Refusal(const std::string& path, const TableReadOptions& options = {}) {
    try {
      ReadTable(path, options);
    } catch (const TableError& error) {
      return error.what();
    }
    return "(it reads)";
  }

 private:
  std::filesystem::path m_folder;
};

// A stream over a text, as standard input is.
struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
std::unique_ptr<std::FILE, Closer> Stream(const std::string& text) {
  std::unique_ptr<std::FILE, Closer> file(std::tmpfile());
  std::fwrite(text.data(), 1, text.size(), file.get());
  std::rewind(file.get());
  return file;
}

// A table of about 100 bytes a line whose second column is text only in the last line.
std::string LongTable(int cases) {
  std::string text = "id,code\n";
  for (int i = 1; i < cases; ++i) text += std::to_string(i) + "," + std::string(90, '0') + "5\n";
  return text + std::to_string(cases) + ",last\n";
}

TEST_F(TableFiles, EndingDecidesOnTheReader) {
  for (const char* name : {"a.csv", "a.CSV", "a.Csv", "a.txt", "a.TXT", "a.tsv"})
    EXPECT_EQ(Contents(ReadTable(Write(name, "x;y\n1;2\n"))), "x number 1\ny number 2\n") << name;
  const std::string ambiguous = "x,y\tz,w\n1\t2\n";
  for (const char* name : {"a.tsv", "a.TSV", "a.Tsv"})
    EXPECT_EQ(Contents(ReadTable(Write(name, ambiguous))), "x,y number 1\nz,w number 2\n") << name;
  EXPECT_TRUE(Refusal(Write("a.csv", ambiguous)).starts_with(Path("a.csv") + ", line 2: 1 field, but line 1 names 3"));
}

TEST_F(TableFiles, SourceIsTheNameAsGiven) {
  const std::string path = Write("trial.csv", "x\n1\n");
  EXPECT_EQ(ReadTable(path).Source(), path);
}

const std::string kReadable =
    "Readable are .csv, .tsv, .txt, .orv, .db, .sqlite, .sqlite3, .sas7bdat, .xpt, .sav, .zsav, .por, .dta, and - for "
    "CSV "
    "from standard input.\n  Save the table in one of these forms.";

TEST_F(TableFiles, UnknownEndingsNameTheReadableOnes) {
  for (const char* ending : {".pdf", ".sas7bcat", ".csv~"}) {
    const std::string path = Write(std::string("trial") + ending, "x\n1\n");
    EXPECT_EQ(Refusal(path), path + ": " + ending + " files cannot be read. " + kReadable);
  }
  const std::string path = Write("trial", "x\n1\n");
  EXPECT_EQ(Refusal(path), path + ": a file without an ending cannot be read. " + kReadable);
}

TEST_F(TableFiles, WorkbooksAreToBeSavedAsCsv) {
  for (const char* name : {"a.xlsx", "a.XLS", "a.ods"}) {
    const std::string path = Write(name, "PK");
    EXPECT_EQ(Refusal(path), path + ": workbooks cannot be read. Save the sheet as CSV (.csv) and read that.");
  }
}

TEST_F(TableFiles, MissingFilesAndFolders) {
  for (const char* name : {"none.csv", "none.sav", "none", "none/trial.csv"})
    EXPECT_EQ(Refusal(Path(name)), Path(name) + ": no such file. Check the name and the folder.");
  for (const char* name : {"data", "data.csv", "data.sav"}) {
    std::filesystem::create_directory(Path(name));
    EXPECT_EQ(Refusal(Path(name)), Path(name) + ": a folder, not a file. Name the file in it that is to be read.");
  }
  const std::string path = Write("file.csv", "x\n1\n");
  EXPECT_EQ(Refusal(path + "/trial.csv"), path + "/trial.csv: no such file. Check the name and the folder.");
}

TEST_F(TableFiles, FileWithoutPermission) {
  const std::string path = Write("secret.csv", "x\n1\n");
  std::filesystem::permissions(path, std::filesystem::perms::none);
  // The superuser may read everything, so as that the test reads as somebody else.
  constexpr uid_t kNobody = 65534;
  const bool superuser = geteuid() == 0;
  if (superuser) {
    std::filesystem::permissions(std::filesystem::path(path).parent_path(), std::filesystem::perms::all);
    ASSERT_EQ(seteuid(kNobody), 0);
  }
  const std::string message = Refusal(path);
  if (superuser) {
    ASSERT_EQ(seteuid(0), 0);
  }
  EXPECT_EQ(message, path + ": no permission to read this file. Change its permissions, or read a copy of your own.");
}

TEST_F(TableFiles, OtherFailuresToOpenGiveTheSystemsReason) {
  std::filesystem::create_symlink("loop.csv", Path("loop.csv"));
  EXPECT_EQ(Refusal(Path("loop.csv")), Path("loop.csv") + ": cannot be opened: Too many levels of symbolic links.");
}

TEST_F(TableFiles, FailureWhileReading) {
  // The memory of this process at address 0: a file that opens but cannot be read.
  std::filesystem::create_symlink("/proc/self/mem", Path("memory.csv"));
  EXPECT_EQ(
      Refusal(Path("memory.csv")),
      Path("memory.csv") + ": reading failed: Input/output error. Check the disk or the connection, or read a copy.");
}

TEST_F(TableFiles, EmptyFile) {
  const std::string path = Write("empty.csv", "");
  EXPECT_EQ(Refusal(path), path + ": nothing in it. Expected a line that names the variables, then one line a case.");
}

TEST_F(TableFiles, DashReadsStandardInput) {
  for (const char* text : {"x,y\n1,a\n2,b\n", "x,y\n1,1\n2,b\n"}) {
    const auto stream = Stream(text);
    TableReadOptions options;
    options.StandardInput = stream.get();
    const MemoryTable table = ReadTable("-", options);
    EXPECT_EQ(table.Source(), "standard input");
    EXPECT_EQ(table.CaseCount(), 2);
    EXPECT_EQ(table.LabelOf(2, 2.0), "b");
  }
  const auto stream = Stream("x,x\n1,2\n");
  TableReadOptions options;
  options.StandardInput = stream.get();
  EXPECT_EQ(Refusal("-", options),
            "standard input, line 1: columns 1 and 2 have the same name, \"x\". Rename one of them.");
}

TEST_F(TableFiles, StandardInputOfSeveralBlocksCanBeReadTwice) {
  const std::string text = LongTable(12000);
  const auto stream = Stream(text);
  TableReadOptions options;
  options.StandardInput = stream.get();
  const MemoryTable table = ReadTable("-", options);
  EXPECT_EQ(Contents(table), Contents(ReadTable(Write("same.csv", text))));
  EXPECT_EQ(table.LabelOf(2, table.Value(2, 12000)), "last");
}

TEST_F(TableFiles, PipeWithANameCanBeReadTwice) {
  const std::string path = Path("pipe.csv");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&path] { std::ofstream(path) << "x\n1\nb\n"; });
  const MemoryTable table = ReadTable(path);
  writer.join();
  EXPECT_EQ(Contents(table), "x text 1 2 | 1=1 2=b\n");
}

TEST_F(TableFiles, ProgressRisesToTheEndInAHundredStepsAPass) {
  const std::string text = LongTable(600000);  // about 60 MB, read twice
  const std::string path = Write("long.csv", text);
  std::vector<std::pair<std::uint64_t, std::uint64_t>> reports;
  TableReadOptions options;
  options.Progress = [&reports](std::uint64_t done, std::uint64_t total) { reports.emplace_back(done, total); };
  ReadTable(path, options);
  EXPECT_GE(reports.size(), 150U);
  EXPECT_LE(reports.size(), 204U);
  int passes = 1;
  for (std::size_t i = 0; i < reports.size(); ++i) {
    EXPECT_EQ(reports[i].second, text.size());
    EXPECT_LE(reports[i].first, text.size());
    if (i > 0 && reports[i].first <= reports[i - 1].first) {
      ++passes;
      EXPECT_EQ(reports[i - 1].first, text.size());
    }
  }
  EXPECT_EQ(passes, 2);
  EXPECT_EQ(reports.back().first, text.size());
}

TEST_F(TableFiles, ProgressOfStandardInputHasNoTotalUntilItsEnd) {
  const std::string text = LongTable(30000);
  const auto stream = Stream(text);
  std::vector<std::pair<std::uint64_t, std::uint64_t>> reports;
  TableReadOptions options;
  options.StandardInput = stream.get();
  options.Progress = [&reports](std::uint64_t done, std::uint64_t total) { reports.emplace_back(done, total); };
  ReadTable("-", options);
  ASSERT_GE(reports.size(), 3U);
  EXPECT_LE(reports.size(), 200U);
  EXPECT_EQ(reports.front().second, 0U);
  EXPECT_EQ(reports.back(), (std::pair<std::uint64_t, std::uint64_t>(text.size(), text.size())));
}

TEST_F(TableFiles, CancellingStopsAtAnyQuery) {
  const std::string path = Write("long.csv", LongTable(12000));  // several blocks, read twice
  int queries = 0;
  TableReadOptions options;
  options.Cancelled = [&queries] {
    ++queries;
    return false;
  };
  ReadTable(path, options);
  const int all = queries;
  EXPECT_GE(all, 10);
  for (int stopAt = 1; stopAt <= all; ++stopAt) {
    queries = 0;
    options.Cancelled = [&queries, stopAt] { return ++queries == stopAt; };
    EXPECT_THROW(ReadTable(path, options), TableReadCancelled) << stopAt;
    EXPECT_EQ(queries, stopAt);
  }
}

TEST_F(TableFiles, ATableBeyondMemoryIsRefused) {
  TableReadOptions options;
  options.Progress = [](std::uint64_t, std::uint64_t) { throw std::bad_alloc(); };
  const std::string path = Write("large.csv", "x\n1\n");
  EXPECT_EQ(Refusal(path, options),
            path + ": the table does not fit in memory. Leave out columns that the analysis does not need.");
}

// A source that gives another text when it is read again.
class ChangingSource : public ByteSource {
 public:
  ChangingSource(std::string_view first, std::string_view second) : m_first(first), m_second(second) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    return m_rewinds == 1 ? m_first.Read(buffer, size) : m_second.Read(buffer, size);
  }
  void Rewind() override { ++m_rewinds; }
  std::uint64_t TotalBytes() const override { return 0; }

 private:
  testing::TextSource m_first;
  testing::TextSource m_second;
  int m_rewinds = 0;
};

TEST(ReadDelimited, NoticesAFileThatChangesBetweenItsReadings) {
  for (const char* second : {"x,y\n1,2\n", "x,y\n1,2\n3,a\n4,b\n", "x,y,z\n1,2,3\n3,a,4\n", "x\n1\n3\n", ""}) {
    ChangingSource source("x,y\n1,2\n3,a\n", second);
    try {
      ReadDelimited(source, "trial.csv", false, {});
      ADD_FAILURE() << second;
    } catch (const TableError& error) {
      EXPECT_STREQ(error.what(), "trial.csv: changed while it was read. Wait until it is complete and try again.");
    }
  }
}

TEST(TableReaders, EndingsAreLowerCaseAndUnique) {
  std::vector<std::string_view> endings;
  for (const TableReader& reader : TableReaders()) {
    EXPECT_NE(reader.Read, nullptr);
    endings.insert(endings.end(), reader.Endings.begin(), reader.Endings.end());
  }
  EXPECT_THAT(endings, ::testing::ElementsAre(".csv", ".tsv", ".txt", ".orv", ".db", ".sqlite", ".sqlite3", ".sas7bdat",
                                              ".xpt", ".sav", ".zsav", ".por", ".dta"));
}

}  // namespace
}  // namespace orv
