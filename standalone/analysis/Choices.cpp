#include "standalone/analysis/Choices.h"

#include <array>

#include "core/CoxSettings.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/DefinitionMessages.h"
#include "ui/CCoxPHResults.h"

namespace orv {

namespace {

constexpr std::array kCodings = {Choice{"sigma", Codings::SigmaRestricted}, Choice{"reference", Codings::Reference},
                                 Choice{"overparameterized", Codings::Overparameterized}};

constexpr std::array kTies = {Choice{"breslow", Likelihoods::Breslow}, Choice{"efron", Likelihoods::Efron},
                              Choice{"discrete", Likelihoods::Discrete}};

constexpr std::array kConvergence = {Choice{"gradient", ConvergenceTypes::RelativeGradient},
                                     Choice{"parameter", ConvergenceTypes::RelativeParameter},
                                     Choice{"likelihood", ConvergenceTypes::RelativeLikelihood},
                                     Choice{"absolute", ConvergenceTypes::AbsoluteLikelihood}};

constexpr std::array kSelections = {
    Choice{"all", ModelBuildings::AllEffects}, Choice{"forward", ModelBuildings::Forward},
    Choice{"backward", ModelBuildings::Backward}, Choice{"stepwise", ModelBuildings::Stepwise},
    Choice{"best", ModelBuildings::BestSubsets}};

constexpr std::array kSurvivorTypes = {Choice{"breslow", static_cast<int>(SurvivorType::Breslow)},
                                       Choice{"kaplan-meier", static_cast<int>(SurvivorType::KaplanMeier)}};

constexpr std::array kCITypes = {Choice{"none", kNoLimits}, Choice{"normal", static_cast<int>(SurvivorCIType::Normal)},
                                 Choice{"log", static_cast<int>(SurvivorCIType::Log)},
                                 Choice{"loglog", static_cast<int>(SurvivorCIType::LogLog)}};

constexpr std::array kTransforms = {
    Choice{"identity", static_cast<int>(TimeTransform::Identity)}, Choice{"log", static_cast<int>(TimeTransform::Log)},
    Choice{"km", static_cast<int>(TimeTransform::KaplanMeier)}, Choice{"rank", static_cast<int>(TimeTransform::Rank)}};

}  // namespace

std::span<const Choice> SelectionChoices() {
  return kSelections;
}

std::span<const Choice> SurvivorTypeChoices() {
  return kSurvivorTypes;
}

std::span<const Choice> CIChoices() {
  return kCITypes;
}

std::span<const Choice> TransformChoices() {
  return kTransforms;
}

std::span<const Choice> CodingChoices() {
  return kCodings;
}

std::span<const Choice> TieChoices() {
  return kTies;
}

std::span<const Choice> ConvergenceChoices() {
  return kConvergence;
}

std::string ChoiceList(std::span<const Choice> choices) {
  std::string text;
  for (std::size_t k = 0; k < choices.size(); ++k) {
    if (k > 0) text += k + 1 == choices.size() ? " or " : ", ";
    text += choices[k].Word;
  }
  return text;
}

std::int16_t ChoiceValue(const std::string& option,
                         const std::string& word,
                         std::span<const Choice> choices,
                         int fallback) {
  if (word.empty()) return static_cast<std::int16_t>(fallback);
  for (const Choice& choice : choices) {
    if (choice.Word == word) return static_cast<std::int16_t>(choice.Value);
  }
  throw DefinitionError(DefinitionMessages::UnknownChoice(option, word, ChoiceList(choices)));
}

}  // namespace orv
