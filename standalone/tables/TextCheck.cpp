#include "standalone/tables/TextCheck.h"

#include <cstdint>
#include <cstring>

namespace orv {
namespace {

// True when all eight bytes are ASCII and none is zero. Subtracting 1 from every byte borrows into the top bit of a
// zero byte and, as long as no top bit was set before, of no byte below the first zero.
bool IsPlainAscii(std::uint64_t bytes) {
  constexpr std::uint64_t kTopBits = 0x8080808080808080U;
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  return ((bytes | (bytes - kOnes)) & kTopBits) == 0;
}

}  // namespace

// True when the byte may stand here.
bool TextCheck::Accept(unsigned char byte) {
  if (m_following > 0) {
    if (byte < m_lowest || byte > m_highest) return false;
    m_lowest = 0x80;
    m_highest = 0xBF;
    --m_following;
    return true;
  }
  if (byte < 0x80) return true;
  // C0, C1 and F5 and above begin no character; some first bytes narrow the range of the second, which keeps out
  // overlong forms, surrogates and numbers beyond U+10FFFF.
  if (byte < 0xC2 || byte > 0xF4) return false;
  m_following = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
  if (byte == 0xE0) m_lowest = 0xA0;
  if (byte == 0xED) m_highest = 0x9F;
  if (byte == 0xF0) m_lowest = 0x90;
  if (byte == 0xF4) m_highest = 0x8F;
  return true;
}

TextCheck::Finding TextCheck::Check(std::string_view block) {
  std::size_t i = 0;
  while (i < block.size()) {
    if (m_following == 0) {
      std::uint64_t eight = 0;
      while (i + sizeof eight <= block.size()) {
        std::memcpy(&eight, block.data() + i, sizeof eight);
        if (!IsPlainAscii(eight)) break;
        i += sizeof eight;
      }
      if (i == block.size()) break;
    }
    const char c = block[i];
    if (!Accept(static_cast<unsigned char>(c))) return {TextFault::NotUtf8, i};
    if (c == '\0') return {TextFault::ZeroByte, i};
    ++i;
  }
  return {};
}

bool IsSoundText(std::string_view text) {
  TextCheck check;
  return check.Check(text).Fault == TextFault::None && check.AtEndOfCharacter();
}

}  // namespace orv
