#include "standalone/tables/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

constexpr std::size_t kHeldBlock = std::size_t{256} * 1024;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

// Reads until `size` bytes have come or the data end.
std::size_t ReadFully(std::FILE* file,
                      char* buffer,
                      std::size_t size,
                      const std::string& name,
                      const std::function<void()>& interrupted) {
  std::size_t filled = 0;
  while (filled < size && std::feof(file) == 0) {
    errno = 0;
    filled += std::fread(buffer + filled, 1, size - filled, file);
    if (std::ferror(file) == 0) continue;
    const int reason = errno;
    if (reason != EINTR) throw TableError(ReadFailedMessage(name, reason));
    std::clearerr(file);
    if (interrupted) interrupted();
  }
  return filled;
}

class FileSource : public ByteSource {
 public:
  FileSource(OwnedFile file, std::string path, std::uint64_t total)
      : m_file(std::move(file)), m_path(std::move(path)), m_total(total) {
    // Whole blocks are asked for, so a buffer in between would only copy them once more.
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
  }
  std::size_t Read(char* buffer, std::size_t size) override {
    return ReadFully(m_file.get(), buffer, size, m_path, {});
  }
  void Rewind() override {
    if (std::fseek(m_file.get(), 0, SEEK_SET) != 0) throw TableError(ReadFailedMessage(m_path, errno));
  }
  std::uint64_t TotalBytes() const override { return m_total; }

 private:
  OwnedFile m_file;
  std::string m_path;
  std::uint64_t m_total;
};

// Keeps the blocks that it has read. A list of blocks, not one string, so that growing never copies the text.
class HeldSource : public ByteSource {
 public:
  HeldSource(std::FILE* stream, OwnedFile owned, std::string name, std::function<void()> interrupted)
      : m_stream(stream), m_owned(std::move(owned)), m_name(std::move(name)), m_interrupted(std::move(interrupted)) {}

  std::size_t Read(char* buffer, std::size_t size) override {
    std::size_t filled = 0;
    while (filled < size) {
      if (m_block == m_blocks.size() && !HoldNextBlock()) break;
      const std::vector<char>& block = m_blocks[m_block];
      const std::size_t part = std::min(size - filled, block.size() - m_place);
      std::memcpy(buffer + filled, block.data() + m_place, part);
      filled += part;
      m_place += part;
      if (m_place == block.size()) {
        ++m_block;
        m_place = 0;
      }
    }
    return filled;
  }
  void Rewind() override { m_block = m_place = 0; }
  std::uint64_t TotalBytes() const override { return m_atEnd ? m_held : 0; }

 private:
  bool HoldNextBlock() {
    if (m_atEnd) return false;
    std::vector<char> block(kHeldBlock);
    block.resize(ReadFully(m_stream, block.data(), block.size(), m_name, m_interrupted));
    m_atEnd = block.size() < kHeldBlock;
    m_held += block.size();
    if (block.empty()) return false;
    m_blocks.push_back(std::move(block));
    return true;
  }

  std::FILE* m_stream;
  OwnedFile m_owned;
  std::string m_name;
  std::function<void()> m_interrupted;
  std::vector<std::vector<char>> m_blocks;
  std::size_t m_block = 0;  // where the next byte to hand out stands: block
  std::size_t m_place = 0;  // and place in it
  std::uint64_t m_held = 0;
  bool m_atEnd = false;
};

}  // namespace

std::unique_ptr<ByteSource> OpenFile(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::is_directory(status)) throw TableError(FolderMessage(path));
  OwnedFile file(std::fopen(path.c_str(), "rb"));
  if (!file) throw TableError(CannotOpenMessage(path, errno));
  if (!std::filesystem::is_regular_file(status)) {
    std::FILE* stream = file.get();
    return std::make_unique<HeldSource>(stream, std::move(file), path, std::function<void()>{});
  }
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return std::make_unique<FileSource>(std::move(file), path, error ? 0 : size);
}

std::unique_ptr<ByteSource> HoldStream(std::FILE* stream, std::string name, std::function<void()> interrupted) {
  return std::make_unique<HeldSource>(stream, OwnedFile{}, std::move(name), std::move(interrupted));
}

}  // namespace orv
