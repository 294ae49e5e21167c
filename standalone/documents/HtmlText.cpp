#include "standalone/documents/HtmlText.h"

#include <algorithm>

#include "standalone/documents/DisplayText.h"

namespace orv {
namespace {

std::string Escaped(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char sign : text) {
    switch (sign) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += sign;
    }
  }
  return escaped;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char sign) { return static_cast<unsigned char>(sign) < 0x80U; });
}

}  // namespace

std::string HtmlText(std::string_view text) {
  std::string escaped = Escaped(PrintableText(text));
  return IsAscii(escaped) ? escaped : "<bdi>" + escaped + "</bdi>";
}

std::string HtmlProgramText(std::string_view text) {
  return Escaped(PrintableProgramText(text));
}

}  // namespace orv
