#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "AwkwardDocuments.h"
#include "standalone/documents/XlsxSheet.h"

namespace orv {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string Read(const XlsxSheet& sheet, bool isFirst = false) {
  const PieceReader read = sheet.Read(isFirst);
  std::string xml;
  for (std::string piece = read(); !piece.empty(); piece = read()) xml += piece;
  return xml;
}

const SheetContent& ContentOf(const ResultDocument& document) {
  return std::get<SheetContent>(document.Content);
}

TEST(XlsxSheet, HoldsTitlesHeadingsAndCellsOfEachKind) {
  const ResultDocument document =
      Sheet({}, {"karno", "", "<age>"},
            {TextColumn("Level", {"", "1", "_x0041_"}),
             NumberColumn("P value", {0.00001, NoNumber, 0.5}, {true, false, false}),
             NumberColumn("x", {0.1 + 0.2, 1, -std::numeric_limits<double>::infinity()}, {true, false, false})},
            "Name");
  const std::string xml = Read(XlsxSheet({"Title & more", "second"}, ContentOf(document)), true);
  EXPECT_EQ(
      xml.substr(xml.find("<sheetViews>")),
      R"(<sheetViews><sheetView tabSelected="1" workbookViewId="0"><pane xSplit="1" ySplit="4" topLeftCell="B5" )"
      R"(activePane="bottomRight" state="frozen"/><selection pane="bottomRight"/></sheetView></sheetViews>)"
      R"(<sheetFormatPr defaultRowHeight="15"/><cols><col min="1" max="1" width="10" customWidth="1"/>)"
      R"(<col min="2" max="2" width="10" customWidth="1"/><col min="3" max="3" width="15" customWidth="1"/>)"
      R"(<col min="4" max="4" width="15" customWidth="1"/></cols><sheetData>)"
      R"(
<row r="1"><c r="A1" s="20" t="inlineStr"><is><t xml:space="preserve">Title &amp; more</t></is></c></row>
<row r="2"><c r="A2" t="inlineStr"><is><t xml:space="preserve">second</t></is></c></row>
<row r="4"><c r="A4" s="21" t="inlineStr"><is><t xml:space="preserve">Name</t></is></c>)"
      R"(<c r="B4" s="21" t="inlineStr"><is><t xml:space="preserve">Level</t></is></c>)"
      R"(<c r="C4" s="22" t="inlineStr"><is><t xml:space="preserve">P value</t></is></c>)"
      R"(<c r="D4" s="22" t="inlineStr"><is><t xml:space="preserve">x</t></is></c></row>
<row r="5"><c r="A5" s="1" t="inlineStr"><is><t xml:space="preserve">karno</t></is></c>)"
      R"(<c r="C5" s="19"><v>1e-05</v></c><c r="D5" s="13"><v>0.30000000000000004</v></c></row>
<row r="6"><c r="B6" t="inlineStr"><is><t xml:space="preserve">1</t></is></c><c r="D6" s="12"><v>1</v></c></row>
<row r="7"><c r="A7" t="inlineStr"><is><t xml:space="preserve">&lt;age&gt;</t></is></c>)"
      R"(<c r="B7" t="inlineStr"><is><t xml:space="preserve">_x005F_x0041_</t></is></c>)"
      R"(<c r="C7" s="18"><v>0.5</v></c><c r="D7" t="inlineStr"><is><t xml:space="preserve">-inf</t></is></c></row>
</sheetData>
<pageMargins left="0.7" right="0.7" top="0.75" bottom="0.75" header="0.3" footer="0.3"/>)"
      R"(<pageSetup orientation="landscape" fitToHeight="0"/></worksheet>
)");
}

TEST(XlsxSheet, FreezesNothingWithoutHeadings) {
  const ResultDocument summary = VeteranSummary();
  const XlsxSheet sheet({"Goodness of fit"}, ContentOf(summary));
  EXPECT_EQ(sheet.HeadingRow(), 0U);
  EXPECT_THAT(Read(sheet), Not(HasSubstr("<pane")));
  EXPECT_THAT(Read(sheet),
              HasSubstr("<row r=\"3\"><c r=\"A3\" t=\"inlineStr\"><is><t xml:space=\"preserve\">-2 Log L"));
}

TEST(XlsxSheet, TakesNoMoreRowsThanTheFormatHoldsAndGoesOnFromThere) {
  SheetContent content;
  content.RowNames.resize(XlsxMostRows);
  content.Columns.push_back(NumberColumn("x", std::vector<double>(XlsxMostRows, 0.5)));
  const XlsxSheet first({"Residuals", "second"}, content);
  EXPECT_EQ(first.RowsTaken(), XlsxMostRows - 4);
  const XlsxSheet second({"Residuals", "second"}, content, first.RowsTaken());
  EXPECT_EQ(second.RowsTaken(), 4U);
  EXPECT_THAT(Read(second), HasSubstr("<row r=\"8\"><c r=\"A8\" s=\"14\"><v>0.5</v></c></row>\n</sheetData>"));
}

TEST(XlsxSheet, MayBeEmpty) {
  const SheetContent content;
  EXPECT_THAT(Read(XlsxSheet({}, content)), HasSubstr("<sheetData>\n</sheetData>"));
}

}  // namespace
}  // namespace orv
