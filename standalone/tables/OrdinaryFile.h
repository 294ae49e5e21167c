// What readers that jump about in a file need to know before they open it.
#pragma once

#include <string>

#include "standalone/tables/FileForm.h"

namespace orv {

// Refuses, with TableError, what can be read only once (a pipe, a device), what cannot be opened, an empty file, and
// one whose first bytes belong to another form than `expected`. With `certainly` it must also bear the signature of
// `expected`; without, a file of unknown form or of plain text passes.
void CheckOrdinaryFile(const std::string& path, FileForm expected, bool certainly);

}  // namespace orv
