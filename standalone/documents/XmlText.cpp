#include "standalone/documents/XmlText.h"

#include <algorithm>

#include "standalone/documents/Utf8.h"

namespace orv {
namespace {

constexpr std::size_t MostOfCell = 32767;
constexpr std::string_view Cut = "...";
constexpr std::size_t EscapeLength = 7;  // of "_x0041_"

bool IsAllowed(char32_t codePoint) {
  if (codePoint == '\t' || codePoint == '\n' || codePoint == '\r') return true;
  return codePoint >= 0x20 && codePoint != 0x7F && codePoint != 0xFFFE && codePoint != 0xFFFF;
}

void AppendCharacter(std::string& xml, char32_t codePoint) {
  switch (codePoint) {
    case '&':
      xml += "&amp;";
      break;
    case '<':
      xml += "&lt;";
      break;
    case '>':
      xml += "&gt;";
      break;
    case '"':
      xml += "&quot;";
      break;
    case '\r':
      xml += "&#13;";  // a bare one would be read as a line feed
      break;
    default:
      AppendUtf8(xml, IsAllowed(codePoint) ? codePoint : ReplacementCharacter);
  }
}

bool IsHexDigit(char sign) {
  return (sign >= '0' && sign <= '9') || (sign >= 'a' && sign <= 'f') || (sign >= 'A' && sign <= 'F');
}

bool IsEscapeAt(std::string_view text, std::size_t at) {
  if (text.size() - at < EscapeLength || text[at] != '_' || text[at + 1] != 'x' || text[at + 6] != '_') return false;
  const std::string_view digits = text.substr(at + 2, 4);
  return std::all_of(digits.begin(), digits.end(), IsHexDigit);
}

std::size_t UnitsOf(char32_t codePoint) {
  return codePoint > 0xFFFF ? 2 : 1;
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string xml;
  xml.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    at += character.Length;
    AppendCharacter(xml, character.CodePoint);
  }
  return xml;
}

std::string XmlCellText(std::string_view text) {
  // No text has more characters than bytes.
  const bool isCut = text.size() > MostOfCell && Utf16Length(text) > MostOfCell;
  const std::string_view kept = isCut ? FirstOfUtf16Length(text, MostOfCell - Cut.size()) : text;
  std::string xml;
  xml.reserve(kept.size());
  for (std::size_t at = 0; at < kept.size();) {
    if (IsEscapeAt(kept, at)) xml += "_x005F";  // an underscore, escaped itself
    const Utf8Character character = DecodeUtf8(kept, at);
    at += character.Length;
    AppendCharacter(xml, character.CodePoint);
  }
  if (isCut) xml += Cut;
  return xml;
}

std::size_t Utf16Length(std::string_view text) {
  std::size_t length = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    at += character.Length;
    length += UnitsOf(character.CodePoint);
  }
  return length;
}

std::string_view FirstOfUtf16Length(std::string_view text, std::size_t length) {
  std::size_t used = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    used += UnitsOf(character.CodePoint);
    if (used > length) return text.substr(0, at);
    at += character.Length;
  }
  return text;
}

}  // namespace orv
