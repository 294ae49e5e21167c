#include "standalone/jobs/CloseKeys.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "standalone/analysis/CloseNames.h"
#include "standalone/jobs/JobKeys.h"
#include "standalone/tables/NearestNames.h"

namespace orv {

namespace {

constexpr std::array kSections = {JobSections::Startup, JobSections::Variables, JobSections::Results,
                                  JobSections::Host};
constexpr std::string_view kVariables = "Variables";
constexpr std::size_t kShownNames = 2;

std::string InBrackets(std::string_view section) {
  return fmt::format("[{}]", section);
}

std::string WithPlace(const JobKey& key, std::string_view section) {
  if (key.Section == section) return std::string(key.Name);
  const std::string place = key.Section.empty() ? "above the first section" : "in " + InBrackets(key.Section);
  return fmt::format("{} {}", key.Name, place);
}

// Who knows the command line writes "Status" for "--status".
std::vector<std::string> KeysOfOption(std::string_view name, std::string_view section) {
  std::vector<std::string> keys;
  for (const OptionSynonym& synonym : OptionSynonyms()) {
    const bool isMeant = EditDistance(fmt::format("--{}", name), synonym.Option) == 0;
    if (isMeant && keys.size() < kShownNames) keys.push_back(WithPlace(*FindJobKey(synonym.Key), section));
  }
  return keys;
}

}  // namespace

std::vector<std::string> CloseSections(std::string_view name) {
  std::vector<std::string> close = CloseNames(name, {kSections.begin(), kSections.end()}, kShownNames);
  std::transform(close.begin(), close.end(), close.begin(), InBrackets);
  return close;
}

std::vector<std::string> CloseKeys(std::string_view name, std::string_view section) {
  if (std::vector<std::string> keys = KeysOfOption(name, section); !keys.empty()) return keys;
  std::vector<std::string_view> names;
  // Of equally near names the first is nearest: that of the section.
  for (const bool isOwn : {true, false}) {
    for (const JobKey& key : JobKeys()) {
      const bool isOffered = isOwn || key.Form != JobForm::NotYet;
      if ((key.Section == section) == isOwn && isOffered) names.push_back(key.Name);
    }
  }
  names.push_back(kVariables);
  std::vector<std::string> close = CloseNames(name, names, kShownNames);
  for (std::string& one : close) {
    one = one == kVariables ? InBrackets(JobSections::Variables) : WithPlace(*FindJobKey(one), section);
  }
  return close;
}

}  // namespace orv
