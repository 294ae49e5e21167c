#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "output/CResultSpreadsheet.h"
#include "support/AllocationHook.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::RawSheet;
using testing::TestHost;

class ResultSpreadsheetTest : public ::testing::Test {
 protected:
  ResultSpreadsheetTest() : table(testing::MakeTable({{"x", {1.0}}})), host(table) {}
  const RawSheet& Shown() { return host.Sheets.back(); }
  MemoryTable table;
  TestHost host;
};

std::string Field(const std::string& fields, std::size_t index, std::size_t width) {
  return std::string(fields.substr(index * width, width).c_str());
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(width, '\0');
  return text;
}

TEST_F(ResultSpreadsheetTest, StartsWithFixedStylesAndMissingCells) {
  const CResultSpreadsheet sheet(host, 3, 2);
  EXPECT_EQ(sheet.RowCount, 3);
  EXPECT_EQ(sheet.ColumnCount, 2);
  EXPECT_EQ(sheet.ColumnNameWidth, 8);
  EXPECT_EQ(sheet.SheetStyle, 9217);
  EXPECT_EQ(sheet.TitleStyle, 62);
  ASSERT_EQ(sheet.Cells.size(), 6U);
  const auto* bytes = reinterpret_cast<const unsigned char*>(sheet.Cells.data());
  EXPECT_TRUE(std::all_of(bytes, bytes + 6 * sizeof(double), [](unsigned char byte) { return byte == 0xFF; }));
  EXPECT_EQ(sheet.TextCells.size(), 6U * 8);
  EXPECT_EQ(sheet.ColumnIsText, (std::vector<unsigned char>{0, 0}));
  EXPECT_EQ(sheet.ColumnNames.size(), 2U * 8);
  EXPECT_EQ(sheet.ColumnLongNames.size(), 2U * 8);
  EXPECT_EQ(sheet.RowNames.size(), 3U * 40);
  EXPECT_EQ(sheet.Title1.size(), 80U);
  EXPECT_EQ(sheet.Title2.size(), 80U);
  EXPECT_EQ(sheet.Title3.size(), 80U);
  EXPECT_EQ(sheet.ShortName.size(), 12U);
}

TEST_F(ResultSpreadsheetTest, RowNameWidthIsTheHostsWithinEightAndForty) {
  struct {
    int host, width;
  } const cases[] = {{-3, 8}, {0, 8}, {7, 8}, {8, 8}, {25, 25}, {40, 40}, {41, 40}, {1000, 40}};
  for (const auto& c : cases) {
    host.RowNameWidth = c.host;
    const CResultSpreadsheet sheet(host, 2, 1);
    EXPECT_EQ(sheet.RowNameWidth, c.width) << c.host;
    EXPECT_EQ(sheet.RowNames.size(), static_cast<std::size_t>(2 * c.width)) << c.host;
  }
}

TEST_F(ResultSpreadsheetTest, CellsStandColumnByColumn) {
  CResultSpreadsheet sheet(host, 3, 2);
  sheet.SetNumber(0, 0, 1.5);
  sheet.SetNumber(2, 1, -2.5);
  sheet.SetText(1, 1, "text");
  sheet.Show();
  EXPECT_EQ(Shown().Cells[0], 1.5);
  EXPECT_EQ(Shown().Cells[5], -2.5);
  for (const int cell : {1, 2, 3, 4}) EXPECT_TRUE(Shown().IsUnwritten(cell % 3, cell / 3)) << cell;
  EXPECT_EQ(Field(Shown().TextCells, 4, 8), "text");
  EXPECT_EQ(Shown().ColumnIsText, (std::vector<unsigned char>{0, 156}));
}

TEST_F(ResultSpreadsheetTest, ACellNeverWrittenIsMissingAndNotZero) {
  CResultSpreadsheet sheet(host, 1, 2);
  sheet.SetNumber(0, 1, 0.0);
  sheet.Show();
  EXPECT_EQ(LastSheet(host).Number(0, 0), std::nullopt);
  EXPECT_EQ(LastSheet(host).Number(0, 1), 0.0);
}

TEST_F(ResultSpreadsheetTest, TextThatFitsItsFieldIsKept) {
  CResultSpreadsheet sheet(host, 2, 1);
  sheet.SetText(0, 0, "12345678");
  sheet.SetText(1, 0, "");
  sheet.Show();
  EXPECT_EQ(Shown().TextCells, "12345678" + std::string(8, '\0'));
}

