#include "standalone/documents/TableLayout.h"

#include <algorithm>

#include "standalone/documents/DisplayText.h"

namespace orv {
namespace {

constexpr std::size_t MaxHeadingLines = 3;
constexpr int UnbrokenWidth = 8;  // lines are not broken below it, e.g. "P value" over short texts

// A piece of a title that stays on one line, and whether a blank separates it from the piece before.
struct TitlePiece {
  std::string Text;
  bool AfterBlank;
};

std::vector<TitlePiece> PiecesOf(std::string_view title) {
  std::vector<TitlePiece> pieces;
  bool afterBlank = false;
  std::string piece;
  const auto finish = [&] {
    if (!piece.empty()) pieces.push_back({piece, afterBlank});
    piece.clear();
  };
  for (const char character : title) {
    if (character == ' ') {
      finish();
      afterBlank = true;
      continue;
    }
    piece += character;
    if (character == '*') {
      finish();
      afterBlank = false;
    }
  }
  finish();
  return pieces;
}

// Fills lines of the given width from the top.
std::vector<std::string> FillLines(const std::vector<TitlePiece>& pieces, int width) {
  std::vector<std::string> lines;
  for (const TitlePiece& piece : pieces) {
    if (!lines.empty()) {
      const std::string joined = lines.back() + (piece.AfterBlank ? " " : "") + piece.Text;
      if (DisplayWidth(joined) <= width) {
        lines.back() = joined;
        continue;
      }
    }
    lines.push_back(piece.Text);
  }
  return lines;
}

bool AreLowerAndUpper(std::string title, const std::string& next) {
  constexpr std::string_view Lower = "Lower";
  const std::size_t at = title.find(Lower);
  return at != std::string::npos && title.replace(at, Lower.size(), "Upper") == next;
}

}  // namespace

ColumnHeading MakeHeading(const TableColumn& column) {
  ColumnHeading heading;
  for (const std::string& text : column.Texts) heading.Width = std::max(heading.Width, DisplayWidth(text));
  const std::vector<TitlePiece> pieces = PiecesOf(column.Title);
  int lineWidth = std::max(heading.Width, UnbrokenWidth);
  for (const TitlePiece& piece : pieces) lineWidth = std::max(lineWidth, DisplayWidth(piece.Text));
  heading.Lines = FillLines(pieces, lineWidth);
  while (heading.Lines.size() > MaxHeadingLines) heading.Lines = FillLines(pieces, ++lineWidth);
  for (const std::string& line : heading.Lines) heading.Width = std::max(heading.Width, DisplayWidth(line));
  return heading;
}

int WidthOfColumns(const std::vector<ColumnHeading>& headings, std::size_t first, std::size_t last) {
  int width = 0;
  for (std::size_t column = first; column <= last && column < headings.size(); ++column) {
    width += headings[column].Width + (column > 0 ? ColumnGap : 0);
  }
  return width;
}

std::vector<ColumnBlock> SplitIntoBlocks(const std::vector<TableColumn>& columns,
                                         const std::vector<ColumnHeading>& headings,
                                         std::size_t repeated,
                                         int width) {
  const int room = width - (repeated > 0 ? WidthOfColumns(headings, 0, repeated - 1) : 0);
  std::vector<ColumnBlock> blocks;
  for (std::size_t first = repeated; first < columns.size();) {
    const bool startsPair =
        first + 1 < columns.size() && AreLowerAndUpper(columns[first].Title, columns[first + 1].Title);
    const std::size_t pairLast = first + (startsPair ? 1 : 0);
    const std::size_t last = WidthOfColumns(headings, first, pairLast) <= room ? pairLast : first;
    if (!blocks.empty() && WidthOfColumns(headings, blocks.back().First, last) <= room) {
      blocks.back().Last = last;
    } else {
      blocks.push_back({first, last});
    }
    first = last + 1;
  }
  return blocks;
}

std::vector<std::size_t> ColumnsOfBlock(std::size_t repeated, const ColumnBlock& block) {
  std::vector<std::size_t> columns;
  for (std::size_t column = 0; column < repeated; ++column) columns.push_back(column);
  for (std::size_t column = block.First; column <= block.Last; ++column) columns.push_back(column);
  return columns;
}

}  // namespace orv
