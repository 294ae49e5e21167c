// WriteDocuments: the results of a run in a file or folder, in any of the forms.
#pragma once

#include <string>

#include "standalone/documents/DocumentFormats.h"
#include "standalone/documents/OutputMessages.h"

namespace orv {

// Throws OutputError when `path` cannot take results of this form, as far as that can be seen before there are any.
void CheckOutputPlace(const DocumentFormat& format, const std::string& path);

// Throws OutputError when the form has no room for the documents.
void CheckDocumentsFit(const DocumentFormat& format, const std::string& path, const ResultDocuments& documents);

// Writes the file or folder, so that it is either whole or not touched (WriteFileAtomically.h,
// WriteFolderAtomically.h). Throws OutputError.
void WriteDocuments(const DocumentFormat& format,
                    const std::string& path,
                    const RunReport& report,
                    const ResultDocuments& documents);

}  // namespace orv
