// WriteFolderAtomically: a folder of output files that is either whole or not touched.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "standalone/documents/OutputMessages.h"

namespace orv {

// Takes one file: its name, without a folder, and its content.
using FileSink = std::function<void(const std::string& name, std::string_view content)>;

// Throws OutputError when the folder `path` could not be written or replaced as things stand.
void CheckFolderTarget(const std::string& path);

// Writes the files that `writeFiles` hands over, and a record of them (FolderRecord.h), to a new folder beside `path`,
// has them reach the disk, and gives the folder the name `path`. A folder that is there is exchanged for the new one in
// one step of the file system and then removed, so that whoever looks finds the files of one run and never a mix. What
// a program that was ended by force leaves goes with the next run (UnfinishedEntry.h).
//
// Throws OutputError, and leaves everything as it was, when the folder holds anything that this program did not write,
// when its file system has no such step (some of networks), and for all reasons of WriteFileAtomically.
void WriteFolderAtomically(const std::string& path, const std::function<void(const FileSink&)>& writeFiles);

}  // namespace orv
