// The pairs of capital and small letters after the Unicode Character Database, simple case mappings.
#include "standalone/formula/FormulaCharacters.h"

#include <algorithm>

#include "standalone/documents/Utf8.h"

namespace orv {
namespace {

struct Range {
  char32_t First;
  char32_t Last;
};

// Characters beyond ASCII that are no part of a name.
constexpr Range kSigns[] = {
    {0x0080, 0x00A9},  // controls, the no-break space, punctuation and signs
    {0x00AB, 0x00B4}, {0x00B6, 0x00B9},    {0x00BB, 0x00BF}, {0x00D7, 0x00D7},  // multiplication sign
    {0x00F7, 0x00F7},                                                           // division sign
    {0x2000, 0x206F},                                                           // blanks, dashes, typographic quotes
    {0x2070, 0x209C},                                                           // raised and lowered digits
    {0x20A0, 0x20CF},                                                           // currencies
    {0x2190, 0x2BFF},                                         // arrows, mathematical operators, other signs
    {0x3000, 0x3004}, {0x3008, 0x3020},    {0xE000, 0xF8FF},  // private use
    {0xFEFF, 0xFEFF},                                         // byte-order mark
    {0xFFF0, 0xFFFF}, {0xF0000, 0x10FFFF},
};

// Capital letters whose small ones stand at a fixed distance.
struct CapitalRange {
  char32_t First;
  char32_t Last;
  char32_t Distance;
};

constexpr CapitalRange kCapitals[] = {
    {'A', 'Z', 32},       {0x00C0, 0x00D6, 32}, {0x00D8, 0x00DE, 32}, {0x0386, 0x0386, 38},
    {0x0388, 0x038A, 37}, {0x038C, 0x038C, 64}, {0x038E, 0x038F, 63}, {0x0391, 0x03A1, 32},
    {0x03A3, 0x03AB, 32}, {0x0400, 0x040F, 80}, {0x0410, 0x042F, 32},
};

// Stretches where a capital letter is followed by its small one.
struct PairRange {
  char32_t FirstCapital;
  char32_t LastCapital;
};

constexpr PairRange kPairs[] = {
    {0x0100, 0x012E}, {0x0132, 0x0136}, {0x0139, 0x0147}, {0x014A, 0x0176}, {0x0179, 0x017D}, {0x0218, 0x021E},
    {0x0460, 0x0480}, {0x048A, 0x04BE}, {0x04D0, 0x052E}, {0x1E00, 0x1E94}, {0x1EA0, 0x1EFE},
};

constexpr char32_t kCapitalYWithDiaeresis = 0x0178;
constexpr char32_t kSmallYWithDiaeresis = 0x00FF;
constexpr char32_t kFinalSigma = 0x03C2;
constexpr char32_t kSigma = 0x03C3;

char32_t SmallLetter(char32_t character) {
  for (const CapitalRange& range : kCapitals) {
    if (character >= range.First && character <= range.Last) return character + range.Distance;
  }
  for (const PairRange& range : kPairs) {
    if (character >= range.FirstCapital && character <= range.LastCapital)
      return (character - range.FirstCapital) % 2 == 0 ? character + 1 : character;
  }
  if (character == kCapitalYWithDiaeresis) return kSmallYWithDiaeresis;
  return character == kFinalSigma ? kSigma : character;
}

}  // namespace

bool IsFormulaBlank(char32_t character) {
  constexpr char32_t kNoBreakSpace = 0xA0;
  return character == ' ' || (character >= '\t' && character <= '\r') || character == kNoBreakSpace;
}

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

bool IsNameCharacter(char32_t character) {
  if (character < 0x80) {
    const bool letter = (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
    return letter || (character >= '0' && character <= '9') || character == '_' || character == '.';
  }
  return std::none_of(std::begin(kSigns), std::end(kSigns),
                      [&](const Range& range) { return character >= range.First && character <= range.Last; });
}

std::size_t NameLength(std::string_view text, std::size_t at) {
  const std::size_t start = at;
  while (at < text.size()) {
    const Utf8Character character = DecodeUtf8(text, at);
    if (!IsNameCharacter(character.CodePoint)) break;
    at += character.Length;
  }
  return at - start;
}

std::string FoldCase(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    const char32_t small = SmallLetter(character.CodePoint);
    if (small == character.CodePoint) {
      folded += text.substr(at, character.Length);
    } else {
      AppendUtf8(folded, small);
    }
    at += character.Length;
  }
  return folded;
}

bool SameButForCase(std::string_view a, std::string_view b) {
  return FoldCase(a) == FoldCase(b);
}

}  // namespace orv
