// What compiling a formula throws.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// What is wrong in a formula, without its place. The texts are made in FormulaMessages.h.
struct FormulaFault {
  std::string Sentence;              // for a person: found what, expected what, the way out
  std::string Found;                 // as the sentence shows it; empty where nothing in particular was found
  std::string Expected;              // the same; empty where the sentence does not say
  std::vector<std::string> Nearest;  // names that may have been meant, nearest first
};

// A formula cannot be compiled. what() is "at character 7: " and the sentence of the fault; it names neither the
// formula nor the option that it came from, which the caller knows.
class FormulaError : public std::runtime_error {
 public:
  // `formula` is the whole text, `position` a byte in it, or its size when the fault is at the end.
  FormulaError(std::string_view formula, std::size_t position, FormulaFault fault);

  const FormulaFault& Fault() const { return m_fault; }
  std::size_t Position() const { return m_position; }    // byte, from 0
  std::size_t Character() const { return m_character; }  // character, from 1

 private:
  FormulaFault m_fault;
  std::size_t m_position;
  std::size_t m_character;
};

// The number, from 1, of the character that holds a byte, or one more than there are when `position` is the size.
std::size_t CharacterNumber(std::string_view text, std::size_t position);

}  // namespace orv
