#include "standalone/documents/CsvText.h"

#include <cmath>

#include "standalone/documents/JsonText.h"
#include "standalone/documents/Utf8.h"

namespace orv {

void CsvText::Text(std::string_view text) {
  BeginField();
  const bool isQuoted = text.find_first_of(",\"\r\n") != std::string_view::npos;
  if (isQuoted) m_text += '"';
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    at += character.Length;
    if (character.CodePoint == '"') m_text += '"';
    AppendUtf8(m_text, character.CodePoint == 0 ? ReplacementCharacter : character.CodePoint);
  }
  if (isQuoted) m_text += '"';
}

void CsvText::Number(double number) {
  BeginField();
  if (std::isnan(number)) return;
  if (std::isinf(number)) {
    m_text += number < 0 ? "-inf" : "inf";
  } else {
    m_text += ShortestNumberText(number);
  }
}

void CsvText::EndRecord() {
  m_text += '\n';
  m_isFirst = true;
}

void CsvText::BeginField() {
  if (!m_isFirst) m_text += ',';
  m_isFirst = false;
}

}  // namespace orv
