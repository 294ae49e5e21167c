#include "standalone/formula/FormulaError.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "standalone/documents/Utf8.h"

namespace orv {

std::size_t CharacterNumber(std::string_view text, std::size_t position) {
  std::size_t number = 1;
  for (std::size_t at = 0; at < text.size(); ++number) {
    at += DecodeUtf8(text, at).Length;
    if (at > position) break;
  }
  return number;
}

FormulaError::FormulaError(std::string_view formula, std::size_t position, FormulaFault fault)
    : std::runtime_error(fmt::format("at character {}: {}", CharacterNumber(formula, position), fault.Sentence)),
      m_fault(std::move(fault)),
      m_position(position),
      m_character(CharacterNumber(formula, position)) {}

}  // namespace orv