TEST_F(ResultSpreadsheetTest, LongerTextIsReplacedByItsKey) {
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetText(0, 0, "123456789");
  sheet.SetColumnName(0, "Parameter Estimate");
  sheet.SetColumnLongName(0, "Estimate of the parameter");
  const std::string longRow(41, 'r');
  sheet.SetRowName(0, longRow);
  sheet.Show();
  EXPECT_EQ(Shown().TextCells, Padded(host.Get8CharHash("123456789"), 8));
  EXPECT_EQ(Shown().ColumnNames, Padded(host.Get8CharHash("Parameter Estimate"), 8));
  EXPECT_EQ(Shown().ColumnLongNames, Padded(host.Get8CharHash("Estimate of the parameter"), 8));
  EXPECT_EQ(Shown().RowNames, Padded(host.Get8CharHash(longRow), 40));
  // A reader maps the keys back.
  EXPECT_EQ(LastSheet(host).Text(0, 0), "123456789");
  EXPECT_EQ(LastSheet(host).ColumnNames(), (std::vector<std::string>{"Parameter Estimate"}));
  EXPECT_EQ(LastSheet(host).RowNames(), (std::vector<std::string>{longRow}));
}

TEST_F(ResultSpreadsheetTest, ShorterTextOverwritesAllOfALongerOne) {
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetText(0, 0, "abcdefgh");
  sheet.SetText(0, 0, "xy");
  sheet.SetTitle1("a long title");
  sheet.SetTitle1("short");
  sheet.Show();
  EXPECT_EQ(Shown().TextCells, Padded("xy", 8));
  EXPECT_EQ(Shown().Title1, Padded("short", 80));
}

TEST_F(ResultSpreadsheetTest, IntegerWiderThanItsFieldIsARowOfSigns) {
  struct {
    long long value;
    const char* text;
  } const cases[] = {{0, "0"},
                     {-1, "-1"},
                     {12345678, "12345678"},
                     {123456789, "########"},
                     {-1234567, "-1234567"},
                     {-12345678, "########"}};
  for (const auto& c : cases) {
    CResultSpreadsheet sheet(host, 1, 1);
    sheet.SetIntegerText(0, 0, c.value);
    sheet.Show();
    EXPECT_EQ(Field(Shown().TextCells, 0, 8), c.text) << c.value;
    EXPECT_EQ(Shown().ColumnIsText[0], 156);
  }
}

TEST_F(ResultSpreadsheetTest, TitlesAreCutAtEightyBytes) {
  const std::string eighty(80, 't');
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetTitle1(eighty);
  sheet.SetTitle2(eighty + "u");
  sheet.SetTitle3("short");
  sheet.Show();
  EXPECT_EQ(Shown().Title1, eighty);
  EXPECT_EQ(Shown().Title2, eighty);
  EXPECT_EQ(Shown().Title3, Padded("short", 80));
}

TEST_F(ResultSpreadsheetTest, ACutLeavesNoHalfCharacter) {
  const std::string twoBytes = "\xC3\xA9";  // e with acute accent
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetTitle1(std::string(79, 't') + twoBytes);
  sheet.SetTitle2(std::string(78, 't') + twoBytes + "x");
  sheet.Show();
  EXPECT_EQ(Shown().Title1, Padded(std::string(79, 't'), 80));
  EXPECT_EQ(Shown().Title2, std::string(78, 't') + twoBytes);
}

TEST_F(ResultSpreadsheetTest, ShortNameHasTwelveBytes) {
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetShortName("Total number of cases");
  sheet.Show();
  EXPECT_EQ(Shown().ShortName, "Total number");
  CResultSpreadsheet next(host, 1, 1);
  next.Show();
  EXPECT_EQ(Shown().ShortName, std::string(12, '\0')) << "each table starts without one";
}

TEST_F(ResultSpreadsheetTest, HighlightBitsFollowTheirHead) {
  CResultSpreadsheet sheet(host, 5, 3);
  ASSERT_EQ(sheet.HighlightBits.size(), 16U + 2);
  std::uint16_t counts[2];
  std::memcpy(counts, &sheet.HighlightBits[12], sizeof counts);
  EXPECT_EQ(counts[0], 5);
  EXPECT_EQ(counts[1], 3);
  sheet.HighlightColumn(1);
  sheet.HighlightCell(0, 0);
  sheet.Show();
  for (int row = 0; row < 5; ++row) {
    EXPECT_EQ(Shown().IsHighlighted(row, 0), row == 0);
    EXPECT_TRUE(Shown().IsHighlighted(row, 1));
    EXPECT_FALSE(Shown().IsHighlighted(row, 2));
  }
  EXPECT_TRUE(LastSheet(host).IsHighlighted(4, 1));
}

TEST_F(ResultSpreadsheetTest, HandsItsSizesAndStylesToTheHost) {
  host.RowNameWidth = 20;
  CResultSpreadsheet sheet(host, 4, 3);
  sheet.Show();
  const SheetArguments& fixed = Shown().Fixed;
  EXPECT_EQ(fixed.RowCount, 4);
  EXPECT_EQ(fixed.ColumnCount, 3);
  EXPECT_EQ(fixed.NumberWidth, 16);
  EXPECT_EQ(fixed.NumberDecimals, 6);
  EXPECT_EQ(fixed.RowNameWidth, 20);
  EXPECT_EQ(fixed.ColumnNameWidth, 8);
  EXPECT_EQ(fixed.TitleWidth, 80);
  EXPECT_EQ(fixed.SheetStyle, 9217);
  EXPECT_EQ(fixed.TitleStyle, 62);
}

