// Tables from texts, for the tests of the reader of delimited text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/ByteSource.h"
#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableReaders.h"

namespace orv::testing {

// The bytes of a text.
class TextSource : public ByteSource {
 public:
  explicit TextSource(std::string_view text) : m_text(text) {}
  std::size_t Read(char* buffer, std::size_t size) override;
  void Rewind() override;
  std::uint64_t TotalBytes() const override { return m_text.size(); }
  int Rewinds() const { return m_rewinds; }

 private:
  std::string_view m_text;
  std::size_t m_place = 0;
  int m_rewinds = 0;
};

// The table in a text that stands for trial.csv.
MemoryTable ReadText(std::string_view text, bool preferTab = false, const TableReadOptions& options = {});

// What the reader says about a text that it refuses; "(it reads)" when it does not refuse it.
std::string Refusal(std::string_view text, bool preferTab = false, const TableReadOptions& options = {});

// The type of every variable, its values with M for missing and its labels, in one line a variable:
//   age number 5 M 7
//   arm text 2 1 | 1=drug 2=placebo
std::string Contents(const MemoryTable& table);

// The letters of a text with line ends and other control characters made visible.
std::string Visible(std::string_view text);

}  // namespace orv::testing
