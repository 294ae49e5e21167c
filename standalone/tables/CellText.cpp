#include "standalone/tables/CellText.h"

#include <charconv>
#include <optional>
#include <system_error>

#include "standalone/tables/IsoDate.h"
#include "standalone/tables/MemoryTable.h"

namespace orv {
namespace {

constexpr std::size_t kThousands = 3;  // digits between two marks

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsSign(char c) {
  return c == '+' || c == '-';
}

// `lower` is in lower case.
bool EqualsIgnoringCase(std::string_view text, std::string_view lower) {
  if (text.size() != lower.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != lower[i]) return false;
  }
  return true;
}

// Number, with its value, or OutOfRange when the whole text is a decimal number. from_chars alone would take "inf" and
// "nan" too and would refuse a plus sign. Kind and value come back apart: put together into a record and taken out of
// it again they would wait for each other in memory, which takes longer than reading a short number.
std::optional<CellKind> ReadNumber(std::string_view text, double& value) {
  const char* begin = text.data();
  const char* const end = begin + text.size();
  const char* digits = begin + (IsSign(*begin) ? 1 : 0);
  if (digits == end || !(IsDigit(*digits) || *digits == '.')) return std::nullopt;
  if (*begin == '+') ++begin;
  const auto result = std::from_chars(begin, end, value);
  if (result.ptr != end || result.ec == std::errc::invalid_argument) return std::nullopt;
  return result.ec == std::errc::result_out_of_range ? CellKind::OutOfRange : CellKind::Number;
}

std::size_t DigitsAt(std::string_view text, std::size_t from) {
  std::size_t end = from;
  while (end < text.size() && IsDigit(text[end])) ++end;
  return end - from;
}

// The length of the digits at `from` when they are grouped in thousands by `mark`, as in 1.234.567; 0 without a mark.
std::size_t GroupedDigitsAt(std::string_view text, std::size_t from, char mark) {
  const std::size_t first = DigitsAt(text, from);
  if (first == 0 || first > kThousands) return 0;
  std::size_t end = from + first;
  while (end < text.size() && text[end] == mark && DigitsAt(text, end + 1) == kThousands) end += kThousands + 1;
  return end == from + first ? 0 : end - from;
}

// True when nothing, or only an exponent, stands at `from`.
bool EndsOrHasExponentAt(std::string_view text, std::size_t from) {
  if (from == text.size()) return true;
  if (text[from] != 'e' && text[from] != 'E') return false;
  ++from;
  if (from < text.size() && IsSign(text[from])) ++from;
  const std::size_t digits = DigitsAt(text, from);
  return digits > 0 && from + digits == text.size();
}

bool HasDecimalComma(std::string_view text) {
  const std::size_t grouped = GroupedDigitsAt(text, 0, '.');
  const std::size_t whole = grouped > 0 ? grouped : DigitsAt(text, 0);
  if (whole == text.size() || text[whole] != ',') return false;
  const std::size_t decimals = DigitsAt(text, whole + 1);
  return whole + decimals > 0 && EndsOrHasExponentAt(text, whole + 1 + decimals);
}

bool HasCommasBetweenThousands(std::string_view text) {
  std::size_t end = GroupedDigitsAt(text, 0, ',');
  if (end == 0) return false;
  if (end < text.size() && text[end] == '.') end += 1 + DigitsAt(text, end + 1);
  return EndsOrHasExponentAt(text, end);
}

std::string_view WithoutSign(std::string_view text) {
  return IsSign(text[0]) ? text.substr(1) : text;
}

}  // namespace

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool IsMissingText(std::string_view trimmed) {
  return trimmed.empty() || trimmed == "." || EqualsIgnoringCase(trimmed, "na") || EqualsIgnoringCase(trimmed, "nan");
}

Cell ReadCell(std::string_view text) {
  text = TrimBlanks(text);
  if (text.empty()) return {CellKind::Missing, kMissingCode};
  double value = 0.0;
  const std::optional<CellKind> number = ReadNumber(text, value);
  if (number == CellKind::Number) return {CellKind::Number, value};
  if (number == CellKind::OutOfRange) return {CellKind::OutOfRange, kMissingCode};
  if (IsMissingText(text)) return {CellKind::Missing, kMissingCode};
  if (LooksLikeIsoDate(text)) {
    const auto day = DayNumber(text);
    return day ? Cell{CellKind::Date, static_cast<double>(*day)} : Cell{CellKind::NoSuchDay, kMissingCode};
  }
  const std::string_view unsignedText = WithoutSign(text);
  if (EqualsIgnoringCase(unsignedText, "inf") || EqualsIgnoringCase(unsignedText, "infinity"))
    return {CellKind::NotFinite, kMissingCode};
  if (HasDecimalComma(unsignedText) || HasCommasBetweenThousands(unsignedText))
    return {CellKind::CommaNumber, kMissingCode};
  return {CellKind::Text, kMissingCode};
}

}  // namespace orv
