#include "standalone/tables/OrdinaryFile.h"

#include <filesystem>

#include "standalone/tables/ByteSource.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {

void CheckOrdinaryFile(const std::string& path, FileForm expected, bool certainly) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) throw TableError(MissingFileMessage(path));
  const bool isFolder = std::filesystem::is_directory(status);
  if (!error && !isFolder && !std::filesystem::is_regular_file(status)) throw TableError(NotOrdinaryFileMessage(path));
  char first = 0;
  if (OpenFile(path)->Read(&first, 1) == 0)
    throw TableError(DamagedFileMessage(path, FormName(expected), "it is empty"));
  const FileForm form = FormOfFile(path);
  const bool isOpen = form == FileForm::Unknown || form == FileForm::Text;
  if (form != expected && (certainly || !isOpen)) throw TableError(WrongFormMessage(path, FormName(expected), form));
}

}  // namespace orv
