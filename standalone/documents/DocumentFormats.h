// DocumentFormats: the forms in which results can be written, by name and by file ending.
//
// A new form is a function of the type DocumentFormat::Write, or WriteFiles for a folder of files, and a line in the
// table of DocumentFormats.cpp.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "standalone/documents/ResultDocuments.h"
#include "standalone/documents/RunReport.h"
#include "standalone/documents/WriteFolderAtomically.h"

namespace orv {

struct WriteOptions {
  int Width = 80;     // characters of a line, for forms that have lines; at least 40
  bool Bold = false;  // highlighted cells and titles in bold by terminal sequences; only for a terminal
};

struct DocumentFormat {
  std::string_view Name;        // as the user names it, e.g. "json"
  std::string_view FileEnding;  // with the dot, in lower case; "/" for a folder
  bool IsForStandardOutput;     // a form to be read in a terminal or by the next program of a pipe
  // The whole output. The same arguments give the same bytes. Null for a form that is a folder.
  std::string (*Write)(const RunReport& report, const ResultDocuments& documents, const WriteOptions& options);
  // The files of a form that is a folder, null for the others.
  void (*WriteFiles)(const RunReport& report, const ResultDocuments& documents, const FileSink& sink) = nullptr;
  // Why the form cannot hold the documents, empty when it can; the text follows "cannot be written: ". Null for a form
  // that can hold any.
  std::string (*WhyNot)(const ResultDocuments& documents) = nullptr;
};

std::span<const DocumentFormat> DocumentFormats();

// Null when there is no such form.
const DocumentFormat* FindFormatByName(std::string_view name);
// By the ending of the file's name, capitals or not. Null when no form has it.
const DocumentFormat* FindFormatByFileName(std::string_view fileName);

}  // namespace orv
