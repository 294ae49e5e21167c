// Whatever happened to a file, its reader gives a sound table or a TableError that names the file, and memory stays in
// proportion to the file's size. The sequences are the same in every run.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <random>
#include <string>

#include "cli/TemporaryFolder.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TableWriters.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

constexpr int kMostCases = 1000000;

class DamagedFiles : public ::testing::TestWithParam<const char*> {
 protected:
  DamagedFiles() : m_path(m_folder.Path() / (std::string("sample") + GetParam())) {
    const MemoryTable table = testing::ReadText(testing::kSampleText);
    if (LowerCaseEnding(m_path) == ".orv") {
      WriteTable(table, m_path);
    } else if (LowerCaseEnding(m_path) == ".db") {
      testing::WriteForeignDatabase(table, m_path);
    } else {
      testing::WriteStatisticsFile(table, m_path);
    }
    m_content = testing::ContentOfFile(m_path);
  }

  // What was read from a content, or nothing when it was refused.
  std::optional<MemoryTable> Outcome(const std::string& content, const std::string& what) const {
    testing::WriteContent(m_path, content);
    TableReadOptions options;
    options.MaximumCases = kMostCases;
    try {
      MemoryTable table = ReadTable(m_path, options);
      ExpectSound(table, what);
      return table;
    } catch (const TableError& error) {
      const std::string message = error.what();
      EXPECT_TRUE(message.starts_with(m_path)) << what << ": " << message;
      EXPECT_TRUE(message.ends_with(".")) << what << ": " << message;
      return std::nullopt;
    }
  }
  bool ReadsOrRefuses(const std::string& content, const std::string& what) const {
    return Outcome(content, what).has_value();
  }

  const testing::TemporaryFolder m_folder;
  const std::string m_path;
  std::string m_content;

 private:
  static void ExpectSound(const MemoryTable& table, const std::string& what) {
    ASSERT_GT(table.VariableCount(), 0) << what;
    ASSERT_GT(table.CaseCount(), 0) << what;
    for (int v = 1; v <= table.VariableCount(); ++v) {
      const TableVariable& variable = table.Variable(v);
      EXPECT_FALSE(variable.Name.empty()) << what;
      ASSERT_EQ(static_cast<int>(variable.Values.size()), table.CaseCount()) << what;
      EXPECT_TRUE(std::all_of(variable.Values.begin(), variable.Values.end(), [](double x) {
        return std::isfinite(x);
      })) << what;
      for (std::size_t k = 1; k < variable.Labels.size(); ++k)
        EXPECT_LT(variable.Labels[k - 1].Code, variable.Labels[k].Code) << what;
    }
  }
};

TEST_P(DamagedFiles, CutAtEvery64thByteAreRefusedOrRead) {
  const std::optional<MemoryTable> whole = Outcome(m_content, "whole");
  ASSERT_TRUE(whole.has_value());
  // A transport file does not tell how many cases it has: one that ends between two records may be whole.
  const bool mayBeShorter = LowerCaseEnding(m_path) == ".xpt";
  for (std::size_t size = 0; size < m_content.size(); size += 64) {
    const std::optional<MemoryTable> cut = Outcome(m_content.substr(0, size), "cut at " + std::to_string(size));
    if (!cut) continue;
    EXPECT_GT(size, m_content.size() / 2) << GetParam();
    if (mayBeShorter) {
      EXPECT_LE(cut->CaseCount(), whole->CaseCount()) << size;
    } else {
      EXPECT_EQ(testing::Contents(*cut), testing::Contents(*whole)) << "cut at " << size;
    }
  }
}

TEST_P(DamagedFiles, WithBitsFlippedAreRefusedOrRead) {
  std::mt19937_64 random(1);
  constexpr int kRounds = 3000;
  int read = 0;
  for (int round = 0; round < kRounds; ++round) {
    std::string content = m_content;
    // Most of what a form says about itself stands at the beginning of its file.
    const std::size_t reach = round % 2 == 0 ? content.size() : std::min<std::size_t>(content.size(), 2048);
    std::string what = "flipped";
    for (int flips = 1 + static_cast<int>(random() % 3); flips > 0; --flips) {
      const std::size_t place = random() % reach;
      const unsigned bit = static_cast<unsigned>(random() % 8);
      content[place] = static_cast<char>(static_cast<unsigned char>(content[place]) ^ (1U << bit));
      what += " " + std::to_string(place) + "." + std::to_string(bit);
    }
    read += ReadsOrRefuses(content, what) ? 1 : 0;
  }
  EXPECT_GT(read, 0);
  EXPECT_LT(read, kRounds);
}

TEST_P(DamagedFiles, WithFieldsOfExtremeNumbersAreRefusedOrRead) {
  std::mt19937_64 random(2);
  const std::string extremes[] = {
      std::string(4, '\xFF'),       std::string(8, '\xFF'),          std::string(4, '\0'),
      std::string(8, '\0'),         std::string("\x7F\xFF\xFF\xFF"), std::string("\xFF\xFF\xFF\x7F"),
      std::string("\0\0\0\x10", 4), std::string("9999999999")};
  constexpr int kRounds = 2000;
  for (int round = 0; round < kRounds; ++round) {
    const std::size_t reach = round % 2 == 0 ? m_content.size() : std::min<std::size_t>(m_content.size(), 2048);
    const std::string& field = extremes[random() % std::size(extremes)];
    const std::size_t place = random() % (reach - field.size());
    std::string content = m_content;
    content.replace(place, field.size(), field);
    ReadsOrRefuses(content, "at " + std::to_string(place));
  }
}

INSTANTIATE_TEST_SUITE_P(Forms,
                         DamagedFiles,
                         ::testing::Values(".orv", ".db", ".sas7bdat", ".xpt", ".sav", ".zsav", ".por", ".dta"),
                         [](const auto& form) { return std::string(form.param + 1); });

}  // namespace
}  // namespace orv
