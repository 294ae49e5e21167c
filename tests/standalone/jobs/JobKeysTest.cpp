#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <map>
#include <set>
#include <string>

#include "apps/orvcox/FitOptions.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/ResultDefinition.h"
#include "standalone/jobs/JobKeys.h"

namespace orv {
namespace {

TEST(JobKeys, EveryPropertyIsAKeyInSlotOrder) {
  struct {
    std::string_view Section;
    std::span<const AutomationProperty> Properties;
  } const interfaces[] = {{JobSections::Startup, StartupProperties()}, {JobSections::Results, ResultsProperties()}};
  for (const auto& interface : interfaces) {
    const JobKey* last = nullptr;
    for (const AutomationProperty& property : interface.Properties) {
      if (property.Name == "Variables") continue;  // a section of its own
      const JobKey* key = FindJobKey(property.Name);
      ASSERT_NE(key, nullptr) << property.Name;
      EXPECT_EQ(key->Section, interface.Section) << property.Name;
      EXPECT_EQ(key->Help, property.Help) << property.Name;
      EXPECT_GT(key, last) << property.Name;
      last = key;
    }
  }
}

TEST(JobKeys, NoNameStandsTwice) {
  std::set<std::string_view> names;
  for (const JobKey& key : JobKeys()) EXPECT_TRUE(names.insert(key.Name).second) << key.Name;
}

TEST(JobKeys, EverySynonymIsOfAKeyThatCanBeWritten) {
  for (const OptionSynonym& synonym : OptionSynonyms()) {
    const JobKey* key = FindJobKey(synonym.Key);
    ASSERT_NE(key, nullptr) << synonym.Key;
    EXPECT_NE(key->Form, JobForm::NotYet) << synonym.Key;
  }
}

// What orvcox fit can be asked for can be written in a job.
TEST(JobKeys, EveryOptionOfFitHasAKey) {
  CLI::App program;
  FitOptions options;
  const CLI::App* fit = AddFitCommand(program, options);
  std::set<std::string> known;
  for (const OptionSynonym& synonym : OptionSynonyms()) known.emplace(synonym.Option);
  std::set<std::string> given;
  for (const CLI::Option* option : fit->get_options()) {
    for (const std::string& name : option->get_lnames()) given.insert("--" + name);
  }
  given.erase("--help");
  given.erase("--save-job");
  EXPECT_EQ(known, given);
}

TEST(JobKeys, EveryWordOfAnOptionHasAKey) {
  std::map<std::string, std::vector<std::string>> words = {{"--show", ShowNames()}, {"--residuals", ResidualNames()}};
  words["--show"].emplace_back("all");
  const auto add = [&words](const std::string& option, std::span<const Choice> choices) {
    for (const Choice& choice : choices) words[option].emplace_back(choice.Word);
  };
  add("--coding", CodingChoices());
  add("--ties", TieChoices());
  add("--converge", ConvergenceChoices());
  add("--select", SelectionChoices());
  add("--survivor-type", SurvivorTypeChoices());
  add("--ci", CIChoices());
  add("--ph-transform", TransformChoices());
  for (const auto& [option, ofOption] : words) {
    for (const std::string& word : ofOption) EXPECT_NE(KeyOf(option, word), "") << option << ' ' << word;
  }
}

TEST(JobKeys, EveryChoiceOfAGroupThatAnOptionMakesHasItsWord) {
  for (const JobKey& key : JobKeys()) {
    if (key.Group == ChoiceGroup::None || key.Group == ChoiceGroup::InputType) continue;
    EXPECT_NE(WordOf(key.Name), "") << key.Name;
  }
}

}  // namespace
}  // namespace orv
