#include "standalone/formula/FormulaTokens.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "standalone/documents/Utf8.h"
#include "standalone/formula/FormulaCharacters.h"
#include "standalone/formula/FormulaMessages.h"

namespace orv {
namespace {

struct SignSpelling {
  std::string_view Text;
  TokenKind Kind;
};

// A longer sign before its beginning.
constexpr SignSpelling kSigns[] = {
    {"**", TokenKind::Power},
    {"*", TokenKind::Times},
    {"^", TokenKind::Power},
    {"+", TokenKind::Plus},
    {"-", TokenKind::Minus},
    {"/", TokenKind::Divide},
    {"==", TokenKind::Equal},
    {"=", TokenKind::Equal},
    {"!=", TokenKind::NotEqual},
    {"<>", TokenKind::NotEqual},
    {"<=", TokenKind::LessOrEqual},
    {"<", TokenKind::Less},
    {">=", TokenKind::GreaterOrEqual},
    {">", TokenKind::Greater},
    {"&&", TokenKind::And},
    {"&", TokenKind::And},
    {"||", TokenKind::Or},
    {"|", TokenKind::Or},
    {"(", TokenKind::Open},
    {")", TokenKind::Close},
    {",", TokenKind::Comma},
};

struct Spelling {
  std::string_view Found;
  std::string_view Write;
};

// Signs of other languages and of word processors that have one meaning only.
constexpr Spelling kOtherSpellings[] = {
    {"=>", ">="},     {"=<", "<="},      {"~=", "<>"},     {"!", "not"},
    {"~", "not"},     {"\u00AC", "not"},                   // not sign
    {"\u2260", "<>"},                                      // not equal to
    {"\u2264", "<="}, {"\u2265", ">="},  {"\u2212", "-"},  // minus sign
    {"\u2013", "-"},                                       // en dash
    {"\u2014", "-"},                                       // em dash
    {"\u00D7", "*"},                                       // multiplication sign
    {"\u00B7", "*"},                                       // middle dot
    {"\u00F7", "/"},                                       // division sign
    {"\u00B2", "^2"}, {"\u00B3", "^3"},  {"\u2018", "'"},  // typographic quotes
    {"\u2019", "'"},  {"\u201C", "\""},  {"\u201D", "\""}, {"\u201E", "\""},
};

struct WordOperator {
  std::string_view Word;
  TokenKind Kind;
};

constexpr WordOperator kWordOperators[] = {
    {"and", TokenKind::And},
    {"or", TokenKind::Or},
    {"not", TokenKind::Not},
};

TokenKind KindOfWord(std::string_view word) {
  constexpr std::size_t kLongest = 3;
  if (word.size() > kLongest) return TokenKind::Name;
  const std::string folded = FoldCase(word);
  for (const WordOperator& candidate : kWordOperators) {
    if (candidate.Word == folded) return candidate.Kind;
  }
  return TokenKind::Name;
}

}  // namespace

void FormulaTokens::Fail(std::size_t position, FormulaFault fault) const {
  throw FormulaError(m_formula, position, std::move(fault));
}

FormulaToken FormulaTokens::Next() {
  SkipBlanks();
  FormulaToken token;
  token.Position = m_at;
  if (m_at == m_formula.size()) return token;
  const char first = m_formula[m_at];
  if (AtNumber()) {
    token = Number();
  } else if (const std::size_t length = NameLength(m_formula, m_at); length > 0) {
    token = Word(length);
  } else if (first == '"' || first == '\'') {
    token = Quoted();
  } else if (first == '#') {
    token = VariableNumber();
  } else {
    token = Sign();
  }
  m_at += token.Length;
  return token;
}

void FormulaTokens::SkipBlanks() {
  while (m_at < m_formula.size()) {
    const Utf8Character character = DecodeUtf8(m_formula, m_at);
    if (!IsFormulaBlank(character.CodePoint)) return;
    m_at += character.Length;
  }
}

bool FormulaTokens::AtNumber() const {
  if (IsDigit(m_formula[m_at])) return true;
  return m_formula[m_at] == '.' && m_at + 1 < m_formula.size() && IsDigit(m_formula[m_at + 1]);
}

// The end of the longest number from here on: digits with a point, then an exponent if it has digits.
std::size_t FormulaTokens::NumberEnd() const {
  std::size_t at = m_at;
  const auto skipDigits = [&] {
    while (at < m_formula.size() && IsDigit(m_formula[at])) ++at;
  };
  skipDigits();
  if (at < m_formula.size() && m_formula[at] == '.') ++at;
  skipDigits();
  if (at == m_formula.size() || (m_formula[at] != 'e' && m_formula[at] != 'E')) return at;
  const std::size_t mantissaEnd = at++;
  if (at < m_formula.size() && (m_formula[at] == '+' || m_formula[at] == '-')) ++at;
  const std::size_t exponentStart = at;
  skipDigits();
  return at > exponentStart ? at : mantissaEnd;
}

FormulaToken FormulaTokens::Number() {
  const std::size_t end = NumberEnd();
  const std::size_t following = NameLength(m_formula, end);
  if (following > 0) {
    // Some names begin with a digit. One that holds the sign of an exponent is no name.
    const std::size_t wordLength = NameLength(m_formula, m_at);
    if (m_at + wordLength == end + following) return Word(wordLength);
    const std::string_view number = m_formula.substr(m_at, end - m_at);
    Fail(m_at, FormulaMessages::MalformedNumber(m_formula.substr(m_at, number.size() + following), number));
  }
  FormulaToken token;
  token.Kind = TokenKind::Number;
  token.Position = m_at;
  token.Length = end - m_at;
  const auto [unused, error] = std::from_chars(m_formula.data() + m_at, m_formula.data() + end, token.Value);
  if (error != std::errc()) Fail(m_at, FormulaMessages::NumberOutOfRange(m_formula.substr(m_at, token.Length)));
  return token;
}

FormulaToken FormulaTokens::Word(std::size_t length) const {
  FormulaToken token;
  token.Position = m_at;
  token.Length = length;
  token.Text = m_formula.substr(m_at, length);
  token.Kind = KindOfWord(token.Text);
  return token;
}

FormulaToken FormulaTokens::Quoted() const {
  const char quote = m_formula[m_at];
  FormulaToken token;
  token.Kind = TokenKind::Quoted;
  token.Position = m_at;
  for (std::size_t at = m_at + 1; at < m_formula.size(); ++at) {
    if (m_formula[at] == quote) {
      const bool doubled = at + 1 < m_formula.size() && m_formula[at + 1] == quote;
      if (!doubled) {
        token.Length = at + 1 - m_at;
        if (token.Text.empty()) Fail(m_at, FormulaMessages::NothingBetweenQuotes());
        return token;
      }
      ++at;
    }
    token.Text += m_formula[at];
  }
  Fail(m_at, FormulaMessages::UnclosedQuote(m_formula.substr(m_at, 1)));
}

FormulaToken FormulaTokens::VariableNumber() const {
  FormulaToken token;
  token.Kind = TokenKind::VariableNumber;
  token.Position = m_at;
  token.Length = 1 + NameLength(m_formula, m_at + 1);
  token.Text = m_formula.substr(m_at, token.Length);
  return token;
}

FormulaToken FormulaTokens::Sign() const {
  const std::string_view rest = m_formula.substr(m_at);
  FormulaToken token;
  token.Position = m_at;
  // "!=" is a sign of ours, "=>" only begins with one.
  if (!rest.starts_with("!=")) {
    for (const Spelling& other : kOtherSpellings) {
      if (rest.starts_with(other.Found)) Fail(m_at, FormulaMessages::OtherSpelling(other.Found, other.Write));
    }
  }
  for (const SignSpelling& sign : kSigns) {
    if (!rest.starts_with(sign.Text)) continue;
    token.Kind = sign.Kind;
    token.Length = sign.Text.size();
    return token;
  }
  const Utf8Character character = DecodeUtf8(m_formula, m_at);
  if (character.Length == 1 && character.CodePoint == ReplacementCharacter) Fail(m_at, FormulaMessages::NotUtf8());
  token.Kind = TokenKind::Unknown;
  token.Length = character.Length;
  return token;
}

std::string_view LeadingNumber(std::string_view word) {
  std::size_t length = 0;
  while (length < word.size() && IsDigit(word[length])) ++length;
  if (length + 1 < word.size() && word[length] == '.' && IsDigit(word[length + 1])) {
    ++length;
    while (length < word.size() && IsDigit(word[length])) ++length;
  }
  return word.substr(0, length);
}

}  // namespace orv
