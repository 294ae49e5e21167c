#include "standalone/documents/UnfinishedEntry.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "standalone/documents/OutputMessages.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

constexpr int MaxNames = 1000;  // other runs may write to the same folder at the same time
constexpr int SweptNames = 16;  // so many names are looked at for what broken runs left
constexpr mode_t FileMode = 0666;
constexpr mode_t FolderMode = 0777;

fs::path NameOf(const fs::path& folder, int number) {
  return folder / fmt::format(".orvcox-unfinished-{}", number);
}

class OpenFile {
 public:
  explicit OpenFile(int number) : m_number(number) {}
  ~OpenFile() {
    if (m_number >= 0) close(m_number);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  int Number() const { return m_number; }
  int Release() { return std::exchange(m_number, -1); }

 private:
  int m_number;
};

// False when the name leads to something else by now, since its owner has renamed or removed what was opened.
bool IsStillNamed(int descriptor, const fs::path& path) {
  struct stat opened {};
  struct stat named {};
  return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino;
}

void RemoveEntry(const fs::path& path) {
  std::error_code ignored;  // nothing better can be done
  if (fs::is_directory(fs::symlink_status(path, ignored))) {
    for (const auto& entry : fs::directory_iterator(path, ignored)) {
      if (!fs::is_directory(entry.symlink_status(ignored))) fs::remove(entry.path(), ignored);
    }
  }
  fs::remove(path, ignored);
}

void RemoveIfWithoutOwner(const fs::path& path) {
  const OpenFile found(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (found.Number() < 0 || flock(found.Number(), LOCK_EX | LOCK_NB) != 0) return;
  if (IsStillNamed(found.Number(), path)) RemoveEntry(path);
}

}  // namespace

UnfinishedEntry::UnfinishedEntry(Kind kind, fs::path folder, fs::path target)
    : m_target(std::move(target)), m_folder(std::move(folder)) {
  for (int number = 1; number <= SweptNames; ++number) RemoveIfWithoutOwner(NameOf(m_folder, number));
  for (int number = 1; number <= MaxNames; ++number) {
    m_path = NameOf(m_folder, number);
    if (Make(kind)) return;
  }
  OutputMessages::FailForTemporaryNames(m_target, NameOf(m_folder, 1), m_path);
}

UnfinishedEntry::~UnfinishedEntry() {
  if (!m_isKept) RemoveEntry(m_path);
  close(m_descriptor);
}

// False when the name is taken.
bool UnfinishedEntry::Make(Kind kind) {
  const bool isFolder = kind == Kind::Folder;
  if (isFolder && mkdir(m_path.c_str(), FolderMode) != 0) {
    if (errno == EEXIST) return false;
    OutputMessages::FailForSystem(m_target, m_folder, LastSystemError());
  }
  const int flags = isFolder ? O_RDONLY | O_DIRECTORY | O_NOFOLLOW : O_RDWR | O_CREAT | O_EXCL;
  OpenFile made(open(m_path.c_str(), flags | O_CLOEXEC, FileMode));
  if (made.Number() < 0) {
    // Another run may take what has no lock yet for what a broken run left.
    if (errno == EEXIST || (isFolder && errno == ENOENT)) return false;
    OutputMessages::FailForSystem(m_target, m_folder, LastSystemError());
  }
  // A file system without locks has no other runs that look for them either.
  if (flock(made.Number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  if (!IsStillNamed(made.Number(), m_path)) return false;
  m_descriptor = made.Release();
  return true;
}

std::error_code WriteAndFlush(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return LastSystemError();
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return Flush(descriptor);
}

std::error_code Flush(int descriptor) {
  int result = 0;
  do {
    result = fsync(descriptor);
  } while (result != 0 && errno == EINTR);
  // EINVAL: nothing that could be flushed, as with some file systems of networks.
  return result == 0 || errno == EINVAL ? std::error_code{} : LastSystemError();
}

}  // namespace orv
