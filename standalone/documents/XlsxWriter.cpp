// Parts and relations after ECMA-376, part 1. Texts stand in their cells ("inlineStr") instead of a table of shared
// ones, so that the sheets can be written in one pass each.
#include "standalone/documents/XlsxWriter.h"

#include <fmt/format.h>

#include <deque>
#include <limits>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "standalone/documents/ChartSheets.h"
#include "standalone/documents/RunFacts.h"
#include "standalone/documents/ShownTable.h"
#include "standalone/documents/XlsxNames.h"
#include "standalone/documents/XlsxSheet.h"
#include "standalone/documents/XlsxStyles.h"
#include "standalone/documents/XmlText.h"
#include "standalone/documents/ZipArchive.h"

namespace orv {
namespace {

constexpr std::string_view Head = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr std::string_view MainSpace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr std::string_view RelationSpace = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr std::string_view PackageSpace = "http://schemas.openxmlformats.org/package/2006";

SheetContent SheetOfTexts(std::vector<std::string> names, std::vector<std::string> texts) {
  SheetColumn column;
  column.IsText = true;
  column.Numbers.assign(texts.size(), std::numeric_limits<double>::quiet_NaN());
  column.Highlighted.assign(texts.size(), false);
  column.Texts = std::move(texts);
  SheetContent sheet;
  sheet.RowNames = std::move(names);
  sheet.Columns.push_back(std::move(column));
  return sheet;
}

SheetContent SheetOfFacts(const RunReport& report) {
  std::vector<std::string> names;
  std::vector<std::string> texts;
  const std::vector<RunFact> facts = FactsOfRun(report);
  for (const RunFact& fact : facts) {
    names.push_back(fact.Name);
    texts.push_back(fact.Number ? "" : fact.Text);
  }
  SheetContent sheet = SheetOfTexts(std::move(names), std::move(texts));
  for (std::size_t row = 0; row < facts.size(); ++row) {
    if (facts[row].Number) sheet.Columns[0].Numbers[row] = *facts[row].Number;
  }
  return sheet;
}

SheetContent SheetOfLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::vector<std::string> names(lines.size());
  return SheetOfTexts(std::move(names), std::move(lines));
}

struct NamedSheet {
  std::string Name;
  XlsxSheet Sheet;
};

class Workbook {
 public:
  Workbook(const RunReport& report, const ResultDocuments& documents) : m_program(report.Program) {
    Add("Run", {"Cox regression"}, m_made.emplace_back(SheetOfFacts(report)));
    for (const ResultDocument& document : documents) {
      const std::vector<std::string> titles = TitleLines(document.Titles);
      const std::string& name = !document.Name.empty() || titles.empty() ? document.Name : titles[0];
      Add(name, titles, ContentOf(document));
    }
  }

  std::vector<ZipPart> Parts() const {
    std::vector<ZipPart> parts = {
        TextPart("[Content_Types].xml", ContentTypes()),         TextPart("_rels/.rels", PackageRelations()),
        TextPart("docProps/core.xml", CoreProperties()),         TextPart("xl/workbook.xml", BookXml()),
        TextPart("xl/_rels/workbook.xml.rels", BookRelations()), TextPart("xl/styles.xml", XlsxStylesXml())};
    for (std::size_t k = 0; k < m_sheets.size(); ++k) {
      const XlsxSheet& sheet = m_sheets[k].Sheet;
      parts.push_back({fmt::format("xl/worksheets/sheet{}.xml", k + 1),
                       [&sheet, isFirst = k == 0] { return sheet.Read(isFirst); }});
    }
    return parts;
  }

 private:
  const SheetContent& ContentOf(const ResultDocument& document) {
    if (const auto* sheet = std::get_if<SheetContent>(&document.Content)) return *sheet;
    if (const auto* text = std::get_if<TextContent>(&document.Content)) {
      return m_made.emplace_back(SheetOfLines(text->Text));
    }
    return m_made.emplace_back(PointsOfSeries(std::get<ChartContent>(document.Content)));
  }

  void Add(std::string_view name, const std::vector<std::string>& titles, const SheetContent& content) {
    std::size_t row = 0;
    do {
      m_sheets.push_back({m_names.Take(name), XlsxSheet(titles, content, row)});
      row += m_sheets.back().Sheet.RowsTaken();
    } while (row < content.RowNames.size());
  }

