#include "standalone/tables/FileForm.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "standalone/tables/TextCheck.h"

namespace orv {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kHeadSize = 512;

constexpr std::string_view kSasMagic =
    "\0\0\0\0\0\0\0\0\0\0\0\0\xC2\xEA\x81\x60\xB3\x14\x11\xCF\xBD\x92\x08\x00\x09\xC7\x31\x8C\x18\x1F\x10\x11"sv;

bool IsOldStata(std::string_view head) {
  return head.size() >= 4 && head[0] >= 102 && head[0] <= 115 && (head[1] == 1 || head[1] == 2) && head[2] == 1;
}

// The head of a portable file has 200 bytes of headings in several character sets, cut into lines of 80.
bool IsPortable(std::string_view head) {
  std::string joined;
  std::copy_if(head.begin(), head.end(), std::back_inserter(joined), [](char c) { return c != '\r' && c != '\n'; });
  return joined.substr(0, 200).find("SPSS PORT FILE") != std::string::npos;
}

bool IsText(std::string_view head) {
  if (head.empty()) return false;
  TextCheck check;
  if (check.Check(head).Fault != TextFault::None) return false;
  return std::none_of(head.begin(), head.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\r' && c != '\n';
  });
}

}  // namespace

FileForm FormOf(std::string_view head) {
  if (head.starts_with("SQLite format 3\0"sv)) return FileForm::Sqlite;
  if (head.starts_with(kSasMagic)) return FileForm::Sas;
  if (head.starts_with("HEADER RECORD*******LIB")) return FileForm::SasTransport;
  if (head.starts_with("$FL2") || head.starts_with("$FL3")) return FileForm::Spss;
  if (head.starts_with("<stata_dta>") || IsOldStata(head)) return FileForm::Stata;
  if (head.starts_with("PK\3\4")) return FileForm::Workbook;
  if (head.starts_with("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1")) return FileForm::OldWorkbook;
  if (IsPortable(head)) return FileForm::SpssPortable;
  return IsText(head) ? FileForm::Text : FileForm::Unknown;
}

FileForm FormOfFile(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) return FileForm::Unknown;
  char head[kHeadSize];
  return FormOf({head, std::fread(head, 1, sizeof head, file.get())});
}

std::string_view FormName(FileForm form) {
  switch (form) {
    case FileForm::Text:
      return "text";
    case FileForm::Sqlite:
      return "an SQLite database";
    case FileForm::Sas:
      return "a SAS file";
    case FileForm::SasTransport:
      return "a SAS transport file";
    case FileForm::Spss:
      return "an SPSS file";
    case FileForm::SpssPortable:
      return "an SPSS portable file";
    case FileForm::Stata:
      return "a Stata file";
    case FileForm::Workbook:
      return "a workbook or another ZIP archive";
    case FileForm::OldWorkbook:
      return "an old workbook";
    case FileForm::Unknown:
      break;
  }
  return "of an unknown form";
}

std::string_view FormAdvice(FileForm form) {
  switch (form) {
    case FileForm::Text:
      return "If it is delimited text, rename it to .csv.";
    case FileForm::Sqlite:
      return "Rename it to .orv if Orvanta Cox wrote it, else to .db.";
    case FileForm::Sas:
      return "Rename it to .sas7bdat.";
    case FileForm::SasTransport:
      return "Rename it to .xpt.";
    case FileForm::Spss:
      return "Rename it to .sav.";
    case FileForm::SpssPortable:
      return "Rename it to .por.";
    case FileForm::Stata:
      return "Rename it to .dta.";
    case FileForm::Workbook:
    case FileForm::OldWorkbook:
      return "Open it where it was made and save the sheet as CSV.";
    case FileForm::Unknown:
      break;
  }
  return {};
}

}  // namespace orv
