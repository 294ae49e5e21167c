// A table does not depend on where the blocks end in which its bytes are read.
//
// A line of spaces, which a reader skips, is put between the names and the cases, so long that a block ends within the
// cases. Line ends, quotes and characters of several bytes are then cut in two.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "ReadOutcome.h"
#include "Require.h"
#include "standalone/tables/DelimitedReader.h"

namespace orv::fuzz {

namespace {

constexpr std::size_t kLongestInput = 4096;  // well below the size of a block
constexpr int kMostCuts = 4;                 // for one input: each costs the reading of a block

// `names`, a line of spaces, `cases`: with the line so long that the first block ends `cut` bytes into the cases.
class StretchedSource : public ByteSource {
 public:
  StretchedSource(std::string_view names, std::string_view cases, std::size_t cut)
      : m_names(names), m_cases(cases), m_cut(cut) {}

  std::size_t Read(char* buffer, std::size_t size) override {
    if (m_bytes.empty()) {
      m_bytes =
          std::string(m_names) + std::string(size - m_names.size() - m_cut - 1, ' ') + '\n' + std::string(m_cases);
    }
    const std::size_t part = std::min(size, m_bytes.size() - m_place);
    std::memcpy(buffer, m_bytes.data() + m_place, part);
    m_place += part;
    return part;
  }
  void Rewind() override { m_place = 0; }
  std::uint64_t TotalBytes() const override { return m_bytes.size(); }

 private:
  std::string_view m_names;
  std::string_view m_cases;
  std::size_t m_cut;
  std::string m_bytes;  // laid out when the reader tells the size of its blocks
  std::size_t m_place = 0;
};

// The bytes up to the end of the first line that is not blank, when it ends in LF outside quotes.
std::optional<std::size_t> EndOfNames(std::string_view bytes) {
  const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
  const std::size_t end = bytes.find('\n', begin == std::string_view::npos ? bytes.size() : begin);
  if (end == std::string_view::npos) return std::nullopt;
  const auto quotes = std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(end), '"');
  if (quotes % 2 != 0) return std::nullopt;
  return end + 1;
}

// Cut after this byte, something is in two blocks that belongs together.
bool IsWorthCutting(char c) {
  return c == '\r' || c == '\n' || c == '"' || static_cast<unsigned char>(c) >= 0x80;
}

ReadOutcome Read(std::string_view names, std::string_view cases, std::size_t cut) {
  StretchedSource source(names, cases, cut);
  return CheckedRead([&] { return ReadDelimited(source, "input", false, {}); });
}

}  // namespace

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orv::fuzz;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (size > kLongestInput) return -1;
  const std::optional<std::size_t> end = EndOfNames(bytes);
  if (!end) return -1;
  const std::string_view names = bytes.substr(0, *end);
  const std::string_view cases = bytes.substr(*end);

  const ReadOutcome whole = Read(names, cases, cases.size());
  int cuts = 0;
  for (std::size_t cut = 1; cut < cases.size() && cuts < kMostCuts; ++cut) {
    if (!IsWorthCutting(cases[cut - 1])) continue;
    ++cuts;
    const ReadOutcome divided = Read(names, cases, cut);
    // Not the message: of several faults in one line the first block may show another one first.
    Require(whole.Table.has_value() == divided.Table.has_value(), "blocks do not decide whether a table is readable");
    Require(!whole.Table || IsSameTable(*whole.Table, *divided.Table), "the table does not depend on the blocks");
  }
  return 0;
}