  std::string ContentTypes() const {
    constexpr std::string_view Type = "application/vnd.openxmlformats-officedocument.spreadsheetml";
    std::string xml = fmt::format(
        "{}<Types xmlns=\"{}/content-types\">"
        "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
        "<Override PartName=\"/docProps/core.xml\" "
        "ContentType=\"application/vnd.openxmlformats-package.core-properties+xml\"/>"
        "<Override PartName=\"/xl/workbook.xml\" ContentType=\"{}.sheet.main+xml\"/>"
        "<Override PartName=\"/xl/styles.xml\" ContentType=\"{}.styles+xml\"/>",
        Head, PackageSpace, Type, Type);
    for (std::size_t k = 1; k <= m_sheets.size(); ++k) {
      xml +=
          fmt::format("<Override PartName=\"/xl/worksheets/sheet{}.xml\" ContentType=\"{}.worksheet+xml\"/>", k, Type);
    }
    return xml + "</Types>\n";
  }

  static std::string PackageRelations() {
    return fmt::format(
        "{}<Relationships xmlns=\"{}/relationships\">"
        "<Relationship Id=\"rId1\" Type=\"{}/officeDocument\" Target=\"xl/workbook.xml\"/>"
        "<Relationship Id=\"rId2\" Type=\"{}/relationships/metadata/core-properties\" Target=\"docProps/core.xml\"/>"
        "</Relationships>\n",
        Head, PackageSpace, RelationSpace, PackageSpace);
  }

  std::string CoreProperties() const {
    return fmt::format(
        "{}<cp:coreProperties xmlns:cp=\"{}/metadata/core-properties\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">"
        "<dc:title>Cox regression</dc:title><dc:creator>{}</dc:creator></cp:coreProperties>\n",
        Head, PackageSpace, XmlText(m_program));
  }

  std::string BookXml() const {
    std::string sheets;
    std::string names;
    for (std::size_t k = 0; k < m_sheets.size(); ++k) {
      const auto& [name, sheet] = m_sheets[k];
      sheets += fmt::format("<sheet name=\"{}\" sheetId=\"{}\" r:id=\"rId{}\"/>", XmlText(name), k + 1, k + 1);
      if (sheet.HeadingRow() == 0) continue;
      names += fmt::format("<definedName name=\"_xlnm.Print_Titles\" localSheetId=\"{}\">{}!${}:${}</definedName>", k,
                           XmlText(InQuotes(name)), sheet.HeadingRow(), sheet.HeadingRow());
    }
    return fmt::format(
        "{}<workbook xmlns=\"{}\" "
        "xmlns:r=\"{}\"><bookViews><workbookView/></bookViews><sheets>{}</sheets>{}</workbook>\n",
        Head, MainSpace, RelationSpace, sheets,
        names.empty() ? "" : fmt::format("<definedNames>{}</definedNames>", names));
  }

  // As a formula names a sheet.
  static std::string InQuotes(const std::string& name) {
    std::string quoted = "'";
    for (const char sign : name) quoted += sign == '\'' ? "''" : std::string(1, sign);
    return quoted + "'";
  }

  std::string BookRelations() const {
    std::string xml = fmt::format("{}<Relationships xmlns=\"{}/relationships\">", Head, PackageSpace);
    for (std::size_t k = 1; k <= m_sheets.size(); ++k) {
      xml += fmt::format("<Relationship Id=\"rId{}\" Type=\"{}/worksheet\" Target=\"worksheets/sheet{}.xml\"/>", k,
                         RelationSpace, k);
    }
    return xml + fmt::format("<Relationship Id=\"rId{}\" Type=\"{}/styles\" Target=\"styles.xml\"/></Relationships>\n",
                             m_sheets.size() + 1, RelationSpace);
  }

  std::string m_program;
  XlsxSheetNames m_names;
  std::deque<SheetContent> m_made;  // contents that no document holds; a deque never moves them
  std::deque<NamedSheet> m_sheets;
};

}  // namespace

std::string WriteXlsx(const RunReport& report, const ResultDocuments& documents, const WriteOptions& /*options*/) {
  const Workbook workbook(report, documents);
  return PackZip(workbook.Parts());
}

std::string WhyNotXlsx(const ResultDocuments& documents) {
  for (const ResultDocument& document : documents) {
    const auto* sheet = std::get_if<SheetContent>(&document.Content);
    if (sheet == nullptr || sheet->Columns.size() < XlsxMostColumns) continue;
    return fmt::format(
        "\"{}\" has {} columns with the row names, and a sheet of this form holds {}. Write a folder of CSV files "
        "(results/) or .json.",
        document.Name, sheet->Columns.size() + 1, XlsxMostColumns);
  }
  return {};
}

}  // namespace orv
