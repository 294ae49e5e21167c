// WriteFileAtomically: an output file that is either whole or not touched.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "standalone/documents/OutputMessages.h"

namespace orv {

// Writes the content to a new file in the folder of `path`, has it reach the disk, and then gives it the name `path`,
// so that a reader never sees half a file, and a failure, the end of the program by force or a loss of power leaves an
// earlier file as it was. What an ended program leaves under a name of its own goes with the next run that writes to
// the folder (UnfinishedEntry.h). A file that is replaced keeps its permissions; a symbolic link is followed. A device
// or pipe is written to directly, since it must not be replaced.
//
// Throws OutputError, and leaves nothing behind, when the folder is missing or not writable, `path` is a folder, the
// disk is full, or the system gives another reason.
void WriteFileAtomically(const std::string& path, std::string_view content);

// The same for content that is written piece by piece: `write` is called once with the name of an empty file, or of the
// device or pipe, fills it and closes it. Throws OutputError also for a std::system_error that `write` throws; whatever
// else it throws reaches the caller, and nothing is left behind either.
void WriteFileAtomically(const std::string& path, const std::function<void(const std::string&)>& write);

}  // namespace orv
