// DocumentFromSheet: a finished sheet of the module as a result document.
#pragma once

#include <functional>
#include <string>

#include "host/Host.h"
#include "standalone/documents/ResultDocument.h"

namespace orv {

// Copies everything that `sheet` points to; the document's `Name` is left to the caller.
//
//   expandName  gives the long name for the host's key of 8 characters, any other text unchanged; it is applied to
//               every title, name and text cell
//
// Empty titles are left out. A number cell is missing when all its bytes are 0xFF, and so is any other NaN. An array
// that is null counts as never written. Sizes below 1 give an empty sheet.
ResultDocument DocumentFromSheet(const SheetArguments& sheet,
                                 const std::function<std::string(const std::string&)>& expandName);

}  // namespace orv
