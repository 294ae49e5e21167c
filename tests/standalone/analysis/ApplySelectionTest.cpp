// The model building of a definition: what it sets, what it notes, and what is refused.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/analysis/Definitions.h"

namespace orv::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::vector<std::string> kNoNotes;
const std::vector<std::string> kBestNotes = {
    "best subsets are compared by score tests; estimates and other results are those of all effects."};

AnalysisDefinition Selecting(const std::string& kind, const std::string& effects = "") {
  AnalysisDefinition definition = LeastDefinition();
  definition.EventCode = "1";
  definition.CensoredCode = "0";
  definition.Covariates = {"age"};
  if (kind != "best") definition.Factors = {"arm", "site"};
  definition.Effects = effects;
  definition.Select = kind;
  return definition;
}

TEST(ApplySelection, AllEffectsStayByDefault) {
  const Applied applied(Selecting(""));
  EXPECT_EQ(applied.Settings().ModelBuilding, ModelBuildings::AllEffects);
  EXPECT_EQ(applied.Result.Fields.PToEnter, 0.05);
  EXPECT_EQ(applied.Result.Fields.PToRemove, 0.15);
  EXPECT_EQ(applied.Result.Fields.EffectsToForce, 0);
  EXPECT_THAT(applied.Result.Notes, IsEmpty());
}

TEST(ApplySelection, EveryWordIsAKindOfModelBuilding) {
  const std::pair<const char*, int> kinds[] = {{"all", ModelBuildings::AllEffects},
                                               {"forward", ModelBuildings::Forward},
                                               {"backward", ModelBuildings::Backward},
                                               {"stepwise", ModelBuildings::Stepwise},
                                               {"best", ModelBuildings::BestSubsets}};
  for (const auto& [word, kind] : kinds) {
    const Applied applied(Selecting(word));
    EXPECT_EQ(applied.Settings().ModelBuilding, kind) << word;
    const std::vector<std::string> notes = kind == ModelBuildings::BestSubsets ? kBestNotes : kNoNotes;
    EXPECT_EQ(applied.Result.Notes, notes) << word;
  }
}

TEST(ApplySelection, TakesTheLimitsAndTheForcedEffects) {
  AnalysisDefinition definition = Selecting("stepwise");
  definition.PEnter = 0.2;
  definition.PRemove = 0.25;
  definition.Force = 2;
  const Applied applied(definition);
  EXPECT_EQ(applied.Result.Fields.PToEnter, 0.2);
  EXPECT_EQ(applied.Result.Fields.PToRemove, 0.25);
  EXPECT_EQ(applied.Result.Fields.EffectsToForce, 2);
}

// ---- What is refused
// -------------------------------------------------------------------------------------------------

TEST(ApplySelection, BestSubsetsCannotForceMoreEffectsThanThereAre) {
  AnalysisDefinition definition = Selecting("best");
  definition.Force = 2;
  EXPECT_EQ(RefusalOf(definition), "--force 2: use 0 to 1, the number of effects in the design.");
  definition.Force = 1;
  EXPECT_EQ(Applied(definition).Result.Fields.EffectsToForce, 1);
}

// What the module checks itself is left to it, so that all its hosts tell the same.
TEST(ApplySelection, OtherLimitsAreCheckedByTheModule) {
  struct {
    const char* kind;
    std::optional<double> enter;
    std::optional<double> remove;
    std::optional<int> force;
    const char* message;
  } const cases[] = {
      {"forward", 0.0, {}, {}, " Please specify the P to enter value between 0 and 1."},
      {"forward", 1.0, {}, {}, " Please specify the P to enter value between 0 and 1."},
      {"stepwise", -0.1, {}, {}, " Please specify the P to enter value between 0 and 1."},
      {"backward", {}, 1.5, {}, "Please specify the P to remove value between 0 and 1."},
      {"stepwise", {}, 0.0, {}, "Please specify the P to remove value between 0 and 1."},
      {"forward",
       {},
       {},
       4,
       "Please specify the number of effects to force in the model between 0 and 3 (=Number of effects in design)."},
      {"backward",
       {},
       {},
       4,
       "Please specify the number of effects to force in the model between 0 and 3 (=Number of effects in design)."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = Selecting(c.kind);
    definition.PEnter = c.enter;
    definition.PRemove = c.remove;
    definition.Force = c.force;
    Applied applied(definition);
    EXPECT_EQ(applied.Run(), 1) << c.kind;
    EXPECT_THAT(applied.Host.Messages(), ElementsAre(c.message)) << c.kind;
  }
}

// ---- Effects that wait for each other
// --------------------------------------------------------------------------------

TEST(ApplySelection, EffectsOfTheSameVariablesAreTold) {
  const std::string same = "age and age*age hold the same variables, so each counts as part of the other: ";
  const std::string enter = same + "none of them can enter alone. --force takes the first effects of the design in.";
  for (const std::string kind : {"forward", "stepwise"}) {
    EXPECT_THAT(Applied(Selecting(kind, "age, arm, site, age*age")).Result.Notes, ElementsAre(enter)) << kind;
  }
  EXPECT_THAT(Applied(Selecting("backward", "age, arm, site, age*age")).Result.Notes,
              ElementsAre(same + "none of them is removed while another is there."));
  for (const std::string kind : {"all", "best"}) {
    AnalysisDefinition definition = Selecting(kind, "age, age*age");
    definition.Factors.clear();
    EXPECT_EQ(Applied(definition).Result.Notes, kind == "best" ? kBestNotes : kNoNotes) << kind;
  }
}

TEST(ApplySelection, EachGroupOfTheSameVariablesIsToldOnce) {
  EXPECT_THAT(Applied(Selecting("forward", "age, age*age, arm*site, age*age*age, site(arm)")).Result.Notes,
              ElementsAre("age and age*age and age*age*age hold the same variables, so each counts as part of the "
                          "other: none of them can enter alone. --force takes the first effects of the design in.",
                          "arm*site and site(arm) hold the same variables, so each counts as part of the other: none "
                          "of them can enter alone. --force takes the first effects of the design in."));
  EXPECT_THAT(Applied(Selecting("forward", "age, arm, site, age*arm")).Result.Notes, IsEmpty())
      << "a product with its parts is no such group";
}

}  // namespace
}  // namespace orv::testing
