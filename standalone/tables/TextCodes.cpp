#include "standalone/tables/TextCodes.h"

#include <algorithm>
#include <utility>

namespace orv {

double TextCodes::CodeOf(std::string_view text) {
  const auto found = m_codes.find(text);
  if (found != m_codes.end()) return found->second;
  const int code = static_cast<int>(m_codes.size()) + 1;
  m_codes.emplace(text, code);
  return code;
}

std::vector<ValueLabel> TextCodes::Sort(std::vector<double>& values) {
  std::vector<std::pair<std::string, int>> texts;  // with their provisional codes
  texts.reserve(m_codes.size());
  while (!m_codes.empty()) {
    auto node = m_codes.extract(m_codes.begin());
    texts.emplace_back(std::move(node.key()), node.mapped());
  }
  std::sort(texts.begin(), texts.end());

  std::vector<double> finalCode(texts.size() + 1);
  std::vector<ValueLabel> labels;
  labels.reserve(texts.size());
  for (auto& [text, provisional] : texts) {
    const double code = static_cast<double>(labels.size()) + 1.0;
    finalCode[static_cast<std::size_t>(provisional)] = code;
    labels.push_back({code, std::move(text)});
  }
  for (double& value : values) {
    if (value > 0.0) value = finalCode[static_cast<std::size_t>(value)];
  }
  return labels;
}

}  // namespace orv
