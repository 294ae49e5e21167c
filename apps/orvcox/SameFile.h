// SameFile: whether two names mean one file.
#pragma once

#include <string>

namespace orv {

// Links and "x/.." are resolved. The file, or the folder whose name ends in a slash, need not exist yet.
bool IsSameFile(const std::string& a, const std::string& b);

}  // namespace orv
