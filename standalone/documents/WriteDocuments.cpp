#include "standalone/documents/WriteDocuments.h"

#include <filesystem>

#include "standalone/documents/WriteFileAtomically.h"

namespace orv {

void CheckOutputPlace(const DocumentFormat& format, const std::string& path) {
  if (format.WriteFiles != nullptr) return CheckFolderTarget(path);
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::error_code error;
  if (folder.empty() || std::filesystem::is_directory(folder, error)) return;
  OutputMessages::FailForMissingFolder(path, folder);
}

void CheckDocumentsFit(const DocumentFormat& format, const std::string& path, const ResultDocuments& documents) {
  const std::string reason = format.WhyNot == nullptr ? "" : format.WhyNot(documents);
  if (!reason.empty()) OutputMessages::FailForForm(path, reason);
}

void WriteDocuments(const DocumentFormat& format,
                    const std::string& path,
                    const RunReport& report,
                    const ResultDocuments& documents) {
  if (format.WriteFiles == nullptr) return WriteFileAtomically(path, format.Write(report, documents, {}));
  WriteFolderAtomically(path, [&](const FileSink& sink) { format.WriteFiles(report, documents, sink); });
}

}  // namespace orv
