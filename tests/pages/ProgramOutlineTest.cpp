#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "apps/orvcox/CommandLine.h"
#include "apps/orvcox/pages/ProgramOutline.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/ResultDefinition.h"

namespace orv::pages {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

ProgramOutline OutlineOfTheProgram() {
  ProgramOutline outline;
  UseDeclaredProgram(
      [&](const CLI::App& program, const WordsOfOptions& words) { outline = OutlineProgram(program, words, "1.2"); });
  return outline;
}

const CommandOutline& Command(const ProgramOutline& outline, const std::string& name) {
  for (const CommandOutline& command : outline.Commands) {
    if (command.Name == name) return command;
  }
  throw std::out_of_range(name);
}

std::map<std::string, OptionOutline> OptionsOf(const CommandOutline& command) {
  std::map<std::string, OptionOutline> options;
  for (const GroupOutline& group : command.Groups) {
    for (const OptionOutline& option : group.Options) options[option.Names.back()] = option;
  }
  return options;
}

TEST(ProgramOutline, FollowsTheDeclaration) {
  const ProgramOutline outline = OutlineOfTheProgram();
  const auto fit = OptionsOf(Command(outline, "fit"));
  struct {
    const char* name;
    int values;
    bool isRepeatable;
    bool takesFile;
  } const cases[] = {
      {"--help", 0, false, false},    {"--robust", 0, false, false},     {"--time", 1, false, false},
      {"--dates", 2, false, false},   {"--date-parts", 6, false, false}, {"--covariates", 1, true, false},
      {"--contrast", 1, true, false}, {"--start-values", 1, true, true}, {"--output", 1, true, true},
  };
  for (const auto& c : cases) {
    const OptionOutline& option = fit.at(c.name);
    EXPECT_EQ(option.ValueCount, c.values) << c.name;
    EXPECT_EQ(option.Values.empty(), c.values == 0) << c.name;
    EXPECT_EQ(option.IsRepeatable, c.isRepeatable) << c.name;
    EXPECT_EQ(option.TakesFile, c.takesFile) << c.name;
    EXPECT_FALSE(option.Help.empty()) << c.name;
  }
  EXPECT_THAT(fit.at("--help").Names, ElementsAre("-h", "--help"));
  EXPECT_EQ(Command(outline, "convert").Arguments.size(), 2u);
}

TEST(ProgramOutline, WordsAreThoseThatTheProgramKnows) {
  const auto fit = OptionsOf(Command(OutlineOfTheProgram(), "fit"));
  std::vector<std::string> ties;
  for (const Choice& choice : TieChoices()) ties.emplace_back(choice.Word);
  EXPECT_THAT(fit.at("--ties").Words.Words, ElementsAreArray(ties));
  EXPECT_THAT(fit.at("--format").Words.Words, ElementsAre("text", "markdown", "json"));
  EXPECT_THAT(fit.at("--residuals").Words.Words, ElementsAreArray(ResidualNames()));
  std::vector<std::string> show = ShowNames();
  show.emplace_back("all");
  EXPECT_THAT(fit.at("--show").Words.Words, ElementsAreArray(show));
}

// A new option of this kind must not be left without its words.
TEST(ProgramOutline, EveryOptionThatTakesNamesHasWords) {
  int found = 0;
  for (const CommandOutline& command : OutlineOfTheProgram().Commands) {
    for (const auto& [name, option] : OptionsOf(command)) {
      const bool takesName = option.Values == "NAME" || option.Values == "NAME,...";
      EXPECT_EQ(option.Words.Words.empty(), !takesName) << command.Name << ' ' << name;
      EXPECT_EQ(option.Words.IsList, option.Values == "NAME,...") << command.Name << ' ' << name;
      found += takesName ? 1 : 0;
    }
  }
  EXPECT_GE(found, 10);
}

TEST(ProgramOutline, NotesAreTextsOrLinesBelowAHeading) {
  CLI::App program("A tool.", "tool");
  program.footer("One text\non two lines.\n\nExamples:\n  tool a \\\n      b\n  tool c\n\nNo heading: as this.");
  const std::vector<NoteOutline> notes = OutlineProgram(program, {}, "1").Program.Notes;
  ASSERT_EQ(notes.size(), 3u);
  EXPECT_EQ(notes[0].Heading, "");
  EXPECT_THAT(notes[0].Lines, ElementsAre("One text on two lines."));
  EXPECT_EQ(notes[1].Heading, "Examples");
  EXPECT_THAT(notes[1].Lines, ElementsAre("tool a \\", "    b", "tool c"));
  EXPECT_EQ(notes[2].Heading, "");
}

}  // namespace
}  // namespace orv::pages
