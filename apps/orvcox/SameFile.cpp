#include "apps/orvcox/SameFile.h"

#include <filesystem>
#include <system_error>

namespace orv {

namespace {

namespace fs = std::filesystem;

// A folder that is not there yet would keep its slash, and one that is there would lose it.
fs::path Resolved(const std::string& name) {
  const fs::path path(name);
  const fs::path entry = path.has_filename() ? path : path.parent_path();
  std::error_code error;
  const fs::path resolved = fs::weakly_canonical(fs::absolute(entry, error), error);
  return error ? fs::absolute(entry, error).lexically_normal() : resolved;
}

}  // namespace

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code ignored;  // what is not there is no file yet
  return fs::equivalent(a, b, ignored) || Resolved(a) == Resolved(b);
}

}  // namespace orv
