// TextCheck: whether the bytes of a file are UTF-8 text.
#pragma once

#include <cstddef>
#include <string_view>

namespace orv {

enum class TextFault { None, ZeroByte, NotUtf8 };

// Takes a file block by block, in order. A character may be cut by the end of a block.
// Source of the byte ranges: The Unicode Standard, table 3-7 (well-formed UTF-8 byte sequences).
class TextCheck {
 public:
  struct Finding {
    TextFault Fault = TextFault::None;
    std::size_t Offset = 0;  // in the block: where the fault was seen
  };

  // The first fault of a block. After a fault the object is not to be used further.
  Finding Check(std::string_view block);
  // False when the file ended within a character.
  bool AtEndOfCharacter() const { return m_following == 0; }

 private:
  bool Accept(unsigned char byte);

  int m_following = 0;            // bytes that the open character still needs
  unsigned char m_lowest = 0x80;  // what the next of them may be
  unsigned char m_highest = 0xBF;
};

// True when a whole text is UTF-8 without a zero byte.
bool IsSoundText(std::string_view text);

}  // namespace orv
