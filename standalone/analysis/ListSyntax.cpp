#include "standalone/analysis/ListSyntax.h"

#include <algorithm>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/DefinitionMessages.h"

namespace orv {

namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Quoted(std::string_view item) {
  std::string quoted = "\"";
  for (const char c : item) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

class ListParser {
 public:
  ListParser(const std::string& option, std::string_view text) : m_option(option), m_text(text), m_rest(text) {}

  // The item up to one of the signs or the end; empty when there is none.
  std::string TakeItem(std::string_view signs) {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(kBlanks), m_rest.size()));
    if (m_rest.starts_with('"')) return TakeQuoted(signs);
    const std::string_view item = m_rest.substr(0, m_rest.find_first_of(signs));
    m_rest.remove_prefix(item.size());
    return std::string(Trim(item));
  }

  bool TakeSign(char sign) {
    if (!m_rest.starts_with(sign)) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  std::vector<std::string> TakeList() {
    std::vector<std::string> items;
    do {
      items.push_back(TakeItem(","));
      if (items.back().empty()) Fail(DefinitionMessages::EmptyListItem(m_option, std::string(m_text)));
    } while (TakeSign(','));
    return items;
  }

  std::string_view Rest() const { return m_rest; }

 private:
  [[noreturn]] static void Fail(const std::string& message) { throw DefinitionError(message); }

  std::string TakeQuoted(std::string_view signs) {
    std::string item;
    for (std::size_t i = 1; i < m_rest.size(); ++i) {
      if (m_rest[i] != '"') {
        item += m_rest[i];
      } else if (m_rest.substr(i + 1).starts_with('"')) {
        item += m_rest[i++];
      } else {
        m_rest = Trim(m_rest.substr(i + 1));
        if (!m_rest.empty() && signs.find(m_rest[0]) == std::string_view::npos) break;
        return item;
      }
    }
    Fail(DefinitionMessages::MisplacedQuote(m_option, std::string(m_text)));
  }

  const std::string& m_option;
  std::string_view m_text;
  std::string_view m_rest;
};

CodeAssignment ParseAssignment(const std::string& option, std::string_view text, bool takesList) {
  ListParser parser(option, text);
  CodeAssignment assignment;
  assignment.Factor = parser.TakeItem("=");
  if (assignment.Factor.empty() || !parser.TakeSign('=') || Trim(parser.Rest()).empty()) {
    const std::string form = takesList ? "FACTOR=CODE,CODE" : "FACTOR=CODE";
    throw DefinitionError(DefinitionMessages::MalformedAssignment(option, std::string(text), form));
  }
  assignment.Codes = takesList ? parser.TakeList() : std::vector<std::string>{parser.TakeItem({})};
  return assignment;
}

}  // namespace

std::vector<std::string> SplitList(const std::string& option, std::string_view text) {
  return ListParser(option, text).TakeList();
}

CodeAssignment ParseCodes(const std::string& option, std::string_view text) {
  return ParseAssignment(option, text, true);
}

CodeAssignment ParseReference(const std::string& option, std::string_view text) {
  return ParseAssignment(option, text, false);
}

std::vector<CodeAssignment> ParseValues(const std::string& option, std::string_view text) {
  ListParser parser(option, text);
  std::vector<CodeAssignment> values;
  do {
    CodeAssignment assignment;
    assignment.Factor = parser.TakeItem("=,");
    if (parser.TakeSign('=')) assignment.Codes = {parser.TakeItem(",")};
    if (assignment.Factor.empty() || assignment.Codes.empty() || assignment.Codes[0].empty()) {
      throw DefinitionError(DefinitionMessages::MalformedAssignment(option, std::string(text), "V=X, V=X"));
    }
    values.push_back(std::move(assignment));
  } while (parser.TakeSign(','));
  return values;
}

std::string ListItem(std::string_view item) {
  return item.find(',') == std::string_view::npos ? std::string(item) : Quoted(item);
}

std::string AssignmentText(const CodeAssignment& assignment) {
  const auto item = [](std::string_view text) {
    const bool isPlain = Trim(text) == text && !text.starts_with('"') && text.find_first_of(",=") == std::string::npos;
    return isPlain ? std::string(text) : Quoted(text);
  };
  std::string text = item(assignment.Factor);
  for (std::size_t k = 0; k < assignment.Codes.size(); ++k) text += (k == 0 ? '=' : ',') + item(assignment.Codes[k]);
  return text;
}

}  // namespace orv
