#include "standalone/jobs/JobWording.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "standalone/jobs/JobKeys.h"
#include "standalone/jobs/JobMessages.h"

namespace orv {

namespace {

constexpr std::string_view kDashes = "--";
constexpr std::string_view kStartValues = "EditParameterStatusValues";
constexpr std::string_view kLettersOfNames = "abcdefghijklmnopqrstuvwxyz0123456789-";

// What messages show as the use of an option.
struct Usage {
  std::string_view Text;
  std::string_view Key;
  std::string_view Replacement;
};

constexpr std::array kUsages = {
    Usage{"--dates START END", "SurvivalTimes", "Variables.SurvivalTimes = [START, END]"},
    Usage{"--interval ENTRY TIME", "Start", "Variables.Start = ENTRY and Variables.Stop = TIME"},
    Usage{"--event CODE", "CodeForCompleteResponses", "CodeForCompleteResponses"},
    Usage{"--censored CODE", "CodeForCensoredResponses", "CodeForCensoredResponses"},
    Usage{"--covariates V", "Covariates", "Variables.Covariates"},
    Usage{"--contrast \"X X X\"", "SpecifyLinearCombination", "SpecifyLinearCombination = [[X, X, X]]"},
    Usage{"--fix", "EditParameterStatusValues", "EditParameterStatusValues.Fixed"},
    Usage{"--converge or", "UseRelativeGradientConvergence", "convergence test or"},
    Usage{"--ci none", "ComputeSurvivorCI", "ComputeSurvivorCI = false"},
};

std::string Named(const std::vector<std::string_view>& keys, std::string_view lastJoin) {
  std::vector<std::string> names;
  for (const std::string_view key : keys) {
    const std::string name = ShownName(*FindJobKey(key));
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  if (names.size() == 1) return names[0];
  return fmt::format("{}{}{}", fmt::join(names.begin(), names.end() - 1, ", "), lastJoin, names.back());
}

// "add --robust" is an option to add, and in a job the key with its value.
bool IsToBeAdded(std::string_view before, const std::vector<std::string_view>& keys) {
  const JobKey& key = *FindJobKey(keys[0]);
  const bool isOne = std::all_of(keys.begin(), keys.end(), [&](std::string_view other) { return other == key.Name; });
  return isOne && key.Form == JobForm::Flag && (before.ends_with("add ") || before.ends_with("Add "));
}

bool Skip(std::string_view& rest, std::string_view text) {
  if (!rest.starts_with(text)) return false;
  rest.remove_prefix(text.size());
  return true;
}

// The key for the word of an option that `rest` begins with; the word is taken off. Empty when it is none.
std::string_view TakeWord(std::string_view option, std::string_view& rest) {
  const std::string_view word = rest.substr(0, rest.find_first_not_of(kLettersOfNames));
  const std::string_view key = word.empty() ? std::string_view{} : KeyOf(option, word);
  if (!key.empty()) rest.remove_prefix(word.size());
  return key;
}

// "forward, backward or best" behind an option: the keys of the words, which are taken off with what joins them.
std::vector<std::string_view> TakeWords(std::string_view option, std::string_view& rest, std::string_view& lastJoin) {
  std::vector<std::string_view> keys;
  std::string_view after = rest;
  if (!Skip(after, " ")) return keys;
  for (std::string_view key = TakeWord(option, after); !key.empty(); key = TakeWord(option, after)) {
    keys.push_back(key);
    rest = after;
    const bool goesOn = Skip(after, ", ") || Skip(after, " or ") || Skip(after, " and ");
    if (!goesOn) break;
    if (rest.starts_with(" and ")) lastJoin = " and ";
  }
  return keys;
}

}  // namespace

void JobWording::AddKey(std::string_view key, std::uint64_t line) {
  m_lines.emplace(key, line);
}

void JobWording::AddPhrase(const std::string& phrase, std::string_view key, const std::string& replacement) {
  m_phrases.push_back({phrase, std::string(key), replacement});
}

std::uint64_t JobWording::LineOf(std::string_view key) const {
  const auto found = m_lines.find(key);
  return found == m_lines.end() ? 0 : found->second;
}

std::string JobWording::Sentence(const std::string& message) const {
  return Translate(message).Text;
}

std::string JobWording::Refusal(const std::string& message) const {
  const Translation translation = Translate(message);
  return JobMessages::At(m_file, translation.Line, translation.Text);
}

std::string JobWording::FileFailure(std::string_view key, const std::string& message) const {
  return JobMessages::At(m_file, LineOf(key), fmt::format("{}: {}", ShownName(*FindJobKey(key)), message));
}

// The keys for an option without a word: those that the job has, as far as it has any.
std::vector<std::string_view> JobWording::KeysOf(std::string_view option) const {
  std::vector<std::string_view> general;
  std::vector<std::string_view> ofWords;
  for (const OptionSynonym& synonym : OptionSynonyms()) {
    if (synonym.Option == option) (synonym.Word.empty() ? general : ofWords).push_back(synonym.Key);
  }
  const auto isWritten = [this](std::string_view key) { return LineOf(key) != 0; };
  std::vector<std::string_view> written;
  std::copy_if(general.begin(), general.end(), std::back_inserter(written), isWritten);
  if (!written.empty()) return written;
  const auto chosen = std::find_if(ofWords.begin(), ofWords.end(), isWritten);
  if (chosen != ofWords.end()) return {*chosen};
  if (general.empty() && !ofWords.empty()) return {ofWords[0]};
  return general;
}

std::string JobWording::TakeOption(std::string_view& rest, std::vector<std::string_view>& keys) const {
  for (const Phrase& phrase : m_phrases) {
    keys = {phrase.Key};
    if (Skip(rest, phrase.Text)) return phrase.Replacement;
  }
  for (const Usage& usage : kUsages) {
    keys = {usage.Key};
    if (Skip(rest, usage.Text)) return std::string(usage.Replacement);
  }
  const std::string_view option = rest.substr(0, rest.find_first_not_of(kLettersOfNames));
  keys = KeysOf(option);
  if (keys.empty()) return {};
  rest.remove_prefix(option.size());
  std::string_view lastJoin = " or ";
  const std::vector<std::string_view> ofWords = TakeWords(option, rest, lastJoin);
  if (ofWords.empty()) return keys[0] == kStartValues ? fmt::format("{}.Values", kStartValues) : Named(keys, " and ");
  keys = ofWords;
  return Named(keys, lastJoin);
}

JobWording::Translation JobWording::Translate(const std::string& message) const {
  Translation translation;
  std::string_view rest = message;
  char before = ' ';
  while (!rest.empty()) {
    std::vector<std::string_view> keys;
    std::string replacement;
    const bool mayBegin = before == ' ' || before == '(';
    if (mayBegin && rest.starts_with(kDashes)) replacement = TakeOption(rest, keys);
    if (!replacement.empty()) {
      const bool isToBeAdded = IsToBeAdded(translation.Text, keys);
      translation.Text += replacement + (isToBeAdded ? " = true" : "");
      for (const std::string_view key : keys) {
        if (translation.Line == 0) translation.Line = LineOf(key);
      }
      before = translation.Text.back();
      continue;
    }
    const std::size_t quote = rest[0] == '"' ? rest.find('"', 1) : std::string_view::npos;
    const std::size_t length = quote == std::string_view::npos ? 1 : quote + 1;
    translation.Text += rest.substr(0, length);
    rest.remove_prefix(length);
    before = translation.Text.back();
  }
  return translation;
}

}  // namespace orv
