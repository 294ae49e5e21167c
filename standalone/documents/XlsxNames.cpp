#include "standalone/documents/XlsxNames.h"

#include <fmt/format.h>

#include "standalone/documents/DisplayText.h"
#include "standalone/documents/XmlText.h"

namespace orv {
namespace {

constexpr std::size_t MostOfName = 31;
constexpr std::string_view Forbidden = "[]:*?/\\";
constexpr std::string_view Reserved = "history";
constexpr std::size_t Letters = 26;

// ASCII letters alone: programs differ about the others, and the results' own names have none.
std::string InLowerCase(std::string text) {
  for (char& sign : text) {
    if (sign >= 'A' && sign <= 'Z') sign = static_cast<char>(sign - 'A' + 'a');
  }
  return text;
}

std::string AllowedName(std::string_view text) {
  const std::string printable = PrintableText(text);
  std::string name(FirstOfUtf16Length(printable, MostOfName));
  for (char& sign : name) {
    if (Forbidden.find(sign) != std::string_view::npos) sign = '_';
  }
  if (name.empty()) return "Sheet";
  if (name.front() == '\'') name.front() = '_';
  if (name.back() == '\'') name.back() = '_';
  return name;
}

}  // namespace

std::string XlsxSheetNames::Take(std::string_view text) {
  std::string base = AllowedName(text);
  if (InLowerCase(base) == Reserved) base += '_';
  std::string name = base;
  for (int number = 2; !m_taken.insert(InLowerCase(name)).second; ++number) {
    const std::string ending = fmt::format(" ({})", number);
    name = std::string(FirstOfUtf16Length(base, MostOfName - ending.size())) + ending;
  }
  return name;
}

std::string XlsxColumnName(std::size_t column) {
  std::string name;
  for (std::size_t rest = column + 1; rest > 0; rest = (rest - 1) / Letters) {
    name.insert(name.begin(), static_cast<char>('A' + (rest - 1) % Letters));
  }
  return name;
}

}  // namespace orv
