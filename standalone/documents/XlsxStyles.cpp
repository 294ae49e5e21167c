#include "standalone/documents/XlsxStyles.h"

#include <fmt/format.h>

#include <string_view>

namespace orv {
namespace {

constexpr int FirstOwnFormat = 164;  // the numbers below are those of the format itself
constexpr std::string_view NumberFormats[] = {"0",        "0.0",       "0.00",
                                              "0.000",    "0.0000",    "0.00000",
                                              "0.000000", "0.000E+00", "[&lt;0.0001]&quot;&lt;.0001&quot;;0.0000"};

constexpr std::string_view Fonts =
    "<fonts count=\"3\">"
    "<font><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/></font>"
    "<font><b/><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/></font>"
    "<font><b/><sz val=\"14\"/><name val=\"Calibri\"/><family val=\"2\"/></font>"
    "</fonts>";
constexpr std::string_view FillsAndBorders =
    "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
    "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
    "<borders count=\"2\"><border><left/><right/><top/><bottom/><diagonal/></border>"
    "<border><left/><right/><top/><bottom style=\"thin\"><color auto=\"1\"/></bottom><diagonal/></border></borders>";

constexpr int PlainFont = 0;
constexpr int BoldFont = 1;
constexpr int TitleFont = 2;

std::string CellFormat(int numberFormat, int font) {
  return fmt::format("<xf numFmtId=\"{}\" fontId=\"{}\" fillId=\"0\" borderId=\"0\" xfId=\"0\"{}{}/>", numberFormat,
                     font, numberFormat != 0 ? " applyNumberFormat=\"1\"" : "", font != 0 ? " applyFont=\"1\"" : "");
}

std::string HeadingFormat(std::string_view side) {
  return fmt::format(
      "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"1\" xfId=\"0\" applyBorder=\"1\" applyAlignment=\"1\">"
      "<alignment horizontal=\"{}\" vertical=\"bottom\" wrapText=\"1\"/></xf>",
      side);
}

XlsxStyle InBold(XlsxStyle style, bool isBold) {
  return static_cast<XlsxStyle>(static_cast<int>(style) + (isBold ? 1 : 0));
}

}  // namespace

std::string XlsxStylesXml() {
  std::string numberFormats;
  std::string cellFormats = CellFormat(0, PlainFont) + CellFormat(0, BoldFont);
  int number = FirstOwnFormat;
  for (const std::string_view format : NumberFormats) {
    numberFormats += fmt::format("<numFmt numFmtId=\"{}\" formatCode=\"{}\"/>", number, format);
    cellFormats += CellFormat(number, PlainFont) + CellFormat(number, BoldFont);
    ++number;
  }
  cellFormats += CellFormat(0, TitleFont) + HeadingFormat("left") + HeadingFormat("right");
  constexpr int CellFormats = 2 + 2 * static_cast<int>(std::size(NumberFormats)) + 3;
  static_assert(CellFormats == static_cast<int>(XlsxStyle::NumberHeading) + 1);
  return fmt::format(
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
      "<numFmts count=\"{}\">{}</numFmts>{}{}"
      "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs>"
      "<cellXfs count=\"{}\">{}</cellXfs>"
      "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles></styleSheet>\n",
      std::size(NumberFormats), numberFormats, Fonts, FillsAndBorders, CellFormats, cellFormats);
}

XlsxNumberStyles::XlsxNumberStyles(const SheetColumn& column)
    : m_isPValue(!column.IsText && IsPValueTitle(column.Title())), m_shape(ShapeOfNumberColumn(column.Numbers)) {}

XlsxStyle XlsxNumberStyles::Of(double number, bool isBold) const {
  if (m_isPValue) return InBold(XlsxStyle::PValue, isBold);
  if (m_shape.NeedsExponent(number)) return InBold(XlsxStyle::Exponent, isBold);
  return InBold(static_cast<XlsxStyle>(static_cast<int>(XlsxStyle::Decimals0) + 2 * m_shape.Decimals), isBold);
}

}  // namespace orv
