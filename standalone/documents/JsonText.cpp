#include "standalone/documents/JsonText.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace orv {
namespace {

constexpr std::size_t LineLength = 120;
constexpr std::size_t IndentStep = 2;

std::string Quoted(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

std::string ShortestNumberText(double number) {
  // Readers take "-0" for the integer 0 and lose its sign.
  if (number == 0.0) return std::signbit(number) ? "-0.0" : "0";
  char digits[32];
  const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, number);
  return {digits, result.ptr};
}

void JsonText::NewLine() {
  m_text += '\n';
  m_lineStart = m_text.size();
  m_text.append(IndentStep * m_open.size(), ' ');
}

void JsonText::StartElement(std::size_t length) {
  if (m_afterKey) {
    m_afterKey = false;
    return;
  }
  if (m_open.empty()) return;
  Container& container = m_open.back();
  if (!container.IsEmpty) m_text += ',';
  const bool lineIsFull = m_text.size() - m_lineStart + length + 1 > LineLength;
  if (container.Layout == JsonLayout::Lines || (container.Layout == JsonLayout::Filled && lineIsFull)) {
    NewLine();
  } else if (!container.IsEmpty || container.Close == '}') {
    m_text += ' ';
  }
  container.IsEmpty = false;
}

void JsonText::Begin(char open, char close, JsonLayout layout) {
  StartElement(1);
  if (!m_open.empty() && m_open.back().Layout != JsonLayout::Lines) layout = JsonLayout::Line;
  m_text += open;
  m_open.push_back({close, layout, true});
}

void JsonText::End() {
  const Container container = m_open.back();
  m_open.pop_back();
  if (!container.IsEmpty) {
    if (container.Layout == JsonLayout::Lines) {
      NewLine();
    } else if (container.Close == '}') {
      m_text += ' ';
    }
  }
  m_text += container.Close;
}

void JsonText::Key(std::string_view name) {
  const std::string text = Quoted(name);
  StartElement(text.size());
  m_text += text;
  m_text += ": ";
  m_afterKey = true;
}

void JsonText::Value(std::string_view text) {
  StartElement(text.size());
  m_text += text;
}

void JsonText::String(std::string_view text) {
  Value(Quoted(text));
}

void JsonText::Number(double number) {
  Value(std::isfinite(number) ? ShortestNumberText(number) : "null");
}

void JsonText::Integer(int number) {
  Value(std::to_string(number));
}

void JsonText::Boolean(bool value) {
  Value(value ? "true" : "false");
}

std::string JsonText::Take() {
  m_text += '\n';
  m_lineStart = 0;
  return std::exchange(m_text, {});
}

}  // namespace orv
