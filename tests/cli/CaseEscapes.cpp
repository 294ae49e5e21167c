// Bytes that cannot stand in a text case as they are.
#include <algorithm>
#include <charconv>
#include <cstddef>

#include "cli/CaseFile.h"

namespace orv::testing {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The bytes at the start of `text` that a reader sees as they are: one printable character of UTF-8, a tab or a line
// break. 0 when there is none.
std::size_t PlainCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return (first >= 0x20 && first != 0x7F) || first == '\n' || first == '\t' ? 1 : 0;
  const std::size_t size = first >= 0xF0 && first < 0xF5 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
  if (size == 0 || first >= 0xF5 || text.size() < size || text.starts_with(kByteOrderMark)) return 0;
  for (const char c : text.substr(1, size - 1)) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) return 0;
  }
  return size;
}

std::string HexEscape(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return {'\\', 'x', kHexDigits[byte / 16], kHexDigits[byte % 16]};
}

char HexValue(std::string_view text, std::size_t at) {
  int value = 0;
  const std::string_view digits = text.substr(std::min(at, text.size()), 2);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2) {
    throw CaseFileError("\\x needs two hexadecimal digits");
  }
  return static_cast<char>(value);
}

}  // namespace

std::string Unescape(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    ++i;
    const char code = i < text.size() ? text[i] : ' ';
    switch (code) {
      case '\n':
        break;
      case 'n':
        bytes += '\n';
        break;
      case 'r':
        bytes += '\r';
        break;
      case 't':
        bytes += '\t';
        break;
      case '0':
        bytes += '\0';
        break;
      case '\\':
        bytes += '\\';
        break;
      case 'x':
        bytes += HexValue(text, i + 1);
        i += 2;
        break;
      default:
        throw CaseFileError("a backslash stands before n, r, t, 0, x, \\ or the end of a line");
    }
  }
  return bytes;
}

std::string Escape(std::string_view bytes) {
  std::string text;
  bool lineStart = true;
  while (!bytes.empty()) {
    const char c = bytes[0];
    std::size_t size = PlainCharacter(bytes);
    // A line that begins so might be taken for a section.
    if (lineStart && (c == '$' || c == '-')) size = 0;
    if (c == '\\') {
      text += "\\\\";
    } else if (c == '\r') {
      text += "\\r";
    } else if (c == '\0') {
      text += "\\0";
    } else {
      text += size == 0 ? HexEscape(c) : std::string(bytes.substr(0, size));
    }
    lineStart = c == '\n';
    bytes.remove_prefix(std::max<std::size_t>(size, 1));
  }
  if (!text.empty() && text.back() != '\n') text += "\\\n";
  return text;
}

bool IsPlainText(std::string_view bytes) {
  if (!bytes.empty() && bytes.back() != '\n') return false;
  while (!bytes.empty()) {
    const std::size_t size = PlainCharacter(bytes);
    if (size == 0) return false;
    bytes.remove_prefix(size);
  }
  return true;
}

}  // namespace orv::testing
