#include "standalone/jobs/TomlText.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <charconv>
#include <cstdint>
#include <optional>

#include "standalone/analysis/TableCodes.h"
#include "standalone/documents/JsonText.h"

namespace orv {

namespace {

constexpr std::size_t kLongestLine = 100;
constexpr std::string_view kLettersOfNames = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";

// A whole number as std::to_string writes it.
bool IsWholeNumber(const std::string& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && std::to_string(number) == text;
}

}  // namespace

std::string TomlString(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    constexpr unsigned char kDelete = 0x7F;
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (c == '\n') {
      quoted += "\\n";
    } else if (c == '\t') {
      quoted += "\\t";
    } else if (byte < ' ' || byte == kDelete) {
      quoted += fmt::format("\\u{:04X}", byte);
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string TomlName(std::string_view name) {
  const bool isBare = !name.empty() && name.find_first_not_of(kLettersOfNames) == std::string_view::npos;
  return isBare ? std::string(name) : TomlString(name);
}

std::string TomlNumber(double number) {
  std::string text = ShortestNumberText(number);
  // Without a point it would be a whole number, whose range is smaller.
  const bool isReal = text.find_first_of(".e") != std::string::npos;
  return isReal || IsWholeNumber(text) ? text : text + ".0";
}

std::string TomlCode(const std::string& text) {
  if (IsWholeNumber(text)) return text;
  const std::optional<double> number = ParseNumber(text);
  const bool isReal = number && text.find_first_of(".e") != std::string::npos && ShortestNumberText(*number) == text;
  return isReal ? text : TomlString(text);
}

std::string TomlList(const std::vector<std::string>& items) {
  std::string line = fmt::format("[{}]", fmt::join(items, ", "));
  if (line.size() <= kLongestLine || items.size() < 2) return line;
  return fmt::format("[\n  {},\n]", fmt::join(items, ",\n  "));
}

}  // namespace orv