TEST_F(ResultSpreadsheetTest, ShowConsumesTheTable) {
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetNumber(0, 0, 1.0);
  sheet.Show();
  EXPECT_TRUE(sheet.IsEmpty());
  EXPECT_TRUE(sheet.Cells.empty());
  EXPECT_TRUE(sheet.TextCells.empty());
  EXPECT_TRUE(sheet.HighlightBits.empty());
  sheet.Show();
  EXPECT_EQ(host.Sheets.size(), 1U);
}

TEST_F(ResultSpreadsheetTest, EmptyTableTakesNothingAndShowsNothing) {
  const int huge = 1 << 16;
  struct {
    const char* what;
    int rows, columns;
  } const cases[] = {
      {"no rows", 0, 3},
      {"no columns", 3, 0},
      {"neither", 0, 0},
      {"negative", -1, 5},
      {"both negative", -2, -2},
      {"2^30 bytes of cells", huge, 1 << 11},
      {"more cells than an int", huge, huge},
      {"largest sizes", std::numeric_limits<int>::max(), std::numeric_limits<int>::max()},
      {"bytes that wrap around 2^64", 1518500250, 1518500250},
  };
  for (const auto& c : cases) {
    CResultSpreadsheet sheet(host, c.rows, c.columns);
    EXPECT_TRUE(sheet.IsEmpty()) << c.what;
    sheet.SetNumber(0, 0, 1.0);
    sheet.SetText(0, 0, "text");
    sheet.SetIntegerText(0, 0, 7);
    sheet.SetColumnName(0, "name");
    sheet.SetColumnLongName(0, "name");
    sheet.SetRowName(0, "name");
    sheet.SetTitle1("title");
    sheet.HighlightCell(0, 0);
    sheet.HighlightColumn(0);
    sheet.Show();
    EXPECT_EQ(sheet.ShowAndKeep(), nullptr) << c.what;
    EXPECT_EQ(sheet.ShowInDialog(nullptr), nullptr) << c.what;
  }
  EXPECT_TRUE(host.Sheets.empty());
}

TEST_F(ResultSpreadsheetTest, FailedAllocationLeavesItEmpty) {
  const testing::LargeAllocationsFail failing(1000 * 8 * sizeof(char));
  CResultSpreadsheet sheet(host, 1000, 1);
  EXPECT_TRUE(sheet.IsEmpty());
  EXPECT_TRUE(sheet.Cells.empty());
  sheet.Show();
  EXPECT_TRUE(host.Sheets.empty());
}

TEST_F(ResultSpreadsheetTest, CellsOutsideAreIgnored) {
  CResultSpreadsheet sheet(host, 2, 2);
  for (const int row : {-1, 0, 2}) {
    for (const int column : {-1, 0, 2}) {
      if (row == 0 && column == 0) continue;
      sheet.SetNumber(row, column, 5.0);
      sheet.SetText(row, column, "text");
      sheet.HighlightCell(row, column);
    }
    if (row == 0) continue;
    sheet.SetRowName(row, "name");
    sheet.SetColumnName(row, "name");
  }
  sheet.Show();
  for (int cell = 0; cell < 4; ++cell) EXPECT_TRUE(Shown().IsUnwritten(cell % 2, cell / 2));
  EXPECT_EQ(Shown().TextCells, std::string(32, '\0'));
  EXPECT_EQ(Shown().RowNames, std::string(80, '\0'));
  EXPECT_EQ(Shown().ColumnNames, std::string(16, '\0'));
}

TEST_F(ResultSpreadsheetTest, NothingIsShownWhenOutputIsOff) {
  host.Switched = true;
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.Show();
  EXPECT_EQ(sheet.ShowAndKeep(), nullptr);
  EXPECT_EQ(sheet.ShowInDialog(nullptr), nullptr);
  EXPECT_TRUE(host.Sheets.empty());
}

TEST_F(ResultSpreadsheetTest, ShowAndKeepGivesTheDocument) {
  CResultSpreadsheet sheet(host, 1, 1);
  HostDocument* document = sheet.ShowAndKeep();
  ASSERT_NE(document, nullptr);
  document->SetCustomProperty("name", "text");
  EXPECT_EQ(LastSheet(host).Property("name"), "text");
  host.KeepsDocuments = false;
  CResultSpreadsheet other(host, 1, 1);
  EXPECT_EQ(other.ShowAndKeep(), nullptr);
}

TEST_F(ResultSpreadsheetTest, ShowInDialogGivesTheDocumentOfTheDialog) {
  CResultSpreadsheet sheet(host, 1, 1);
  sheet.SetTitle1("grid");
  sheet.SetNumber(0, 0, 2.5);
  host.SetSheetEditor([](SheetContent&) { return true; });
  const HostDocument* document = sheet.ShowInDialog(nullptr);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->NumberAt(0, 0), 2.5);
  EXPECT_TRUE(sheet.IsEmpty());
}

}  // namespace
}  // namespace orv
