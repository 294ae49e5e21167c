// ByteSource: the bytes of a table file, read in blocks from first to last, a second time when need be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orv {

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Fills `buffer`. Less than `size` bytes come only at the end of the data, and 0 after it.
  virtual std::size_t Read(char* buffer, std::size_t size) = 0;
  // Goes back to the first byte.
  virtual void Rewind() = 0;
  // 0 when not known beforehand.
  virtual std::uint64_t TotalBytes() const = 0;
};

// A file on disk, or a pipe with a file name, whose bytes are then held as those of standard input are.
// Throws TableError for a folder and for a file that does not exist or cannot be opened or read.
std::unique_ptr<ByteSource> OpenFile(const std::string& path);

// A stream that can be read only once. What has been read is held in memory for a second reading. `stream` stays the
// caller's; `name` is its name in messages. `interrupted` is asked when a signal breaks a read off, which is then
// taken up again unless it throws.
std::unique_ptr<ByteSource> HoldStream(std::FILE* stream, std::string name, std::function<void()> interrupted = {});

}  // namespace orv
