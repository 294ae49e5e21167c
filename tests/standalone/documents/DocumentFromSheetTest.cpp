#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "standalone/documents/DocumentFromSheet.h"
#include "standalone/documents/NameRegistry.h"

namespace orv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string AsItIs(const std::string& text) {
  return text;
}

// The arrays of a sheet as the module fills them: fields without terminators, cells column by column, all bytes of a
// missing cell 0xFF.
class ModuleSheet {
 public:
  ModuleSheet(int rows, int columns) : m_cells(Count(rows, columns)), m_texts(m_cells.size() * Width) {
    m_sheet.RowCount = rows;
    m_sheet.ColumnCount = columns;
    m_sheet.RowNameWidth = RowNameWidth;
    m_sheet.ColumnNameWidth = Width;
    std::memset(m_cells.data(), 0xFF, m_cells.size() * sizeof(double));
    m_isText.resize(Count(columns, 1));
    m_names.resize(m_isText.size() * Width);
    m_longNames.resize(m_names.size());
    m_rowNames.resize(Count(rows, RowNameWidth));
    m_bits.resize(16 + (m_cells.size() + 7) / 8);
  }

  void SetNumber(int row, int column, double value) { m_cells[Cell(row, column)] = value; }
  void SetText(int row, int column, const std::string& text) {
    Put(m_texts, Cell(row, column), Width, text);
    m_isText[Count(column, 1)] = 156;
  }
  void SetColumnName(int column, const std::string& text) { Put(m_names, Count(column, 1), Width, text); }
  void SetColumnLongName(int column, const std::string& text) { Put(m_longNames, Count(column, 1), Width, text); }
  void SetRowName(int row, const std::string& text) { Put(m_rowNames, Count(row, 1), RowNameWidth, text); }
  void SetBitsByte(std::size_t byte, unsigned char value) { m_bits[byte] = value; }
  void MarkColumn(int column, unsigned char mark) { m_isText[Count(column, 1)] = mark; }

  SheetArguments Arguments() {
    m_sheet.Cells = m_cells.data();
    m_sheet.TextCells = m_texts.data();
    m_sheet.ColumnIsText = m_isText.data();
    m_sheet.ColumnNames = m_names.data();
    m_sheet.ColumnLongNames = m_longNames.data();
    m_sheet.RowNames = m_rowNames.data();
    m_sheet.HighlightBits = m_bits.data();
    return m_sheet;
  }

 private:
  static constexpr int Width = 8;
  static constexpr int RowNameWidth = 10;

  static std::size_t Count(int a, int b) { return static_cast<std::size_t>(a) * static_cast<std::size_t>(b); }
  std::size_t Cell(int row, int column) const { return Count(column, m_sheet.RowCount) + Count(row, 1); }
  static void Put(std::vector<char>& fields, std::size_t index, std::size_t width, const std::string& text) {
    ASSERT_LE(text.size(), width);
    std::copy(text.begin(), text.end(), fields.begin() + static_cast<std::ptrdiff_t>(index * width));
  }

  SheetArguments m_sheet;
  std::vector<double> m_cells;
  std::vector<char> m_texts, m_names, m_longNames, m_rowNames;
  std::vector<unsigned char> m_isText, m_bits;
};

const SheetContent& ContentOf(const ResultDocument& document) {
  return std::get<SheetContent>(document.Content);
}

TEST(DocumentFromSheet, ReadsCellsColumnByColumn) {
  ModuleSheet sheet(2, 3);
  for (int column = 0; column < 3; ++column) {
    for (int row = 0; row < 2; ++row) sheet.SetNumber(row, column, 10 * column + row);
  }
  const ResultDocument document = DocumentFromSheet(sheet.Arguments(), AsItIs);
  ASSERT_EQ(ContentOf(document).Columns.size(), 3U);
  EXPECT_THAT(ContentOf(document).Columns[0].Numbers, ElementsAre(0, 1));
  EXPECT_THAT(ContentOf(document).Columns[1].Numbers, ElementsAre(10, 11));
  EXPECT_THAT(ContentOf(document).Columns[2].Numbers, ElementsAre(20, 21));
}

