// Utf8: reading the characters of a text that should be UTF-8 but may hold any bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orv {

inline constexpr char32_t ReplacementCharacter = 0xFFFD;

struct Utf8Character {
  char32_t CodePoint = ReplacementCharacter;  // U+FFFD for bytes that form no character
  std::size_t Length = 1;                     // bytes to step over, at least 1
};

// The character that starts at byte `at` < text.size(). Overlong forms, surrogates, values above U+10FFFF and cut
// sequences are no characters; of those, one byte is stepped over at a time.
Utf8Character DecodeUtf8(std::string_view text, std::size_t at);

void AppendUtf8(std::string& text, char32_t codePoint);

// Removes the first bytes of a character whose other bytes were cut off from the end of the text.
void DropIncompleteCharacter(std::string& text);

}  // namespace orv
