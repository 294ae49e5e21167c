#include "standalone/analysis/CloseNames.h"

#include <algorithm>

#include "standalone/tables/NearestNames.h"

namespace orv {

namespace {

constexpr std::size_t kLettersForOneSlip = 3;  // one wrong letter is allowed for so many
constexpr std::size_t kShortestStart = 2;      // a start of a name tells something from so many letters on
constexpr std::size_t kShortestPart = 3;       // and any other part of it from so many

char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return LowerCase(c); });
  return lower;
}

bool HoldsOther(std::string_view name, std::string_view candidate) {
  const std::string a = LowerCase(name);
  const std::string b = LowerCase(candidate);
  const std::string& part = a.size() < b.size() ? a : b;
  const std::string& whole = a.size() < b.size() ? b : a;
  if (part.size() >= kShortestPart) return whole.find(part) != std::string::npos;
  return part.size() >= kShortestStart && whole.starts_with(part);
}

bool IsClose(std::string_view name, std::string_view candidate) {
  const std::size_t slips = std::max<std::size_t>(1, std::max(name.size(), candidate.size()) / kLettersForOneSlip);
  // A name of one letter is one slip away from every other such name.
  if (name.size() > 1 && EditDistance(name, candidate) <= slips) return true;
  return EditDistance(name, candidate) == 0 || HoldsOther(name, candidate);
}

}  // namespace

std::vector<std::string> CloseNames(std::string_view name,
                                    const std::vector<std::string_view>& candidates,
                                    std::size_t count) {
  std::vector<std::string> close = NearestNames(name, candidates, candidates.size());
  std::erase_if(close, [name](const std::string& candidate) { return !IsClose(name, candidate); });
  if (close.size() > count) close.resize(count);
  return close;
}

}  // namespace orv