TEST(DocumentFromSheet, TakesCellsWithoutANumberAsMissing) {
  ModuleSheet sheet(4, 1);
  sheet.SetNumber(1, 0, std::numeric_limits<double>::quiet_NaN());
  sheet.SetNumber(2, 0, 0.0);
  sheet.SetNumber(3, 0, std::numeric_limits<double>::infinity());
  const ResultDocument document = DocumentFromSheet(sheet.Arguments(), AsItIs);
  const SheetColumn& column = ContentOf(document).Columns[0];
  EXPECT_EQ(column.KindOfCell(0), SheetCellKind::Missing) << "never written";
  EXPECT_EQ(column.KindOfCell(1), SheetCellKind::Missing) << "another NaN";
  EXPECT_EQ(column.KindOfCell(2), SheetCellKind::Number);
  EXPECT_EQ(column.KindOfCell(3), SheetCellKind::Number);
}

TEST(DocumentFromSheet, ReadsFieldsThatAreFull) {
  ModuleSheet sheet(2, 2);
  sheet.SetColumnName(0, "12345678");
  sheet.SetColumnName(1, "abc");
  sheet.SetColumnLongName(1, "ABCDEFGH");
  sheet.SetRowName(0, "0123456789");
  sheet.SetRowName(1, "row");
  sheet.SetText(0, 1, "textfull");
  sheet.SetText(1, 1, "t");
  const ResultDocument document = DocumentFromSheet(sheet.Arguments(), AsItIs);
  const SheetContent& content = ContentOf(document);
  EXPECT_THAT(content.RowNames, ElementsAre("0123456789", "row"));
  EXPECT_EQ(content.Columns[0].Title(), "12345678");
  EXPECT_FALSE(content.Columns[0].IsText);
  EXPECT_EQ(content.Columns[1].Name, "abc");
  EXPECT_EQ(content.Columns[1].Title(), "ABCDEFGH");
  EXPECT_TRUE(content.Columns[1].IsText);
  EXPECT_THAT(content.Columns[1].Texts, ElementsAre("textfull", "t"));
}

TEST(DocumentFromSheet, TakesOnlyTheMarkForAColumnOfTexts) {
  ModuleSheet sheet(1, 2);
  sheet.SetText(0, 0, "text");
  sheet.MarkColumn(0, 1);
  sheet.SetText(0, 1, "text");
  const ResultDocument document = DocumentFromSheet(sheet.Arguments(), AsItIs);
  EXPECT_FALSE(ContentOf(document).Columns[0].IsText);
  EXPECT_TRUE(ContentOf(document).Columns[1].IsText);
}

TEST(DocumentFromSheet, ReadsHighlightBitsLowestFirstAfterTheHead) {
  ModuleSheet sheet(3, 4);
  for (std::size_t byte = 0; byte < 16; ++byte) sheet.SetBitsByte(byte, 0xFF);  // the head holds no bits
  sheet.SetBitsByte(16, 0b10000001);                                            // cells 0 and 7
  sheet.SetBitsByte(17, 0b00001010);                                            // cells 9 and 11
  const ResultDocument document = DocumentFromSheet(sheet.Arguments(), AsItIs);
  const SheetContent& content = ContentOf(document);
  EXPECT_THAT(content.Columns[0].Highlighted, ElementsAre(true, false, false));
  EXPECT_THAT(content.Columns[1].Highlighted, ElementsAre(false, false, false));
  EXPECT_THAT(content.Columns[2].Highlighted, ElementsAre(false, true, false));
  EXPECT_THAT(content.Columns[3].Highlighted, ElementsAre(true, false, true));
}

