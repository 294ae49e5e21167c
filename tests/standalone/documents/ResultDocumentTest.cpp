#include <gtest/gtest.h>

#include "SampleDocuments.h"
#include "standalone/documents/ResultDocument.h"
#include "standalone/documents/ResultDocuments.h"

namespace orv {
namespace {

TEST(SheetContent, ColumnsThatShareALongNameShowTheirShortOnesToo) {
  SheetContent sheet;
  for (const auto& [name, longName] : {std::pair{"Exp", ""}, {"Lower", "Exp"}, {"Upper", "Exp"}, {"df", ""}}) {
    SheetColumn column;
    column.Name = name;
    column.LongName = longName;
    sheet.Columns.push_back(column);
  }
  const char* const expected[] = {"Exp", "Exp Lower", "Exp Upper", "df"};
  for (std::size_t k = 0; k < sheet.Columns.size(); ++k) EXPECT_EQ(sheet.Heading(k), expected[k]);
}

TEST(SheetColumn, IsHeadedByItsLongNameWhenItHasOne) {
  SheetColumn column;
  column.Name = "P value";
  EXPECT_EQ(column.Title(), "P value");
  column.LongName = "P value of the Wald test";
  EXPECT_EQ(column.Title(), "P value of the Wald test");
}

TEST(SheetColumn, TellsMissingCellsFromNumbersAndTexts) {
  const SheetColumn numbers = NumberColumn("Wald", {0.0, NoNumber});
  EXPECT_EQ(numbers.KindOfCell(0), SheetCellKind::Number);
  EXPECT_EQ(numbers.KindOfCell(1), SheetCellKind::Missing);
  SheetColumn texts = TextColumn("Level", {"male", "", ""});
  texts.Numbers[2] = 7.0;
  EXPECT_EQ(texts.KindOfCell(0), SheetCellKind::Text);
  EXPECT_EQ(texts.KindOfCell(1), SheetCellKind::Missing);
  EXPECT_EQ(texts.KindOfCell(2), SheetCellKind::Number);
}

TEST(ResultDocuments, KeepTheirOrderAndTheirPlaces) {
  ResultDocuments documents;
  EXPECT_TRUE(documents.IsEmpty());
  EXPECT_EQ(documents.Last(), nullptr);
  ResultDocument& first = documents.Add(VeteranSummary());
  for (int i = 0; i < 1000; ++i) documents.Add(Sheet({std::to_string(i)}, {}, {}));
  first.Properties["Complete"] = "128";  // the reference has outlived the growth of the store
  EXPECT_EQ(documents[0].Properties.at("Complete"), "128");
  EXPECT_EQ(documents.Size(), 1001U);
  EXPECT_EQ(documents[1].Titles.front(), "0");
  EXPECT_EQ(documents.Last()->Titles.front(), "999");
  documents.Clear();
  EXPECT_TRUE(documents.IsEmpty());
}

}  // namespace
}  // namespace orv
