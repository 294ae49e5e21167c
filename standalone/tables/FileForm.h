// The form of a file by its first bytes, whatever its name says.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orv {

enum class FileForm : std::uint8_t {
  Unknown,
  Text,  // without control characters: delimited text, or an SPSS portable file that does not say so
  Sqlite,
  Sas,
  SasTransport,
  Spss,
  SpssPortable,
  Stata,
  Workbook,     // an .xlsx file, or another ZIP archive
  OldWorkbook,  // an .xls file, or another file of that container
};

// `head` is the beginning of a file; 512 bytes are enough.
// Sources: the signatures that the forms' own descriptions give. Stata files before version 117 have none: a version
// from 102 to 115, a byte order of 1 or 2, and a 1.
FileForm FormOf(std::string_view head);

// The form of a file on disk; Unknown when it cannot be read.
FileForm FormOfFile(const std::string& path);

// With its article: "an SPSS file".
std::string_view FormName(FileForm form);

// What to do about a file of this form: "Rename it to .sav."; empty when nothing is known.
std::string_view FormAdvice(FileForm form);

}  // namespace orv
