#include "standalone/documents/MarkdownText.h"

#include <algorithm>

#include "standalone/documents/DisplayText.h"

namespace orv {
namespace {

constexpr std::string_view AlwaysMarkup = "\\`*[]|~>$";
constexpr std::size_t ShortestFence = 3;

bool IsLetter(char sign) {
  return (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z');
}

bool IsDigit(char sign) {
  return sign >= '0' && sign <= '9';
}

// Bytes of characters beyond ASCII count: nearly all of them are letters.
bool IsOfWord(char sign) {
  return IsLetter(sign) || IsDigit(sign) || static_cast<unsigned char>(sign) >= 0x80U;
}

bool IsMarkupAt(std::string_view text, std::size_t at) {
  const char sign = text[at];
  if (AlwaysMarkup.find(sign) != std::string_view::npos) return true;
  const char next = at + 1 < text.size() ? text[at + 1] : ' ';
  if (sign == '<') return IsLetter(next) || next == '/' || next == '!' || next == '?';
  if (sign == '&') return IsLetter(next) || next == '#';
  if (sign == '_') return at == 0 || !IsOfWord(text[at - 1]) || !IsOfWord(next);
  return false;
}

// The place of the sign that makes the start of a line more than text, npos for none.
std::size_t LineMarkup(std::string_view text) {
  if (text.empty()) return std::string_view::npos;
  if (std::string_view("#-+=").find(text[0]) != std::string_view::npos) return 0;
  const auto* const end = std::find_if_not(text.begin(), text.end(), IsDigit);
  const auto digits = static_cast<std::size_t>(end - text.begin());
  const bool isNumbered = digits > 0 && end != text.end() && (*end == '.' || *end == ')');
  return isNumbered ? digits : std::string_view::npos;
}

std::string Escaped(std::string_view text, std::size_t alsoEscaped) {
  std::string escaped;
  escaped.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (at == alsoEscaped || IsMarkupAt(text, at)) escaped += '\\';
    escaped += text[at];
  }
  return escaped;
}

std::string TrimmedPrintable(std::string_view text) {
  const std::string printable = PrintableText(text);
  const std::size_t first = std::min(printable.find_first_not_of(' '), printable.size());
  return printable.substr(first, printable.find_last_not_of(' ') + 1 - first);
}

std::size_t LongestRunOfBackticks(std::string_view text) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char sign : text) {
    run = sign == '`' ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return longest;
}

}  // namespace

std::string MarkdownText(std::string_view text) {
  return Escaped(TrimmedPrintable(text), std::string_view::npos);
}

std::string MarkdownLine(std::string_view text) {
  const std::string printable = TrimmedPrintable(text);
  return Escaped(printable, LineMarkup(printable));
}

std::string MarkdownFence(std::string_view text) {
  const std::string fence(std::max(ShortestFence, LongestRunOfBackticks(text) + 1), '`');
  return fence + "\n" + PrintableProgramText(text) + fence + "\n";
}

}  // namespace orv
