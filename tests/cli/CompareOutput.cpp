#include "cli/CompareOutput.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace orv::testing {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.';
}

// The length of the number at the start of `text`, 0 when there is none.
std::size_t NumberAt(std::string_view text, double& value) {
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  if (text.size() <= sign || !IsDigit(text[sign])) return 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() ? static_cast<std::size_t>(end - text.data()) : 0;
}

bool Agree(double a, double b, int digits) {
  constexpr double kRoundingOfOne = 1e-15;
  const double tolerance = std::pow(10.0, -digits) * std::max(std::abs(a), std::abs(b));
  return std::abs(a - b) <= std::max(tolerance, kRoundingOfOne);
}

bool SameLine(std::string_view expected, std::string_view actual, int digits) {
  if (digits == 0) return expected == actual;
  char before = ' ';
  while (!expected.empty() && !actual.empty()) {
    double a = 0.0;
    double b = 0.0;
    const std::size_t lengthA = IsWordCharacter(before) ? 0 : NumberAt(expected, a);
    const std::size_t lengthB = IsWordCharacter(before) ? 0 : NumberAt(actual, b);
    if (lengthA > 0 && lengthB > 0) {
      if (!Agree(a, b, digits)) return false;
      before = '0';
      expected.remove_prefix(lengthA);
      actual.remove_prefix(lengthB);
      continue;
    }
    if (expected[0] != actual[0]) return false;
    before = expected[0];
    expected.remove_prefix(1);
    actual.remove_prefix(1);
  }
  return expected.empty() && actual.empty();
}

std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size() - 1);
  const std::string_view line = text.substr(0, end + 1);
  text.remove_prefix(line.size());
  return line;
}

// A line for a person: what cannot be seen is made visible.
std::string Shown(std::string_view line) {
  std::string shown;
  const bool hasBreak = line.ends_with('\n');
  if (hasBreak) line.remove_suffix(1);
  for (const char c : line) {
    if (c == '\r') {
      shown += "\\r";
    } else if (c == '\0') {
      shown += "\\0";
    } else {
      shown += c;
    }
  }
  return "|" + shown + (hasBreak ? "|" : "| (no line break)");
}

}  // namespace

std::string CompareOutput(std::string_view expected, std::string_view actual, int digits) {
  for (int line = 1; !expected.empty() || !actual.empty(); ++line) {
    const std::string where = "line " + std::to_string(line) + ":\n";
    if (actual.empty()) return where + "  expected " + Shown(TakeLine(expected)) + "\n  but the output ends\n";
    if (expected.empty()) return where + "  expected the end\n  but got  " + Shown(TakeLine(actual)) + "\n";
    const std::string_view wanted = TakeLine(expected);
    const std::string_view got = TakeLine(actual);
    if (!SameLine(wanted, got, digits)) {
      return where + "  expected " + Shown(wanted) + "\n  but got  " + Shown(got) + "\n";
    }
  }
  return {};
}

}  // namespace orv::testing
