// Any bytes are a table or refused with a message, and the way in which they arrive does not matter.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "ReadOutcome.h"
#include "Require.h"
#include "standalone/tables/DelimitedReader.h"
#include "standalone/tables/TableMessages.h"

namespace orv::fuzz {

namespace {

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : m_bytes(bytes) {}

  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t part = std::min(size, m_bytes.size() - m_place);
    std::memcpy(buffer, m_bytes.data() + m_place, part);
    m_place += part;
    return part;
  }
  void Rewind() override { m_place = 0; }
  std::uint64_t TotalBytes() const override { return m_bytes.size(); }

 private:
  std::string_view m_bytes;
  std::size_t m_place = 0;
};

struct StreamCloser {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

ReadOutcome ReadAsStandardInput(std::string_view bytes) {
  // Opened for reading, so the bytes are not written to.
  const std::unique_ptr<std::FILE, StreamCloser> stream(fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "r"));
  Require(stream != nullptr, "the stream opens");
  TableReadOptions options;
  options.StandardInput = stream.get();
  return CheckedRead([&] { return ReadTable("-", options); });
}

ReadOutcome ReadFromMemory(std::string_view bytes, bool preferTab) {
  MemorySource source(bytes);
  return CheckedRead([&] { return ReadDelimited(source, std::string(kStandardInputName), preferTab, {}); });
}

}  // namespace

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orv::fuzz;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const ReadOutcome fromMemory = ReadFromMemory(bytes, false);
  const ReadOutcome fromStream = ReadAsStandardInput(bytes);
  Require(fromMemory.Message == fromStream.Message, "the message does not depend on the source");
  Require(fromMemory.Table.has_value() == fromStream.Table.has_value() &&
              (!fromMemory.Table || IsSameTable(*fromMemory.Table, *fromStream.Table)),
          "the table does not depend on the source");
  if (bytes.find('\t') != std::string_view::npos) ReadFromMemory(bytes, true);
  return 0;
}
