#include "standalone/documents/DisplayText.h"

#include <algorithm>
#include <iterator>

#include "standalone/documents/Utf8.h"

namespace orv {
namespace {

struct CodePointRange {
  char32_t First;
  char32_t Last;
};

// Ranges stand in ascending order. They are coarse: a table may be off by a column for rare scripts.
constexpr CodePointRange CombiningMarks[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},
                                             {0x064B, 0x065F}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF},
                                             {0x1DC0, 0x1DFF}, {0x200B, 0x200D}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F},
                                             {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}};

constexpr CodePointRange WideCharacters[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},  {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},  {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

constexpr CodePointRange ControlCharacters[] = {{0x0000, 0x001F},
                                                {0x007F, 0x009F},
                                                {0x200E, 0x200F},
                                                {0x2028, 0x202E},
                                                {0x2066, 0x2069}};

template <std::size_t Count>
bool IsIn(const CodePointRange (&ranges)[Count], char32_t codePoint) {
  const auto* const range = std::find_if(std::begin(ranges), std::end(ranges),
                                         [&](const CodePointRange& candidate) { return codePoint <= candidate.Last; });
  return range != std::end(ranges) && codePoint >= range->First;
}

bool IsWhiteControl(char32_t codePoint) {
  return codePoint >= '\t' && codePoint <= '\r';
}

}  // namespace

std::string PrintableText(std::string_view text) {
  std::string printable;
  printable.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    at += character.Length;
    char32_t codePoint = character.CodePoint;
    if (IsWhiteControl(codePoint)) {
      codePoint = ' ';
    } else if (IsIn(ControlCharacters, codePoint)) {
      codePoint = ReplacementCharacter;
    }
    AppendUtf8(printable, codePoint);
  }
  return printable;
}

int DisplayWidth(std::string_view text) {
  int width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    at += character.Length;
    if (character.CodePoint < 0x300) {
      ++width;
    } else if (!IsIn(CombiningMarks, character.CodePoint)) {
      width += IsIn(WideCharacters, character.CodePoint) ? 2 : 1;
    }
  }
  return width;
}

std::vector<std::string> PrintableLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string line = PrintableText(text.substr(0, end));
    line.resize(line.find_last_not_of(' ') + 1);
    lines.push_back(std::move(line));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string PrintableProgramText(std::string_view text) {
  std::string printable;
  printable.reserve(text.size() + 1);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
    printable += PrintableText(text.substr(0, end));
    if (end < text.size()) printable += text[end];
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (!printable.empty() && printable.back() != '\n') printable += '\n';
  return printable;
}

}  // namespace orv
