#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/XlsxSheet.h"
#include "standalone/documents/XlsxWriter.h"
#include "support/ZipListing.h"

namespace orv {
namespace {

using ::testing::HasSubstr;

// The rows of each sheet, without what stands around them.
std::string RowsOf(const std::string& listing, int sheet) {
  const std::size_t at = listing.find("== xl/worksheets/sheet" + std::to_string(sheet) + ".xml");
  if (at == std::string::npos) return "no such sheet";
  const std::size_t first = listing.find("<sheetData>\n", at) + std::string("<sheetData>\n").size();
  return listing.substr(first, listing.find("</sheetData>", at) - first);
}

TEST(WriteXlsx, BeginsWithTheFactsOfTheRun) {
  const std::string listing = orv::testing::ListZip(WriteXlsx(FullReport(), {}, {}));
  const std::string rows = RowsOf(listing, 1);
  EXPECT_THAT(rows,
              HasSubstr(R"(<row r="1"><c r="A1" s="20" t="inlineStr"><is><t xml:space="preserve">Cox regression)"));
  EXPECT_THAT(rows,
              HasSubstr(R"(<row r="4"><c r="A4" t="inlineStr"><is><t xml:space="preserve">Cases read</t></is></c>)"
                        R"(<c r="B4" s="2"><v>228</v></c></row>)"));
  EXPECT_THAT(rows, HasSubstr("<t xml:space=\"preserve\">First line.\nSecond &lt;line&gt;.</t>"));
}

TEST(WriteXlsx, GivesEachDocumentASheetUnderItsName) {
  ResultDocuments documents = AwkwardDocuments();
  for (int k = 0; k < 2; ++k) documents.Add(VeteranEstimates()).Name = "est<i>mates";
  const std::string listing = orv::testing::ListZip(WriteXlsx({}, documents, {}));
  EXPECT_THAT(listing,
              HasSubstr(R"(<sheets><sheet name="Run" sheetId="1" r:id="rId1"/>)"
                        R"(<sheet name="Estimates &amp; &lt;tests&gt;" sheetId="2" r:id="rId2"/>)"
                        R"(<sheet name="c" sheetId="3" r:id="rId3"/><sheet name="plots" sheetId="4" r:id="rId4"/>)"
                        R"(<sheet name="est&lt;i&gt;mates" sheetId="5" r:id="rId5"/>)"
                        R"x(<sheet name="est&lt;i&gt;mates (2)" sheetId="6" r:id="rId6"/></sheets>)x"));
  EXPECT_THAT(listing, HasSubstr(R"(<definedName name="_xlnm.Print_Titles" localSheetId="4">)"
                                 R"('est&lt;i&gt;mates'!$3:$3</definedName>)"));
  EXPECT_THAT(RowsOf(listing, 3), HasSubstr("<t xml:space=\"preserve\">\tputs(&quot;```&quot;);</t>"))
      << "a line of code";
  EXPECT_THAT(RowsOf(listing, 4),
              HasSubstr("<c r=\"B5\" s=\"2\"><v>5</v></c><c r=\"C5\" s=\"12\"><v>0.5</v></c></row>"))
      << "a point of a curve";
  EXPECT_THAT(RowsOf(listing, 6), HasSubstr("<v>-0.0328153261941662</v>"));
}

TEST(WriteXlsx, GivesTheSameBytesAgain) {
  EXPECT_TRUE(WriteXlsx(FullReport(), AwkwardDocuments(), {}) == WriteXlsx(FullReport(), AwkwardDocuments(), {}));
}

TEST(WriteXlsx, ContinuesASheetThatIsTooLongOnAnother) {
  ResultDocuments documents;
  documents
      .Add(Sheet({}, std::vector<std::string>(XlsxMostRows), {NumberColumn("x", std::vector<double>(XlsxMostRows, 1))}))
      .Name = "residuals";
  const std::string listing = orv::testing::ListZip(WriteXlsx({}, documents, {}));
  EXPECT_TRUE(listing.find(R"x(name="residuals (2)" sheetId="3")x") != std::string::npos);
  EXPECT_EQ(RowsOf(listing, 3),
            R"(<row r="1"><c r="A1" s="22" t="inlineStr"><is><t xml:space="preserve">x</t></is></c></row>
<row r="2"><c r="A2" s="2"><v>1</v></c></row>
)");
}

TEST(WhyNotXlsx, RefusesMoreColumnsThanTheFormatHolds) {
  ResultDocuments documents;
  std::vector<SheetColumn> columns(XlsxMostColumns - 1, NumberColumn("x", {1}));
  documents.Add(Sheet({}, {"a"}, columns)).Name = "covariance";
  EXPECT_EQ(WhyNotXlsx(documents), "");
  columns.push_back(NumberColumn("x", {1}));
  documents.Add(Sheet({}, {"a"}, columns)).Name = "correlation";
  EXPECT_EQ(
      WhyNotXlsx(documents),
      "\"correlation\" has 16385 columns with the row names, and a sheet of this form holds 16384. Write a folder "
      "of CSV files (results/) or .json.");
}

}  // namespace
}  // namespace orv
