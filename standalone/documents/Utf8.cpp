// Well-formed sequences after the Unicode Standard, table 3-7.
#include "standalone/documents/Utf8.h"

#include <algorithm>

namespace orv {
namespace {

unsigned ByteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool IsContinuation(unsigned byte) {
  return (byte & 0xC0U) == 0x80U;
}

// Bytes of the character that a first byte announces, 0 when it can start none.
std::size_t AnnouncedLength(unsigned firstByte) {
  if (firstByte < 0x80U) return 1;
  if (firstByte >= 0xC2U && firstByte <= 0xDFU) return 2;
  if (firstByte >= 0xE0U && firstByte <= 0xEFU) return 3;
  if (firstByte >= 0xF0U && firstByte <= 0xF4U) return 4;
  return 0;
}

// The smallest code point that needs this many bytes.
char32_t SmallestOfLength(std::size_t length) {
  if (length == 4) return 0x10000;
  if (length == 3) return 0x800;
  return length == 2 ? 0x80 : 0;
}

}  // namespace

Utf8Character DecodeUtf8(std::string_view text, std::size_t at) {
  const unsigned first = ByteAt(text, at);
  const std::size_t length = AnnouncedLength(first);
  if (length == 0 || at + length > text.size()) return {};
  if (length == 1) return {static_cast<char32_t>(first), 1};
  char32_t codePoint = first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned byte = ByteAt(text, at + i);
    if (!IsContinuation(byte)) return {};
    codePoint = (codePoint << 6U) | (byte & 0x3FU);
  }
  const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  if (surrogate || codePoint < SmallestOfLength(length) || codePoint > 0x10FFFF) return {};
  return {codePoint, length};
}

void AppendUtf8(std::string& text, char32_t codePoint) {
  const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU)); };
  if (codePoint < 0x80) {
    text += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    text += static_cast<char>(0xC0U | (codePoint >> 6U));
    tail(0);
  } else if (codePoint < 0x10000) {
    text += static_cast<char>(0xE0U | (codePoint >> 12U));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | (codePoint >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

void DropIncompleteCharacter(std::string& text) {
  // No character has more than four bytes, so a cut one shows its first byte among the last three.
  const std::size_t reach = std::min<std::size_t>(3, text.size());
  for (std::size_t back = 1; back <= reach; ++back) {
    const unsigned byte = ByteAt(text, text.size() - back);
    if (IsContinuation(byte)) continue;
    if (AnnouncedLength(byte) > back) text.resize(text.size() - back);
    return;
  }
}

}  // namespace orv
