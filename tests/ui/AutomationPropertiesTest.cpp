#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ui/AutomationProperties.h"

namespace orv {
namespace {

struct Interface {
  const char* Name;
  std::span<const AutomationProperty> Properties;
};

std::vector<Interface> Interfaces() {
  return {{"CoxPHStartup", StartupProperties()}, {"CoxPHResults", ResultsProperties()}};
}

TEST(AutomationProperties, TheInterfacesHaveAllTheirMembers) {
  EXPECT_EQ(StartupProperties().size(), 37u);
  EXPECT_EQ(ResultsProperties().size(), 52u);
}

TEST(AutomationProperties, MembersStandInSlotOrder) {
  struct {
    std::span<const AutomationProperty> Properties;
    std::size_t Slot;
    const char* Name;
    int Control;
  } const cases[] = {
      {StartupProperties(), 0, "Variables", 1004},
      {StartupProperties(), 7, "DesignEffects", kCustom},
      {StartupProperties(), 11, "UseBreslowLikelihood", 1018},
      {StartupProperties(), 25, "NToForce", 1161},
      {StartupProperties(), 36, "EditParameterStatusValues", kCustom},
      {ResultsProperties(), 0, "ConfidenceLevel", 1087},
      {ResultsProperties(), 8, "SpecifyLinearCombination", kCustom},
      {ResultsProperties(), 21, "SaveResidualsAndPredictedValues", 1168},
      {ResultsProperties(), 43, "PHTest", 5247},
      {ResultsProperties(), 50, "ComputeTime", kCustom},
      {ResultsProperties(), 51, "ComputeLikelihoodDisplacement", 1136},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.Properties[c.Slot].Name, c.Name) << "slot " << c.Slot;
    EXPECT_EQ(c.Properties[c.Slot].Control, c.Control) << c.Name;
  }
}

TEST(AutomationProperties, EachNameIsFoundAndStandsOnce) {
  for (const Interface& interface : Interfaces()) {
    for (const AutomationProperty& property : interface.Properties) {
      EXPECT_EQ(FindProperty(interface.Properties, property.Name), &property) << interface.Name << ' ' << property.Name;
      EXPECT_FALSE(property.Help.empty()) << property.Name;
    }
  }
  EXPECT_EQ(FindProperty(StartupProperties(), "useefronlikelihood"), nullptr) << "capitals count";
  EXPECT_EQ(FindProperty(StartupProperties(), "ConfidenceLevel"), nullptr) << "a member of the other interface";
}

TEST(AutomationProperties, OnlyTheTwoSpellingsOfLikelihoodDisplacementShareAControl) {
  for (const Interface& interface : Interfaces()) {
    std::map<int, std::vector<std::string>> names;
    for (const AutomationProperty& property : interface.Properties) {
      if (property.Control != kCustom) names[property.Control].emplace_back(property.Name);
    }
    for (const auto& [control, sharing] : names) {
      if (control == 1136) {
        EXPECT_EQ(sharing, (std::vector<std::string>{"ComputeLiklihoodDisplacement", "ComputeLikelihoodDisplacement"}));
      } else {
        EXPECT_EQ(sharing.size(), 1u) << "control " << control;
      }
    }
  }
}

TEST(AutomationProperties, EveryChoiceHasAGroupOfSeveral) {
  std::map<ChoiceGroup, int> members;
  for (const Interface& interface : Interfaces()) {
    for (const AutomationProperty& property : interface.Properties) {
      EXPECT_EQ(property.Kind == PropertyKind::Choice, property.Group != ChoiceGroup::None) << property.Name;
      if (property.Group != ChoiceGroup::None) ++members[property.Group];
    }
  }
  const std::map<ChoiceGroup, int> expected = {{ChoiceGroup::InputType, 3},      {ChoiceGroup::Likelihood, 3},
                                               {ChoiceGroup::Coding, 3},         {ChoiceGroup::ModelBuilding, 5},
                                               {ChoiceGroup::Convergence, 4},    {ChoiceGroup::SurvivorType, 2},
                                               {ChoiceGroup::SurvivorLimits, 3}, {ChoiceGroup::TimeTransform, 4}};
  EXPECT_EQ(members, expected);
}

}  // namespace
}  // namespace orv
