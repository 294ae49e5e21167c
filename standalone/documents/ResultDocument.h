// ResultDocument: what the host keeps of a result that the module handed over, free of any look.
//
// A document is a sheet, a text or a chart. It holds numbers with all their digits; a writer decides how it looks.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace orv {

enum class SheetCellKind { Missing, Number, Text };

// One column of a sheet. `Numbers` and `Highlighted` have one element per row.
struct SheetColumn {
  std::string Name;                // short name, at most 8 characters unless it stood for a longer one
  std::string LongName;            // empty when the column has only its short name
  bool IsText = false;             // its cells are texts
  std::vector<double> Numbers;     // NaN where missing
  std::vector<std::string> Texts;  // one element per row when IsText, else empty; an empty text is missing
  std::vector<bool> Highlighted;   // cells that deserve attention, e.g. those of a significant effect

  // What heads the column: the long name when there is one.
  const std::string& Title() const { return LongName.empty() ? Name : LongName; }
  // `row` counts from 0. A column of texts may hold a number where no text was written.
  SheetCellKind KindOfCell(std::size_t row) const;
};

struct SheetContent {
  std::string ShortName;              // name of the corner cell, above the row names
  std::vector<std::string> RowNames;  // one per row; its size is the number of rows
  std::vector<SheetColumn> Columns;

  // What heads a column, from 0, in a table: its title, with the short name behind where columns share a long name.
  std::string Heading(std::size_t column) const;
};

struct TextContent {
  std::string Text;
};

// One series of a chart: the points (X[i], Y[i]); NaN where missing.
struct ChartSeries {
  std::string Name;
  std::string Role;  // what the series shows, e.g. "value"
  std::vector<double> X;
  std::vector<double> Y;
};

struct ChartContent {
  std::string XTitle;
  std::string YTitle;
  std::vector<ChartSeries> Series;
};

struct ResultDocument {
  std::string Name;                               // the result's name on the command line, e.g. "estimates"
  std::vector<std::string> Titles;                // none of them empty; a title may hold line feeds
  std::map<std::string, std::string> Properties;  // custom properties, in the order of their names
  std::variant<SheetContent, TextContent, ChartContent> Content;
};

}  // namespace orv