TEST(DocumentFromSheet, ShowsLongNamesEverywhere) {
  NameRegistry names;
  ModuleSheet sheet(1, 1);
  sheet.SetColumnName(0, names.Get8CharHash("short name of the column"));
  sheet.SetColumnLongName(0, names.Get8CharHash("Parameter Estimate"));
  sheet.SetRowName(0, names.Get8CharHash("treatment*celltype"));
  sheet.SetText(0, 0, names.Get8CharHash("standard chemotherapy"));
  SheetArguments arguments = sheet.Arguments();
  const std::string title = names.Get8CharHash("the title");
  const std::string corner = names.Get8CharHash("the corner cell");
  arguments.Title1 = title.c_str();
  arguments.ShortName = corner.c_str();
  const ResultDocument document =
      DocumentFromSheet(arguments, [&](const std::string& text) { return names.Expand(text); });
  const SheetContent& content = ContentOf(document);
  EXPECT_EQ(content.Columns[0].Name, "short name of the column");
  EXPECT_EQ(content.Columns[0].LongName, "Parameter Estimate");
  EXPECT_THAT(content.RowNames, ElementsAre("treatment*celltype"));
  EXPECT_THAT(content.Columns[0].Texts, ElementsAre("standard chemotherapy"));
  EXPECT_THAT(document.Titles, ElementsAre("the title"));
  EXPECT_EQ(content.ShortName, "the corner cell");
}

TEST(DocumentFromSheet, LeavesEmptyTitlesOutAndKeepsLineFeeds) {
  ModuleSheet sheet(1, 1);
  SheetArguments arguments = sheet.Arguments();
  const std::string fullTitle(80, 'x');
  char fullField[80];
  std::copy(fullTitle.begin(), fullTitle.end(), fullField);
  arguments.Title1 = "Parameter Estimates\n * denotes fixed";
  arguments.Title2 = "";
  arguments.Title3 = fullField;
  const ResultDocument document = DocumentFromSheet(arguments, AsItIs);
  EXPECT_THAT(document.Titles, ElementsAre("Parameter Estimates\n * denotes fixed", fullTitle));
}

TEST(DocumentFromSheet, ReadsAtMostTwelveBytesOfTheShortName) {
  ModuleSheet sheet(1, 1);
  SheetArguments arguments = sheet.Arguments();
  const char shortName[] = {'T', 'o', 't', 'a', 'l', ' ', 'n', 'u', 'm', 'b', 'e', 'r', 'X'};
  arguments.ShortName = shortName;
  EXPECT_EQ(ContentOf(DocumentFromSheet(arguments, AsItIs)).ShortName, "Total number");
}

TEST(DocumentFromSheet, DropsTheFragmentOfACharacterThatItsFieldCut) {
  ModuleSheet sheet(1, 1);
  sheet.SetColumnName(0, "1234567\xC3");    // full: the second byte of the character is lost
  sheet.SetRowName(0, "12345678\xC3\xA9");  // full, but whole
  const ResultDocument document = DocumentFromSheet(sheet.Arguments(), AsItIs);
  EXPECT_EQ(ContentOf(document).Columns[0].Name, "1234567");
  EXPECT_THAT(ContentOf(document).RowNames, ElementsAre("12345678\xC3\xA9"));
}

TEST(DocumentFromSheet, TakesNullArraysAsNeverWritten) {
  SheetArguments sheet;
  sheet.RowCount = 1;
  sheet.ColumnCount = 1;
  sheet.RowNameWidth = 8;
  sheet.ColumnNameWidth = 8;
  const ResultDocument document = DocumentFromSheet(sheet, AsItIs);
  const SheetContent& content = ContentOf(document);
  EXPECT_THAT(document.Titles, IsEmpty());
  EXPECT_THAT(content.RowNames, ElementsAre(""));
  EXPECT_EQ(content.Columns[0].KindOfCell(0), SheetCellKind::Missing);
  EXPECT_THAT(content.Columns[0].Highlighted, ElementsAre(false));
}

TEST(DocumentFromSheet, MakesAnEmptySheetOfSizesBelowOne) {
  struct {
    int rows, columns;
  } const cases[] = {{0, 3}, {3, 0}, {-1, 2}, {2, -1}};
  for (const auto& c : cases) {
    SheetArguments sheet;
    sheet.RowCount = c.rows;
    sheet.ColumnCount = c.columns;
    sheet.Title1 = "empty";
    const ResultDocument document = DocumentFromSheet(sheet, AsItIs);
    EXPECT_THAT(document.Titles, ElementsAre("empty")) << c.rows << " by " << c.columns;
    EXPECT_THAT(ContentOf(document).RowNames, IsEmpty()) << c.rows << " by " << c.columns;
    EXPECT_THAT(ContentOf(document).Columns, IsEmpty()) << c.rows << " by " << c.columns;
  }
}

}  // namespace
}  // namespace orv
