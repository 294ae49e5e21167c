#include "standalone/analysis/EffectSyntax.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/DefinitionMessages.h"

namespace orv {

namespace {

constexpr std::string_view kSigns = ",*()\"";
constexpr std::string_view kBlanks = " \t";

class EffectParser {
 public:
  explicit EffectParser(std::string_view text) : m_text(text) {}

  std::vector<WrittenEffect> Parse() {
    std::vector<WrittenEffect> effects;
    do {
      effects.push_back(ParseEffect());
    } while (Take(','));
    SkipBlanks();
    if (m_at < m_text.size()) {
      Fail(effects.back().Nesting.empty() ? "expected \"*\", \"(\", \",\" or the end" : "expected \",\" or the end");
    }
    return effects;
  }

 private:
  WrittenEffect ParseEffect() {
    SkipBlanks();
    const std::size_t start = m_at;
    WrittenEffect effect;
    effect.Crossed = ParseNames();
    if (Take('(')) {
      effect.Nesting = ParseNames();
      if (!Take(')')) Fail("expected \")\" or \"*\"");
      SkipBlanks();
      if (m_at < m_text.size() && m_text[m_at] == '*') {
        Fail("a cross goes before the parenthesis: write c*a(b) for a(b)*c");
      }
    }
    const std::string_view written = m_text.substr(start, m_at - start);
    effect.Text = written.substr(0, written.find_last_not_of(kBlanks) + 1);
    return effect;
  }

  std::vector<std::string> ParseNames() {
    std::vector<std::string> names;
    do {
      names.push_back(ParseName());
    } while (Take('*'));
    return names;
  }

  std::string ParseName() {
    SkipBlanks();
    if (m_at < m_text.size() && m_text[m_at] == '"') return ParseQuotedName();
    const std::size_t end = std::min(m_text.find_first_of(kSigns, m_at), m_text.size());
    std::string_view name = m_text.substr(m_at, end - m_at);
    name = name.substr(0, name.find_last_not_of(kBlanks) + 1);
    if (name.empty()) Fail("expected the name of a covariate or factor");
    m_at = end;
    return std::string(name);
  }

  std::string ParseQuotedName() {
    const std::size_t open = m_at;
    std::string name;
    for (++m_at; m_at < m_text.size(); ++m_at) {
      if (m_text[m_at] != '"') {
        name += m_text[m_at];
      } else if (m_at + 1 < m_text.size() && m_text[m_at + 1] == '"') {
        name += m_text[m_at++];
      } else {
        ++m_at;
        return name;
      }
    }
    m_at = open;
    Fail("the quote that opens here is not closed");
  }

  bool Take(char sign) {
    SkipBlanks();
    if (m_at >= m_text.size() || m_text[m_at] != sign) return false;
    ++m_at;
    return true;
  }

  void SkipBlanks() {
    while (m_at < m_text.size() && kBlanks.find(m_text[m_at]) != std::string_view::npos) ++m_at;
  }

  // From 1, in characters of UTF-8: bytes that continue a character do not count.
  std::ptrdiff_t CharacterNumber() const {
    const std::string_view before = m_text.substr(0, m_at);
    return 1 + std::count_if(before.begin(), before.end(), [](char c) { return (c & 0xC0) != 0x80; });
  }

  [[noreturn]] void Fail(const std::string& problem) const {
    const std::string place = m_at < m_text.size() ? fmt::format("at character {}", CharacterNumber()) : "at the end";
    throw DefinitionError(DefinitionMessages::EffectSyntax(std::string(m_text), place, problem));
  }

  std::string_view m_text;
  std::size_t m_at = 0;
};

}  // namespace

std::vector<WrittenEffect> ParseEffects(std::string_view text) {
  return EffectParser(text).Parse();
}

std::string EffectName(const WrittenEffect& effect) {
  std::string crossed = fmt::format("{}", fmt::join(effect.Crossed, "*"));
  if (effect.Nesting.empty()) return crossed;
  return fmt::format("{}({})", crossed, fmt::join(effect.Nesting, "*"));
}

}  // namespace orv
