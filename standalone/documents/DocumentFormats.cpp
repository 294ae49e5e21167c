#include "standalone/documents/DocumentFormats.h"

#include <algorithm>

#include "standalone/documents/CsvFolder.h"
#include "standalone/documents/HtmlWriter.h"
#include "standalone/documents/JsonWriter.h"
#include "standalone/documents/MarkdownWriter.h"
#include "standalone/documents/TextWriter.h"
#include "standalone/documents/XlsxWriter.h"

namespace orv {
namespace {

constexpr DocumentFormat Formats[] = {
    {"text", ".txt", true, WriteText},
    {"markdown", ".md", true, WriteMarkdown},
    {"html", ".html", false, WriteHtml},
    {"json", ".json", true, WriteJson},
    {"xlsx", ".xlsx", false, WriteXlsx, nullptr, WhyNotXlsx},
    {"csv", "/", false, nullptr, WriteCsvFiles},
};

char LowerAscii(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool EndsWithIgnoringCase(std::string_view text, std::string_view lowerEnding) {
  if (text.size() < lowerEnding.size()) return false;
  const std::string_view end = text.substr(text.size() - lowerEnding.size());
  return std::equal(end.begin(), end.end(), lowerEnding.begin(), [](char a, char b) { return LowerAscii(a) == b; });
}

}  // namespace

std::span<const DocumentFormat> DocumentFormats() {
  return Formats;
}

const DocumentFormat* FindFormatByName(std::string_view name) {
  for (const DocumentFormat& format : Formats) {
    if (format.Name == name) return &format;
  }
  return nullptr;
}

const DocumentFormat* FindFormatByFileName(std::string_view fileName) {
  for (const DocumentFormat& format : Formats) {
    if (EndsWithIgnoringCase(fileName, format.FileEnding)) return &format;
  }
  return nullptr;
}

}  // namespace orv
