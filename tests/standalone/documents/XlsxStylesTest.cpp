#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/XlsxStyles.h"

namespace orv {
namespace {

// The number format of a style, as the part with the styles says.
std::string FormatCode(XlsxStyle style) {
  const std::string xml = XlsxStylesXml();
  std::size_t at = xml.find("<cellXfs");
  for (int k = 0; k <= static_cast<int>(style); ++k) at = xml.find("<xf ", at + 1);
  const std::size_t idAt = at + std::string("<xf numFmtId=\"").size();
  const std::string id = xml.substr(idAt, xml.find('"', idAt) - idAt);
  const std::string head = "<numFmt numFmtId=\"" + id + "\" formatCode=\"";
  const std::size_t codeAt = xml.find(head);
  if (codeAt == std::string::npos) return "General";
  return xml.substr(codeAt + head.size(), xml.find("\"/>", codeAt) - codeAt - head.size());
}

TEST(XlsxNumberStyles, ShowTheDecimalsOfTheTextForm) {
  struct {
    const char* what;
    SheetColumn column;
    double number;
    const char* format;
  } const cases[] = {
      {"whole numbers", NumberColumn("df", {1, 2, 1e12}), 2, "0"},
      {"six digits of the largest", NumberColumn("x", {505.449, 474.5}), 505.449, "0.000"},
      {"a number among them that is small", NumberColumn("x", {0.5, 1e-7}), 1e-7, "0.000E+00"},
      {"a number beside a small one", NumberColumn("x", {0.5, 1e-7}), 0.5, "0.000000"},
      {"zero", NumberColumn("x", {0.5, 0}), 0, "0.000000"},
      {"p values", NumberColumn("P value", {0.5, 1e-7}), 1e-7, "[&lt;0.0001]&quot;&lt;.0001&quot;;0.0000"},
      {"nothing but missing cells", NumberColumn("x", {NoNumber}), 1, "0"},
  };
  for (const auto& c : cases) {
    const XlsxNumberStyles styles(c.column);
    EXPECT_EQ(FormatCode(styles.Of(c.number, false)), c.format) << c.what;
    EXPECT_EQ(FormatCode(styles.Of(c.number, true)), c.format) << c.what;
    EXPECT_NE(styles.Of(c.number, true), styles.Of(c.number, false)) << c.what;
  }
}

TEST(XlsxStyles, SetTheBoldOnesInABoldFont) {
  const std::string xml = XlsxStylesXml();
  std::size_t at = xml.find("<cellXfs");
  for (int style = 0; style < static_cast<int>(XlsxStyle::Title); ++style) {
    at = xml.find("<xf ", at + 1);
    const std::string format = xml.substr(at, xml.find("/>", at) - at);
    EXPECT_EQ(format.find("fontId=\"1\"") != std::string::npos, style % 2 == 1) << format;
  }
}

}  // namespace
}  // namespace orv
