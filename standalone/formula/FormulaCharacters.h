// FormulaCharacters: which characters a name may hold, and when two names differ by case only.
//
// Texts are UTF-8. Nothing here depends on the locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orv {

// Space, tab, line breaks and the no-break space, which word processors put in.
bool IsFormulaBlank(char32_t character);

bool IsDigit(char character);

// True for what a name may hold without quotes: letters and digits of any script, "_" and ".". Beyond ASCII that is all
// but punctuation, mathematical and other signs.
bool IsNameCharacter(char32_t character);

// The bytes of the longest run of name characters from byte `at` on.
std::size_t NameLength(std::string_view text, std::size_t at);

// The text with capital letters as small ones: the Latin, Greek and Cyrillic letters that pair one to one. Other
// characters, and bytes that are no UTF-8, stay as they are.
std::string FoldCase(std::string_view text);

// True when the texts are the same but for the case of their letters.
bool SameButForCase(std::string_view a, std::string_view b);

}  // namespace orv
