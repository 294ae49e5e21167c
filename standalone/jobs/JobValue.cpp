#define TOML_EXCEPTIONS 0
#include "standalone/jobs/JobValue.h"

#include <toml++/toml.h>

#include <algorithm>
#include <array>

#include "standalone/jobs/JobMessages.h"
#include "standalone/jobs/JobWording.h"

namespace orv {

namespace {

JobValue::Table EntriesOf(const toml::table& table);

JobValue ValueOf(const toml::node& node) {
  JobValue value;
  value.Line = node.source().begin.line;
  if (const auto* flag = node.as_boolean()) {
    value.Content = flag->get();
  } else if (const auto* whole = node.as_integer()) {
    value.Content = whole->get();
  } else if (const auto* real = node.as_floating_point()) {
    value.Content = real->get();
  } else if (const auto* text = node.as_string()) {
    value.Content = text->get();
  } else if (const auto* list = node.as_array()) {
    JobValue::List items;
    for (const toml::node& item : *list) items.push_back(ValueOf(item));
    value.Content = std::move(items);
  } else if (const auto* table = node.as_table()) {
    value.Content = EntriesOf(*table);
  } else {
    value.Content = JobValue::Date{};
  }
  return value;
}

// The library keeps the entries of a table in the order of their names.
JobValue::Table EntriesOf(const toml::table& table) {
  struct Placed {
    toml::source_position Place;
    JobEntry Entry;
  };
  std::vector<Placed> placed;
  for (const auto& [key, node] : table) {
    const toml::source_position place = key.source().begin;
    placed.push_back({place, {std::string(key.str()), ValueOf(node), place.line}});
  }
  std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) { return a.Place < b.Place; });
  JobValue::Table entries;
  for (Placed& one : placed) entries.push_back(std::move(one.Entry));
  return entries;
}

// The library says first what it was about to read.
std::string FaultOf(const toml::parse_error& error) {
  const std::string text(error.description());
  constexpr std::string_view kHead = "Error while parsing ";
  const std::size_t colon = text.find(": ");
  return text.starts_with(kHead) && colon != std::string::npos ? text.substr(colon + 2) : text;
}

// Looks for keys of so many parts (a.a.a. ...) that the tables within tables which they stand for would exhaust the
// stack; the library bounds brackets and braces alone.
class KeyLengthCheck {
 public:
  explicit KeyLengthCheck(std::string_view text) : m_rest(text) {}

  // The line of the first such key; 0 when there is none.
  std::uint64_t Line() {
    std::uint64_t line = 1;
    int dots = 0;
    while (!m_rest.empty()) {
      const std::string_view piece = TakePiece();
      if (piece == ".") ++dots;
      if (kEnds.find(piece[0]) != std::string_view::npos) dots = 0;
      if (dots > kMostDots) return line;
      line += static_cast<std::uint64_t>(std::count(piece.begin(), piece.end(), '\n'));
    }
    return 0;
  }

 private:
  static constexpr int kMostDots = 64;
  static constexpr std::string_view kEnds = "\n=,[]{}";  // behind them another key may begin
  static constexpr std::array<std::string_view, 4> kQuotes = {"\"\"\"", "'''", "\"", "'"};

  // A text in quotes or a comment as a whole, any other character alone.
  std::string_view TakePiece() {
    const auto quotes = std::find_if(kQuotes.begin(), kQuotes.end(),
                                     [this](std::string_view start) { return m_rest.starts_with(start); });
    std::size_t length = quotes == kQuotes.end() ? 1 : LengthOfText(*quotes);
    if (m_rest[0] == '#') length = std::min(m_rest.find('\n'), m_rest.size());
    const std::string_view piece = m_rest.substr(0, length);
    m_rest.remove_prefix(length);
    return piece;
  }

  // A text that is not closed ends with its line, or with the file when it may have several lines.
  std::size_t LengthOfText(std::string_view quotes) const {
    for (std::size_t at = quotes.size(); at < m_rest.size(); ++at) {
      if (m_rest.substr(at).starts_with(quotes)) return at + quotes.size();
      if (m_rest[at] == '\n' && quotes.size() == 1) return at;
      if (m_rest[at] == '\\' && quotes[0] == '"') ++at;
    }
    return m_rest.size();
  }

  std::string_view m_rest;
};

}  // namespace

JobValue::Table ParseJobText(std::string_view text, const std::string& file) {
  if (const std::uint64_t line = KeyLengthCheck(text).Line(); line != 0) {
    throw JobError(JobMessages::NotToml(file, line, "a key has too many parts"));
  }
  const toml::parse_result result = toml::parse(text);
  if (result) return EntriesOf(result.table());
  const toml::parse_error& error = result.error();
  throw JobError(JobMessages::NotToml(file, error.source().begin.line, FaultOf(error)));
}

}  // namespace orv
