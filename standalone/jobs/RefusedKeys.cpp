#include "standalone/jobs/RefusedKeys.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string_view>
#include <vector>

#include "host/TextIds.h"
#include "standalone/jobs/JobKeys.h"
#include "standalone/jobs/JobMessages.h"

namespace orv {

namespace {

constexpr std::string_view kValues = "EditParameterStatusValues";
constexpr std::string_view kFileOfValues = "DataFileThatContainsStartvaluesForParameter";

// A text that other keys may have caused as well is not here, such as that of a factor with too few codes.
std::vector<std::string_view> KeysOf(int textId, const JobWording& wording) {
  switch (textId) {
    case TextIds::PToEnterOutOfRange:
      return {"pToEnter"};
    case TextIds::PToRemoveOutOfRange:
      return {"pToRemove"};
    case TextIds::EffectsToForceOutOfRange:
      return {"NToForce"};
    case TextIds::CodesIdentical:
      return {"CodeForCompleteResponses", "CodeForCensoredResponses"};
    case TextIds::StartValueCountWrong:
    case TextIds::StartValuesWithoutPredictors:
      return {wording.LineOf(kFileOfValues) != 0 ? kFileOfValues : kValues};
    case TextIds::NotAnOrvantaSpreadsheet:
    case TextIds::InvalidStartValues:
    case TextIds::TooManyStartValueColumns:
      return {kFileOfValues};
    case TextIds::SubjectIsTime:
    case TextIds::SubjectIsStrata:
    case TextIds::SubjectIsFactor:
    case TextIds::SubjectIsCovariate:
      return {"SubjectID"};
    default:
      return {};
  }
}

}  // namespace

std::string NoteOnRefusedKeys(const JobWording& wording, int textId) {
  std::vector<std::string> places;
  for (const std::string_view key : KeysOf(textId, wording)) {
    const std::uint64_t line = wording.LineOf(key);
    if (line != 0) places.push_back(fmt::format("{} is set on line {}", ShownName(*FindJobKey(key)), line));
  }
  if (places.empty()) return {};
  return JobMessages::At(wording.File(), 0, fmt::format("{}.", fmt::join(places, ", ")));
}

}  // namespace orv
