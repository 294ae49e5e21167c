// A new, empty folder that goes when its owner does.
#pragma once

#include <stdlib.h>  // mkdtemp, which <cstdlib> lacks

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace orv::testing {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "orvcox-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
    m_path = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;  // a folder that stays behind is no reason to stop
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path, ignored)) {
      if (entry.is_directory(ignored)) {
        std::filesystem::permissions(entry, std::filesystem::perms::owner_all, std::filesystem::perm_options::add,
                                     ignored);
      }
    }
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }

 private:
  std::filesystem::path m_path;
};

}  // namespace orv::testing
