#include "standalone/tables/TextTables.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "standalone/tables/DelimitedReader.h"
#include "standalone/tables/TableError.h"

namespace orv::testing {
namespace {

std::string Shortest(double value) {
  char digits[32];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  return {digits, result.ptr};
}

}  // namespace

std::size_t TextSource::Read(char* buffer, std::size_t size) {
  const std::size_t part = std::min(size, m_text.size() - m_place);
  std::memcpy(buffer, m_text.data() + m_place, part);
  m_place += part;
  return part;
}

void TextSource::Rewind() {
  m_place = 0;
  ++m_rewinds;
}

MemoryTable ReadText(std::string_view text, bool preferTab, const TableReadOptions& options) {
  TextSource source(text);
  return ReadDelimited(source, "trial.csv", preferTab, options);
}

std::string Refusal(std::string_view text, bool preferTab, const TableReadOptions& options) {
  try {
    ReadText(text, preferTab, options);
  } catch (const TableError& error) {
    return error.what();
  }
  return "(it reads)";
}

std::string Contents(const MemoryTable& table) {
  std::string contents;
  for (int v = 1; v <= table.VariableCount(); ++v) {
    const TableVariable& variable = table.Variable(v);
    contents.append(variable.Name).append(" ").append(VariableTypeName(variable.Type));
    for (int c = 1; c <= table.CaseCount(); ++c)
      contents.append(" ").append(table.IsMissing(v, c) ? "M" : Shortest(table.Value(v, c)));
    if (!variable.Labels.empty()) contents.append(" |");
    for (const ValueLabel& label : variable.Labels)
      contents.append(" ").append(Shortest(label.Code)).append("=").append(label.Text);
    contents.append("\n");
  }
  return contents;
}

std::string Visible(std::string_view text) {
  std::string visible;
  for (const char c : text) {
    if (c == '\n') {
      visible += "\\n";
    } else if (c == '\r') {
      visible += "\\r";
    } else if (c == '\t') {
      visible += "\\t";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      visible += '?';
    } else {
      visible += c;
    }
  }
  return visible;
}

}  // namespace orv::testing
